// SPDX-License-Identifier: Apache-2.0
#include "pictures/Movie.h"

#include <dlfcn.h>

#include <algorithm>

#include "pictures/Carried.h"
#include "pictures/FileName.h"
#include "pictures/MovieHead.h"
#include "pictures/OwnModule.h"
#include "pictures/Picture.h"

namespace qx::pictures {
namespace {

constexpr const char* kEndings[] = {"mp4", "mov", "mkv", "webm", "avi", "nut"};
constexpr std::int64_t kMostBytes = INT32_MAX;  // of a frame's pixels, as worlds have it

}  // namespace

const movie::Routines* movie_routines(const std::string& path, const char* what) {
    void* module = open_own_module(movie::kFileName);
    if (module == nullptr) throw Failure(path, std::string(what) + " need the module " + ::dlerror());
    const auto entry = reinterpret_cast<movie::Entry>(::dlsym(module, movie::kEntryName));
    const movie::Routines* routines = entry != nullptr ? entry() : nullptr;
    if (routines != nullptr && routines->version == movie::kVersion) return routines;
    throw Failure(path, std::string(movie::kFileName) + " is of another version than this command");
}

bool is_movie(const std::string& path) {
    return std::find(std::begin(kEndings), std::end(kEndings), extension_of(path)) != std::end(kEndings);
}

bool is_read_as_movie(const std::string& path) {
    if (is_picture(path)) return false;
    return (is_movie(path) && !is_standard_input(path)) || has_movie_head(InputFile(path));
}

std::string movie_endings() {
    std::string all;
    for (const char* ending : kEndings) all += (all.empty() ? "" : ", ") + std::string(ending);
    return all;
}

MovieFile::MovieFile(const std::string& path, int width, int height, const MovieSettings& settings)
    : file_(path),
      routines_(movie_routines(path, "movies")),
      movie_(nullptr),
      width_(width),
      height_(height),
      depth_(settings.depth) {
    file_.check();
    const MovieColours& colours = settings.colours;
    const std::string name = "movie." + extension_of(path);
    const MovieEncoding& encoding = settings.encoding;
    const movie::Settings asked{
        .name = name.c_str(),
        .file = file_.temporary().c_str(),
        .width = width,
        .height = height,
        .rate = settings.rate.number,
        .per = settings.rate.per,
        .tags = {colours.primaries, colours.transfer, colours.matrix, colours.range},
        .showing = {settings.orientation, {settings.aspect.number, settings.aspect.per}},
        .codec = encoding.codec.empty() ? nullptr : encoding.codec.c_str(),
        .pixel_format = encoding.pixel_format.empty() ? nullptr : encoding.pixel_format.c_str(),
        .crf = encoding.crf.value_or(-1),
        .bits_a_second = encoding.bits_a_second,
        .lossless = settings.lossless,
        .alpha = settings.alpha,
        .depth = depth_,
        .audio = settings.audio.empty() ? nullptr : settings.audio.c_str(),
        .audio_start = settings.audio_start,
        .time_code = settings.time_code.empty() ? nullptr : settings.time_code.c_str(),
    };
    movie::Words words{};
    movie_ = routines_->open(&asked, &words);
    check(movie_ != nullptr, words);
    depth_ = routines_->depth(movie_);
    note_ = words.text;
}

MovieFile::~MovieFile() {
    if (movie_ != nullptr) routines_->drop(movie_);
}

void MovieFile::check(bool done, const movie::Words& words) const {
    if (done) return;
    if (words.is_choice) throw BadChoice(file_.path(), words.text);
    throw Failure(file_.path(), words.text);
}

void MovieFile::add_rows(const QX_World& frame, int depth) {
    if (frame.width != width_ || frame.height != height_ || depth != depth_) {
        throw Failure(file_.path(), "a frame has another size or depth than the movie");
    }
    movie::Words words{};
    check(routines_->add(movie_, static_cast<const unsigned char*>(frame.data), frame.rowbytes, &words), words);
}

void MovieFile::add(const Picture& frame) {
    const QX_World& world = *frame.world;
    if (depth_ == 8) return add_rows(world.Depth() == 8 ? world : *at_depth(file_.path(), world, 8), 8);
    if (world.Depth() != 8) return add_rows(*pixels_of_file16(file_.path(), frame), 16);
    Picture sixteen;
    sixteen.world = at_depth(file_.path(), world, 16);
    add_rows(*pixels_of_file16(file_.path(), sixteen), 16);
}

void MovieFile::commit() {
    movie::Words words{};
    check(routines_->finish(movie_, &words), words);
    file_.commit();
}

MovieReader::MovieReader(const std::string& path, int threads)
    : path_(path), routines_(movie_routines(path, "movies")) {
    const InputFile file(path);  // which refuses what is no file
    movie::Words words{};
    movie_ = routines_->open_reader(file.opened().c_str(), threads, kMostBytes, &facts_, &words);
    if (movie_ == nullptr) throw Failure(path, words.text);
    try {
        check_sides();
        for (int i = 0; const char* note = routines_->note(movie_, i); ++i) notes_.emplace_back(note);
        if (facts_.rotated) notes_.emplace_back("is to be turned by an angle that is taken as none");
    } catch (...) {
        routines_->close(movie_);
        throw;
    }
}

MovieReader::~MovieReader() { routines_->close(movie_); }

void MovieReader::check_sides() const {
    if (facts_.width <= kMostSide && facts_.height <= kMostSide) return;
    throw Failure(path_, "frames of " + std::to_string(facts_.width) + " x " + std::to_string(facts_.height) +
                             " pixels: a side has 1 to " + std::to_string(kMostSide));
}

MovieColours MovieReader::colours() const {
    const movie::Tags& tags = facts_.tags;
    return {tags.primaries, tags.transfer, tags.matrix, tags.range};
}

InFile MovieReader::in_file() const {
    InFile stored;
    stored.size = {facts_.width, facts_.height};
    stored.depth = facts_.depth;
    stored.orientation = facts_.showing.orientation;
    return stored;
}

std::span<const std::int64_t> MovieReader::stamps() const {
    return {facts_.stamps, static_cast<std::size_t>(facts_.frames) + 1};
}

Picture MovieReader::read(int frame) {
    Picture picture;
    picture.world = new_world(path_, facts_.width, facts_.height, facts_.depth, false);
    movie::Words words{};
    auto* const pixels = static_cast<unsigned char*>(picture.world->data);
    if (!routines_->read(movie_, frame, pixels, picture.world->rowbytes, &words)) throw Failure(path_, words.text);
    if (words.text[0] != 0) picture.notes.emplace_back(words.text);
    picture.has_alpha = facts_.has_alpha;
    picture.precision = precision_of(facts_.depth);
    picture.colours.movie = colours();
    settle(path_, picture, true);
    return picture;
}

}  // namespace qx::pictures
