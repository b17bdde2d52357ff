// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Answers.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "pictures/Dither.h"
#include "pictures/Pixels.h"
#include "scene/Words.h"
#include "tools/qx/Library.h"
#include "tools/qx/view/Page.h"

namespace qx::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFileName = "frame.png";  // as formats know it; no such file is written
constexpr int kFast = 1;                        // of the compression: the file goes no further than this machine
constexpr int kMostShown = 4;                   // frames that one request asks after

/// The page itself may be run, and asks nobody else.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
    "form-action 'none'; frame-ancestors 'none'";

/// Names of files may hold bytes that are no text; they are replaced.
std::string text_of(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

HttpAnswer json_answer(const Json& json, int status = 200) { return {status, "application/json", text_of(json)}; }
HttpAnswer fault_answer(int status, std::string_view words) { return json_answer({{"fault", words}}, status); }
/// A frame that cannot be made of its files as they are.
HttpAnswer unmade_answer(std::string_view words, const std::string& stamp) {
    return json_answer({{"fault", words}, {"stamp", stamp}}, 422);
}

/// Where a frame comes from, by the numbers "SOURCE:FRAME".
struct Asked {
    int source, number;
};
Asked asked_of(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) throw scene::BadText(text, "not SOURCE:FRAME");
    return {scene::whole_number(text.substr(0, colon), 0, scene::kMostFrame),
            scene::whole_number(text.substr(colon + 1), -scene::kMostFrame, scene::kMostFrame)};
}

/// The frame as a PNG of 8 bits.
std::string png_of(const pictures::Picture& frame, bool dithers, pictures::Watch& watch) {
    const pictures::WriteOptions options{.compression = kFast};
    if (!dithers || frame.world->Depth() == 8) return pictures::bytes_of_picture(kFileName, frame, 8, options, watch);
    pictures::Picture eight;
    eight.about() = frame.about();
    eight.world = pictures::at_depth(kFileName, *frame.world, frame.world->Depth());
    pictures::dither_to_8(kFileName, eight);
    return pictures::bytes_of_picture(kFileName, eight, 8, options, watch);
}

/// A channel as it is: 0.2f is 0.2. JSON has no word for what is no number.
Json number_of(float value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    double number = 0;
    std::from_chars(text, end, number);
    return number;
}
Json number_of(int value) { return value; }

Json pixel_of(const QX_World& world, int x, int y) {
    return pictures::with_pixel_of(world, [&]<class Pixel>() -> Json {
        const Pixel& p = pictures::row_of<Pixel>(world, y)[x];
        return {number_of(p.alpha), number_of(p.red), number_of(p.green), number_of(p.blue)};
    });
}

HttpAnswer frame_answer(const KeptFrame& frame) {
    const QX_World& world = *frame.picture->world;
    const Json facts = {{"id", frame.id},
                        {"number", frame.key.number},
                        {"stamp", frame.key.stamp},
                        {"depth", int{world.Depth()}},
                        {"width", int{world.width}},
                        {"height", int{world.height}},
                        {"alpha", frame.picture->has_alpha},
                        {"light", frame.picture->linear}};
    return {200, "image/png", frame.png, {{"QX-Frame", text_of(facts)}}};
}

HttpAnswer page_answer(const std::string& place) {
    for (const PageFile& file : page_files()) {
        if (place == file.name || (place.empty() && file.name == "index.html")) {
            return {200, std::string(file.type), std::string(file.text)};
        }
    }
    return fault_answer(404, "nothing is there");
}

}  // namespace

Source& Answers::source_of(int number) {
    const auto place = static_cast<std::size_t>(number);
    if (place >= sources_.size()) throw scene::BadText(std::to_string(number), "no such source");
    return *sources_[place];
}

