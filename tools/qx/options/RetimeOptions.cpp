// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/RetimeOptions.h"

#include <CLI/CLI.hpp>
#include <climits>
#include <filesystem>

#include "pictures/Movie.h"

namespace qx::tool {
namespace {

constexpr const char* kAudioWords[] = {"copy", "drop"};
constexpr int kMostPairs = 1024;

std::optional<scene::Rational> exact(const char* option, const std::string& text,
                                     scene::Rational (*read)(const std::string&)) {
    if (text.empty()) return std::nullopt;
    return value_of(option, [&] { return read(text); });
}

/// The index of the frame with a number of the clip's.
int index_of(const scene::Clip& clip, const std::string& text) {
    const int number = whole_number("--cuts", text, 0, scene::kMostFrame);
    return value_of("--cuts", [&] { return scene::index_of_number(clip, number); });
}

std::vector<int> indices_of(const scene::Clip& clip, const std::string& list) {
    std::vector<int> indices;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find(',', begin);
        indices.push_back(index_of(clip, list.substr(begin, end == std::string::npos ? end : end - begin)));
    }
    return indices;
}

}  // namespace

bool RetimeCommandOptions::input_is_pictures() const {
    if (pictures::is_there(input)) return false;  // a file may have such signs in its name
    return value_of("INPUT", [&] { return scene::FramePattern(input).has_place(); });
}

bool RetimeCommandOptions::output_is_movie() const { return pictures::is_movie(output); }

std::optional<scene::Rational> RetimeCommandOptions::speed_number() const {
    return exact("--speed", speed, scene::speed_of_text);
}

std::optional<scene::Rational> RetimeCommandOptions::rate_number() const {
    return exact("--fps", rate, scene::rate_of_text);
}

int RetimeCommandOptions::start_number() const {
    return start.empty() ? 1 : whole_number("--start", start, 0, scene::kMostFrame);
}

std::uint64_t RetimeCommandOptions::memory_bytes() const {
    return memory.empty() ? half_the_memory() : memory_size("--memory", memory);
}

int RetimeCommandOptions::pairs_number() const {
    return pairs.empty() ? 0 : whole_number("--pairs", pairs, 1, kMostPairs);
}

bool RetimeCommandOptions::drops_audio() const { return !audio.empty() && choice("--audio", audio, kAudioWords) == 1; }

std::string RetimeCommandOptions::words() const {
    std::string all = flow.words() + encoding.words();
    for (const auto* text : {&input, &in, &method, &depth, &cuts, &on_cut}) all += '\n' + *text;
    for (const bool is_on : {gaps, reading.as_stored}) all += is_on ? '1' : '0';
    return all;
}

void RetimeCommandOptions::check() const {
    const auto refuse_with = [](const char* option, bool is_there, const char* words) {
        if (is_there) throw WrongUsage(std::string(option) + " " + words);
    };
    if (speed.empty() && rate.empty() && map.empty()) throw WrongUsage("one of --speed, --fps and --map is needed");
    refuse_with("--map", !map.empty() && !speed.empty(), "tells the speed, --speed does not go with it");
    refuse_with("--map", !map.empty() && !start.empty(), "numbers the results, --start does not go with it");
    speed_number();
    rate_number();
    start_number();
    pairs_number();
    drops_audio();
    if (!memory.empty()) memory_size("--memory", memory);
    constexpr int by_flow = static_cast<int>(scene::BetweenMethod::flow);
    if (!method.empty() && choice("--method", method, scene::kBetweenMethodWords) != by_flow && flow.is_any())
        say_note("--method " + method + " follows no motion: --quality and what goes with it are not looked at");
    if (!on_cut.empty()) choice("--on-cut", on_cut, scene::kOnCutWords);
    refuse_with("--raw", !reading.raw.empty(), "is for a picture on standard input");
    depth_of(depth);
    flow.choices();
    encoding.check(output);
    if (input_is_pictures()) {
        if (in.empty()) throw WrongUsage("--in A-B is needed, it tells which pictures " + input + " stands for");
        if (const auto range = value_of("--in", [&] { return scene::frame_range(in); }); range.step > 1)
            throw WrongUsage("--in " + in + ": every picture counts, there is no step");
        exact("--in-fps", in_rate, scene::rate_of_text);
    } else {
        for (const auto& [option, text] : {std::pair{"--in", &in}, {"--in-fps", &in_rate}})
            refuse_with(option, !text->empty(), "is for numbered pictures, INPUT has no place for a number");
        refuse_with("--gaps", gaps, "is for numbered pictures, INPUT has no place for a number");
    }
    const bool movie = output_is_movie();
    work.style();
    if (movie) work.check_for_movie();
    refuse_with("--resume", work.resume && pictures::is_standard_output(output),
                "is for files, not for standard output");
    refuse_with("--lossless", lossless && !movie, "is for movies");
    for (const auto& [option, text] : {std::pair{"--codec", &encoding.codec},
                                       {"--crf", &encoding.crf},
                                       {"--bitrate", &encoding.bitrate},
                                       {"--pixel-format", &encoding.pixel_format}})
        refuse_with(option, lossless && !text->empty(), "does not go with --lossless, which tells it");
    refuse_with("--audio", !audio.empty() && !movie, "is for movies");
}

