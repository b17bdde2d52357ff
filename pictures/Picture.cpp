// SPDX-License-Identifier: Apache-2.0
#include "pictures/Picture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <new>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Errors.h"
#include "QX/world/QX_FrameLimits.h"
#include "pictures/Carried.h"
#include "pictures/Files.h"
#include "pictures/Format.h"
#include "pictures/Light.h"
#include "pictures/MovieHead.h"
#include "pictures/Orientation.h"
#include "pictures/RawFormat.h"
#include "pictures/Scale.h"

namespace qx::pictures {
namespace {

static_assert(kMostSide == kMaxSide, "what worlds can have");

constexpr const char* kOutOfMemory = "out of memory";

/// All, those that are written first.
const std::vector<const Format*>& all_formats() {
    static const std::vector<const Format*> all = [] {
        std::vector<const Format*> formats = {&png_format(), &jpeg_format(), &tiff_format(), &exr_format(),
                                              &raw_format()};
        for (const Format* format : further_formats()) formats.push_back(format);
        formats.push_back(&radiance_format());
        return formats;
    }();
    return all;
}

/// The format that a name's ending tells, or null.
const Format* format_named(const std::string& path) {
    const std::string extension = extension_of(path);
    for (const Format* format : all_formats()) {
        if (std::ranges::count(format->extensions, extension) != 0) return format;
    }
    return nullptr;
}

/// The format that a file's first bytes tell, or null.
const Format* format_of(const InputFile& file) {
    for (const Format* format : all_formats()) {
        const auto begins = [&](const std::string& magic) { return file.begins_with(magic); };
        if (std::ranges::any_of(format->magics, begins) || (format->is != nullptr && format->is(file))) return format;
    }
    return nullptr;
}

std::string known_names() {
    std::string names;
    for (const Format* format : all_formats()) {
        if (format != &raw_format()) names += (names.empty() ? "" : ", ") + std::string(format->name);
    }
    return names;
}

int nearest_depth(const Format& format, int depth) {
    for (const int d : format.depths) {
        if (d >= depth) return d;
    }
    return format.depths.back();
}

void limit_alpha(QX_World& world) {
    each_pixel<QX_PixelFloat>(world, [](QX_PixelFloat& p, int, int) {
        p.alpha = p.alpha > 0 ? std::min(p.alpha, 1.0f) : 0.0f;  // not a number counts as 0
    });
}

/// False for values that no scanner and no camera means, as a damaged file may hold.
bool sensible(const Resolution& r) {
    constexpr double least = 1e-6, most = 1e9;
    return r.x >= least && r.x <= most && r.y >= least && r.y <= most;  // false for not-a-number
}

/// True when some alpha is another one. Whole rows at once, which the compiler makes vectors of.
template <class Pixel> bool any_alpha_but(const QX_World& world, QX_ChannelOf<Pixel> alpha) {
    for (int y = 0; y < world.height; ++y) {
        const Pixel* row = row_of<Pixel>(world, y);
        int others = 0;
        for (int x = 0; x < world.width; ++x) others |= row[x].alpha != alpha ? 1 : 0;
        if (others != 0) return true;
    }
    return false;
}

/// The pixels that a file of this depth gets; 16 bits go from 0 to 65535.
std::unique_ptr<QX_World> world_for_file(const std::string& path, const Picture& picture, int depth) {
    if (depth != 16) return pixels_of_depth(path, picture, depth);
    if (picture.world->Depth() != 8) return pixels_of_file16(path, picture);
    Picture sixteen;
    sixteen.world = at_depth(path, *picture.world, depth);
    return pixels_of_file16(path, sixteen);
}

int guarded_copy(QX_World& to, const QX_World& from) {
    try {
        to.CopyRectPossiblyDifferentBitdepth(&from, whole_of(from), false, 0, 0, nullptr);
        return 0;
    } catch (int code) {
        return code;
    }
}

}  // namespace

const Format& format_to_write(const std::string& path) {
    const Format* format = format_named(path);
    if (format == nullptr) throw Failure(path, "the name's ending tells no format; known are " + known_endings());
    if (format->write == nullptr) {
        throw Failure(path, std::string(format->name) + " is only read; written are " + known_endings());
    }
    return *format;
}

Resolution Resolution::in(Unit other) const {
    constexpr double metres[] = {0, 0.0254, 0.01, 1};
    if (unit == other) return *this;
    if (unit == Unit::none || other == Unit::none) return {};
    const double factor = metres[static_cast<int>(other)] / metres[static_cast<int>(unit)];
    return {x * factor, y * factor, other};
}

Resolution Resolution::whole() const {
    constexpr double fine = 10000;  // of the longer side; as much as JPEG has room for
    if (unit != Unit::none || (x == std::floor(x) && y == std::floor(y))) return *this;
    return {x * fine / std::max(x, y), y * fine / std::max(x, y), unit};
}

namespace {

std::string in_words(std::int64_t width, std::int64_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

/// Throws Failure for what no world can be.
void check_size(const std::string& path, std::int64_t width, std::int64_t height, int depth) {
    if (width < 1 || height < 1 || width > kMostSide || height > kMostSide) {
        throw Failure(path, in_words(width, height) + ": a side has 1 to " + std::to_string(kMostSide));
    }
    const int w = static_cast<int>(width), h = static_cast<int>(height);
    if (!std::get<0>(numeric_limits::CanAllocateCPUFrame(w, h, static_cast<short>(depth), 16))) {
        const std::string bits = " of " + std::to_string(depth) + " bits";
        throw Failure(path, in_words(width, height) + bits + " are above the limit of 2 GB");
    }
}

}  // namespace

std::unique_ptr<QX_World> new_world(const std::string& path, std::int64_t width, std::int64_t height, int depth,
                                    bool clear) {
    check_size(path, width, height, depth);
    try {
        return std::unique_ptr<QX_World>(
            QX_World::New(static_cast<int>(width), static_cast<int>(height), static_cast<short>(depth), clear ? 1 : 0));
    } catch (int code) {
        const char* const why = code == kQX_OutOfMemory ? "out of memory for " : "no frame for ";
        throw Failure(path, why + in_words(width, height));
    }
}

bool make_room(const std::string& path, std::int64_t width, std::int64_t height, int depth, const ReadOptions& options,
               Watch& watch, Picture& picture) {
    check_size(path, width, height, depth);
    picture.in_file.size = {static_cast<int>(width), static_cast<int>(height)};
    picture.in_file.depth = depth;
    watch.must_go_on();
    if (options.pixels) picture.world = new_world(path, width, height, depth, false);
    return options.pixels;
}

std::unique_ptr<QX_World> at_depth(const std::string& path, const QX_World& world, int depth) {
    const QX_World* from = &world;
    std::unique_ptr<QX_World> limited;
    if (world.Depth() == 32 && depth < 32) {
        limited = at_depth(path, world, 32);
        limit_alpha(*limited);
        from = limited.get();
    }
    auto to = new_world(path, world.width, world.height, depth);
    const int code = guarded_copy(*to, *from);
    if (code == kQX_OutOfMemory) throw Failure(path, kOutOfMemory);
    if (code != 0) throw Failure(path, "could not be converted (code " + std::to_string(code) + ")");
    return to;
}

bool any_transparency(const QX_World& world) {
    return with_pixel_of(
        world, [&]<class Pixel>() { return any_alpha_but<Pixel>(world, QX_ChannelOf<Pixel>(DepthOf<Pixel>::full)); });
}

namespace {

std::atomic<std::int64_t> reading_nanoseconds{0};

/// Adds the time that it lives to that of reading.
class ReadingTime {
public:
    ReadingTime() = default;
    ~ReadingTime() {
        const auto passed = std::chrono::steady_clock::now() - start_;
        reading_nanoseconds += std::chrono::duration_cast<std::chrono::nanoseconds>(passed).count();
    }
    ReadingTime(const ReadingTime&) = delete;
    ReadingTime& operator=(const ReadingTime&) = delete;

private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// From pixels as the file has them to those that are worked with.
void settle_as_asked(const std::string& path, const ReadOptions& options, Picture& picture) {
    settle(path, picture, options.straighten);
    if (picture.cmyk) picture.carried.reset();  // pixels of a file that they will not go to
    if (options.straighten && picture.associated) mark_light(picture);
    if (options.orient) turn(path, picture);
}

}  // namespace

Picture read_picture(const std::string& path, Watch& watch, const ReadOptions& options) {
    const ReadingTime time;
    watch.must_go_on();
    errno = 0;
    try {
        InputFile file(path);
        const bool is_raw = options.raw && is_standard_input(path);
        if (const Format* format = is_raw ? &raw_format() : format_of(file)) {
            Picture picture = format->read(file, options, watch);
            picture.in_file.format = format->name;
            picture.linear = format->linear;
            picture.precision = picture.half ? Precision::half : precision_of(picture.in_file.depth);
            if (!sensible(picture.resolution)) picture.resolution = {};
            if (options.pixels) settle_as_asked(path, options, picture);
            return picture;
        }
    } catch (const std::bad_alloc&) {
        throw Failure(path, kOutOfMemory);
    }
    if (has_movie_head(InputFile(path))) throw Failure(path, "is a movie, where a picture is wanted");
    throw Failure(path, "is no picture of a known format (" + known_names() + ")");
}

namespace {

/// Writes all of a picture into what `open` gives when the pixels are ready, and finishes it.
template <class Open>
std::unique_ptr<OutputFile> write_into(const Open& open, const std::string& path, const Picture& picture, int depth,
                                       const WriteOptions& options, Watch& watch) {
    watch.must_go_on();
    const Format& format = format_to_write(path);
    if (picture.cmyk) throw Failure(path, "CMYK cannot be written");
    const int file_depth = nearest_depth(format, depth);
    Picture converted;
    if (picture.world->Depth() != file_depth || file_depth == 16) {
        converted.about() = picture.about();
        converted.light = picture.light;
        converted.window = picture.window;
        converted.world = world_for_file(path, picture, file_depth);
    }
    const Picture& out = converted.world ? converted : picture;
    const bool transparent =
        file_depth == 16 ? any_alpha_but<QX_Pixel16>(*out.world, kFileFull16) : any_transparency(*out.world);
    if (transparent && !format.holds_alpha) {
        throw Failure(path, std::string("the result is partly transparent, which ") + format.name +
                                " cannot hold; flatten it onto a colour");
    }
    errno = 0;
    try {
        auto file = open();
        file->check();
        format.write(*file, out, format.holds_alpha && (transparent || picture.has_alpha), options, watch);
        watch.must_go_on();
        file->finish();
        return file;
    } catch (const std::bad_alloc&) {
        throw Failure(path, kOutOfMemory);
    }
}

}  // namespace

double seconds_of_reading() { return static_cast<double>(reading_nanoseconds.load()) / 1e9; }

PictureSize picture_size(const std::string& path, Watch& watch, const ReadOptions& options) {
    ReadOptions head = options;
    head.pixels = false;
    const InFile file = read_picture(path, watch, head).in_file;
    return options.orient ? turned_size(file) : file.size;
}

bool is_picture(const std::string& path) { return format_of(InputFile(path)) != nullptr; }

void check_output(const std::string& path) {
    format_to_write(path);
    if (!is_standard_output(path)) check_folder(path);
}

Precision precision_of(int depth) {
    return depth == 8 ? Precision::eight : depth == 16 ? Precision::sixteen : Precision::real;
}

std::span<const char* const> packings_of(const std::string& path) { return format_to_write(path).packings; }

int file_depth(const std::string& path, int depth) { return nearest_depth(format_to_write(path), depth); }

std::string known_endings() {
    std::string endings;
    for (const Format* format : all_formats()) {
        if (format->write != nullptr) endings += (endings.empty() ? "" : ", ") + format->extensions.front();
    }
    return endings;
}

bool known_format(const std::string& path) {
    const Format* format = format_named(path);
    return format != nullptr && format->write != nullptr;
}

bool is_linear_format(const std::string& path) { return format_to_write(path).linear; }

void write_picture(const std::string& path, const Picture& picture, int depth, const WriteOptions& options,
                   Watch& watch) {
    write_uncommitted(path, picture, depth, options, watch)->commit();
}

std::unique_ptr<OutputFile> write_uncommitted(const std::string& path, const Picture& picture, int depth,
                                              const WriteOptions& options, Watch& watch) {
    const auto open = [&] { return std::make_unique<OutputFile>(path); };
    return write_into(open, path, picture, depth, options, watch);
}

std::string bytes_of_picture(const std::string& path, const Picture& picture, int depth, const WriteOptions& options,
                             Watch& watch) {
    std::string bytes;
    const auto open = [&] { return std::make_unique<OutputFile>(path, bytes); };
    write_into(open, path, picture, depth, options, watch);
    return bytes;
}

}  // namespace qx::pictures