Json Answers::state_of(Source& source) {
    const std::shared_ptr<Subject> subject = source.subject();
    const SubjectFacts& facts = subject->facts();
    Json ranges = Json::array();
    for (const scene::FrameRange& range : facts.frames.ranges())
        ranges.push_back({range.first, range.last, range.step});
    return {{"name", source.path()},  {"kind", kSubjectWords[static_cast<int>(source.kind())]},
            {"frames", ranges},       {"rate", double(facts.rate.number) / facts.rate.per},
            {"faults", facts.faults}, {"notes", subject->notes()}};
}

HttpAnswer Answers::state(const HttpRequest& request) {
    Json all = Json::array();
    for (const auto& source : sources_) all.push_back(state_of(*source));
    Json stamps = Json::object();
    std::string shown = request.value("shown");
    for (int i = 0; i < kMostShown && !shown.empty(); ++i) {
        const std::string text = shown.substr(0, shown.find(','));
        shown.erase(0, text.size() + 1);
        const Asked asked = asked_of(text);
        stamps[text] = source_of(asked.source).look(asked.number).stamp;
    }
    return json_answer({{"sources", all}, {"stamps", stamps}});
}

HttpAnswer Answers::frame(const HttpRequest& request) {
    const Asked asked = asked_of(request.value("of"));
    const int side = scene::whole_number(request.value("side"), 0, Frames::kSides - 1);
    const auto [subject, stamp] = source_of(asked.source).look(asked.number);
    if (!subject->facts().faults.empty()) return unmade_answer(subject->facts().faults.front(), stamp);
    const auto make = [subject = subject, number = asked.number](pictures::Watch& watch) {
        ShownFrame shown;
        shown.picture = subject->frame(number, watch);
        shown.png = png_of(*shown.picture, subject->facts().dithers, watch);
        return shown;
    };
    const FrameKey key{asked.source, asked.number, stamp};
    try {
        return frame_answer(*frames_.get(side, key, make));
    } catch (const Replaced&) {
        return fault_answer(409, "another frame is asked for");
    } catch (const pictures::Stopped&) {
        return fault_answer(503, "the command ends");
    } catch (...) {
        HttpAnswer answer;
        tell_fault([&](std::string_view words) { answer = unmade_answer(words, key.stamp); });
        return answer;
    }
}

HttpAnswer Answers::values(const HttpRequest& request) {
    const SharedFrame frame =
        frames_.find(static_cast<std::uint64_t>(scene::whole_number(request.value("id"), 0, INT32_MAX)));
    if (!frame) return fault_answer(404, "the frame is not kept any more");
    const QX_World& world = *frame->picture->world;
    const int x = scene::whole_number(request.value("x"), 0, world.width - 1);
    const int y = scene::whole_number(request.value("y"), 0, world.height - 1);
    return json_answer({{"x", x}, {"y", y}, {"depth", int{world.Depth()}}, {"argb", pixel_of(world, x, y)}});
}

HttpAnswer Answers::answer_place(const std::string& place, const HttpRequest& request) {
    if (request.method != "GET") {
        HttpAnswer answer = fault_answer(405, "only GET is answered");
        answer.headers.emplace_back("Allow", "GET");
        return answer;
    }
    try {
        if (place == "state") return state(request);
        if (place == "frame") return frame(request);
        if (place == "values") return values(request);
    } catch (const scene::BadText& bad) {
        return fault_answer(400, bad.what());
    }
    return page_answer(place);
}

HttpAnswer Answers::answer(const HttpRequest& request) {
    HttpAnswer answer{.status = 403};
    if (const auto place = gate_.place(request)) {
        answer = answer_place(*place, request);
    } else if (gate_.takes_ticket(request)) {
        answer.status = 303;
        answer.headers.emplace_back("Location", gate_.address());
    }
    for (const auto& [name, value] : {std::pair{"Cache-Control", "no-store"},
                                      {"X-Content-Type-Options", "nosniff"},
                                      {"Content-Security-Policy", kPolicy},
                                      {"Cross-Origin-Resource-Policy", "same-origin"},
                                      {"Referrer-Policy", "no-referrer"}}) {
        answer.headers.emplace_back(name, value);
    }
    return answer;
}

}  // namespace qx::tool
