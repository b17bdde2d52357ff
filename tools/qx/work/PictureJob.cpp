// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/PictureJob.h"

#include <algorithm>

#include "pictures/Carried.h"
#include "pictures/Dither.h"
#include "pictures/Light.h"
#include "pictures/Losses.h"
#include "scene/colour/Profiles.h"
#include "tools/qx/terminal/Progress.h"

namespace qx::tool {

PictureJob::PictureJob(const PictureOptions& options, std::vector<std::string> inputs, Colours colours)
    : options_(options), inputs_(std::move(inputs)) {
    apply_common_options(options.common);
    check_output_option(options.output);
    options.encoding.check(options.output);
    options.reading.check(inputs_);
    const int depth = options.asked_depth();
    library_.emplace();
    pictures_.resize(inputs_.size());
    Files files;
    for (std::size_t i = 0; i < inputs_.size(); ++i) files.emplace_back(&inputs_[i], &pictures_[i]);
    const bool managed = colours == Colours::managed;
    read_all(files, once_, options.reading.read_options(managed));
    depth_ = unify(files, depth, once_);
    if (!managed && picture().linear != pictures::is_linear_format(options.output)) say_note(pictures::kLightIsMixed);
}

void PictureJob::bring_to_depth(int depth) { depth_ = unify({{&inputs_.front(), &picture()}}, depth, once_); }

void PictureJob::tell(const std::vector<std::string>& notes) { tell_losses(once_, inputs_.front(), notes); }

void PictureJob::convert(const scene::Profile& from, const scene::Profile& to, int depth,
                         const scene::Rendering& rendering) {
    Progress progress("converting", PartWatch::kSteps);
    const SignalWatch signals;
    PartWatch watch(progress, signals);
    scene::convert(inputs_.front(), picture(), from, to, depth, rendering, watch);
    depth_ = depth;
}

void PictureJob::apply(const scene::Effect& effect, const char* words) {
    pictures::Picture& work = picture();
    const std::string& file = inputs_.front();
    const auto show = [&](const scene::SceneFile& wanted) {
        const auto found = std::find(inputs_.begin() + 1, inputs_.end(), wanted.at(0));  // the first is at work
        const auto& shown = pictures_[static_cast<std::size_t>(found - inputs_.begin())];
        return std::shared_ptr<const pictures::Picture>(std::shared_ptr<void>(), &shown);
    };
    const auto note = [&](const std::string& text) { tell({text}); };
    Progress progress(words, PartWatch::kSteps);
    const SignalWatch signals;
    PartWatch watch(progress, signals);
    const int width = work.world->width, height = work.world->height;
    scene::Canvas canvas{std::move(work.world)};
    effect.apply(canvas, {0, file, show, note, watch});
    work.world = std::move(canvas.world);
    if (work.world->width != width || work.world->height != height) drop_beside();
}

void PictureJob::change_pixels(const char* words, const Change& change) {
    Progress progress(words, PartWatch::kSteps);
    const SignalWatch signals;
    PartWatch watch(progress, signals);
    picture().world = change(*picture().world, watch);
    drop_beside();
}

void PictureJob::move_pixels(const char* words, const Change& change) {
    const auto carried = picture().carried;
    change_pixels(words, change);
    if (carried) picture().carried = change(*carried, pictures::unwatched());
}

void PictureJob::drop_beside() {
    tell(pictures::lost_beside(picture()));
    pictures::drop_beside(picture());
}

void PictureJob::write(int depth, bool dither) {
    for (std::size_t i = 1; i < inputs_.size(); ++i) {
        tell_losses(once_, inputs_[i], scene::taken_otherwise(pictures_[i], picture()));
        pictures::add_precision(picture(), pictures_[i]);
    }
    tell_losses(once_, inputs_.front(), lost_in_file(options_.output, picture(), depth, options_.encoding));
    if (dither && pictures::file_depth(options_.output, options_.encoding.file_depth(depth)) == 8)
        pictures::dither_to_8(inputs_.front(), picture());
    write_result(options_.output, picture(), depth, options_.encoding);
}

}  // namespace qx::tool