std::unique_ptr<scene::Clip> RetimeCommandOptions::open(std::uint64_t most_bytes, int threads,
                                                        pictures::Watch& watch) const {
    scene::ClipOptions options{most_bytes, threads, !reading.as_stored};
    if (!input_is_pictures()) {
        options.orient = options.orient && !output_is_movie();  // which tells how it is to be turned
        std::error_code ignored;
        if (std::filesystem::is_regular_file(input, ignored) && pictures::is_picture(input))
            throw WrongUsage(input + ": is one picture; numbered ones are NAME.####.EXT with --in A-B");
        return scene::open_movie_clip(input, options);
    }
    const auto in_fps = exact("--in-fps", in_rate, scene::rate_of_text);
    const scene::NumberedPictures pictures{scene::FramePattern(input), scene::frame_range(in),
                                           in_fps.value_or(scene::Rational(25)), gaps, work.keep_going};
    return scene::open_pictures_clip(pictures, options, watch);
}

scene::TimeMap RetimeCommandOptions::time_map(const scene::Clip& clip) const {
    if (!map.empty()) {
        const auto track = scene::read_time_track_file(map);
        return value_of("--map " + map + ":", [&] { return scene::TimeMap(clip, track); });
    }
    const scene::TimeMap::Even even{speed_number().value_or(scene::Rational(1)), rate_number(), start_number()};
    return value_of(speed.empty() ? "--fps " + rate + ":" : "--speed " + speed + ":",
                    [&] { return scene::TimeMap(clip, even); });
}

scene::RetimeOptions RetimeCommandOptions::retime_options(const scene::Clip& clip) const {
    scene::RetimeOptions options;
    options.between.flow = scene::flow_params(flow.choices());
    options.between.depth = depth_of(depth);
    if (!method.empty()) {
        const int number = choice("--method", method, scene::kBetweenMethodWords);
        options.between.method = static_cast<scene::BetweenMethod>(number);
    }
    if (!on_cut.empty()) options.on_cut = static_cast<scene::OnCut>(choice("--on-cut", on_cut, scene::kOnCutWords));
    if (cuts == "none") {
        options.cuts = scene::CutSearch::none;
    } else if (!cuts.empty() && cuts != "auto") {
        options.cuts = scene::CutSearch::listed;
        options.begins = indices_of(clip, cuts);
    }
    return options;
}

scene::FrameRange RetimeCommandOptions::range(const scene::TimeMap& map) const {
    const scene::FrameRange& all = map.numbers();
    if (frames.empty()) return work.row_of(all);
    const auto part = value_of("--frames", [&] { return scene::frame_range(frames); });
    if (part.first >= all.first && part.last <= all.last) return work.row_of(part);
    throw WrongUsage("--frames " + frames + ": the results are " + std::to_string(all.first) + " to " +
                     std::to_string(all.last));
}

void add_retime_options(CLI::App& command, RetimeCommandOptions& options) {
    const auto add = [&](const char* name, std::string& text, const char* help, const char* form) {
        return command.add_option(name, text, help)->type_name(form);
    };
    const auto add_switch = [&](const char* name, bool& value, const char* help) {
        command.add_flag(name, value, help)->disable_flag_override();
    };
    add("INPUT", options.input, "a movie, or numbered pictures", "INPUT")->required();
    add("-o,--output", options.output, "a movie, or numbered pictures", "OUT")->required();
    add("--in", options.in, "of numbered pictures: which", "A-B");
    add("--in-fps", options.in_rate, "of numbered pictures: frames a second (default: 25)", "R");
    add_switch("--gaps", options.gaps, "of numbered pictures: a missing number makes the one before it last longer");
    add("--speed", options.speed, "0.25 is a quarter of the speed, 2 twice it", "S");
    add("--fps", options.rate, "frames a second of the result: 60, 24000/1001 (default: the input's)", "R");
    add("--map", options.map, "keyframes of the source's frame for that of each result", "FILE.json");
    add("--method", options.method, "what is shown between frames (default: flow)", "nearest|blend|flow");
    add_flow_options(command, options.flow);
    add_depth_option(command, options.depth, "the input's, where 8 bits are worked on at 16");
    add("--cuts", options.cuts, "source frames that begin a shot (default: auto)", "auto|none|A,B,...");
    add("--on-cut", options.on_cut, "between shots: the nearer frame, or a mix (default: hold)", "hold|blend");
    add("--frames", options.frames, "results to make, every STEPth (default: all)", "A-B[xSTEP]");
    add("--start", options.start, "number of the first result (default: 1)", "N");
    add_long_work_options(command, options.work);
    add_switch("--lossless", options.lossless, "a movie that keeps every bit, in mkv");
    add("--audio", options.audio, "of a movie at its own speed (default: copy)", "copy|drop");
    add("--pairs", options.pairs, "pairs of frames at work at once (default: as threads and memory have room)", "N");
    add("--memory", options.memory, "memory for what is at work at once (default: half of the machine's)", "N[K|M|G]");
    add_switch("--json", options.json, "tell what was done, machine-readable, on standard output");
    add_cache_options(command, options.cache);
    add_no_cache_option(command, options.cache);
    add_reading_options(command, options.reading);
    add_encoding_options(command, options.encoding);
    add_movie_options(command, options.encoding);
    add_common_options(command, options.common);
}

}  // namespace qx::tool
