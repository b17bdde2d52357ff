// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/SceneClip.h"

#include <algorithm>
#include <filesystem>

#include "scene/NumberedFiles.h"
#include "scene/SceneValues.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

namespace fs = std::filesystem;

Rational read_rational(const SceneNode& node, const Rational& least, const Rational& most,
                       Rational (*read)(const std::string&)) {
    if (node.is_text()) return node.read_by([&] { return read(node.text()); });
    const double number = node.number(least.real(), most.real());
    return node.read_by([&] { return read(words(number)); });
}

Rational read_rate(const SceneNode& node) {
    if (!node.is_list()) return read_rational(node, kLeastRate, kMostRate, rate_of_text);
    constexpr int most = 1'001'000;
    const auto parts = node.items(2, 2);
    const Rational rate(parts[0].whole(1, most), parts[1].whole(1, most));
    if (rate < kLeastRate || rate > kMostRate) node.fault("is not a rate from 0.001 to 1000");
    return rate;
}

void read_cuts(const SceneNode& node, ClipChoice& choice) {
    constexpr const char* words[] = {"auto", "none"};
    if (!node.is_list()) {
        choice.cuts = node.choice(words) == 0 ? CutSearch::automatic : CutSearch::none;
        return;
    }
    choice.cuts = CutSearch::listed;
    for (const SceneNode& number : node.items(0, kMostItems)) choice.begins.push_back(number.whole(0, kMostFrame));
}

}  // namespace

bool ClipChoice::is_pictures() const { return !pictures::is_there(path) && FramePattern(path).has_place(); }

std::vector<std::string> ClipChoice::files() const {
    if (!is_pictures()) return {path};
    const FramePattern pattern(path);
    std::vector<std::string> names;
    for (const int number : numbers_there(pattern)) names.push_back(pattern.name(number));
    return names;
}

std::shared_ptr<const ClipChoice> read_clip(const SceneNode& node, const std::string& folder) {
    node.check_keys(kClipKeys);
    auto choice = std::make_shared<ClipChoice>();
    const SceneNode name = node.need("clip");
    choice->path = (fs::path(folder) / name.text()).string();
    const bool is_pictures = name.read_by([&] { return choice->is_pictures(); });
    if (!is_pictures && !pictures::is_there(choice->path)) name.fault(choice->path + ": no such file");
    if (is_pictures && choice->files().empty()) name.fault(choice->path + ": no picture of it is there");
    if (const auto offset = node.find("offset")) choice->offset = offset->whole(-kMostFrame, kMostFrame);
    if (const auto speed = node.find("speed"))
        choice->speed = read_rational(*speed, kLeastSpeed, kMostSpeed, speed_of_text);
    if (const auto map = node.find("map")) {
        if (node.find("speed")) map->fault("excludes speed");
        choice->map = read_time_track(*map);
    }
    if (const auto rate = node.find("rate")) choice->rate = read_rate(*rate);
    if (const auto method = node.find("method"))
        choice->method = static_cast<BetweenMethod>(method->choice(kBetweenMethodWords));
    if (const auto quality = node.find("quality"))
        choice->quality = static_cast<FlowQuality>(quality->choice(kFlowQualityWords));
    if (const auto cuts = node.find("cuts")) read_cuts(*cuts, *choice);
    return choice;
}

SceneClip::SceneClip(const ClipChoice& choice, const Rational& rate, int depth, bool orient) : choice_(choice) {
    ClipOptions opening;
    opening.orient = orient;
    if (choice.is_pictures()) {
        const FramePattern pattern(choice.path);
        const auto numbers = numbers_there(pattern);
        if (numbers.empty()) throw pictures::Failure(choice.path, "no picture of it is there");
        clip_ =
            open_pictures_clip({pattern, {numbers.front(), numbers.back(), 1}, choice.rate.value_or(rate)}, opening);
        step_ = choice.speed / rate;
    } else {
        clip_ = open_movie_clip(choice.path, opening);
        const Rational own = clip_->facts().rate;
        step_ = choice.speed * (choice.rate.value_or(own) / own) / rate;
    }
    notes_ = clip_->notes();
    if (clip_->frames() == 1) notes_.emplace_back("has one frame, which is shown throughout");
    FlowChoices flow;
    flow.quality = choice.quality;
    RetimeOptions options;
    options.between = {choice.method, flow_params(flow), depth > 8 ? depth : 0, true};
    options.cuts = choice.cuts;
    for (const int begin : choice.begins) options.begins.push_back(index_of_number(*clip_, begin));
    retimer_ = std::make_unique<Retimer>(*clip_, options);
}

ClipMoment SceneClip::moment(int number) const {
    const int at = number + choice_.offset;
    if (choice_.map) return moment_of_number(*clip_, choice_.map->at(at)[0]);
    return moment_of_time(*clip_, clip_->time_of(0) + step_ * Rational(at));
}

pictures::Picture SceneClip::frame(int number, pictures::Watch& watch) {
    const SharedPicture shown = retimer_->at(moment(number), watch).picture;
    pictures::Picture copy;
    copy.about() = shown->about();
    copy.beside() = shown->beside();
    copy.notes = shown->notes;
    copy.world = pictures::at_depth(choice_.path, *shown->world, shown->world->Depth());
    return copy;
}

}  // namespace qx::scene
