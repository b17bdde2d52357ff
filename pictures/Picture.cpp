// SPDX-License-Identifier: Apache-2.0
#include "pictures/Picture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <new>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Errors.h"
#include "QX/world/QX_FrameLimits.h"
#include "pictures/Carried.h"
#include "pictures/Files.h"
#include "pictures/Format.h"
#include "pictures/Light.h"
#include "pictures/Scale.h"

namespace qx::pictures {
namespace {

static_assert(kMostSide == kMaxSide, "what worlds can have");

constexpr const char* kOutOfMemory = "out of memory";

constexpr const Format& (*kFormats[])() = {png_format, jpeg_format, tiff_format, exr_format};

/// The format that a name's ending tells, or null.
const Format* format_named(const std::string& path) {
    const std::string extension = extension_of(path);
    for (const auto format : kFormats) {
        for (const auto& known : format().extensions) {
            if (known == extension) return &format();
        }
    }
    return nullptr;
}

/// The format that a file's first bytes tell, or null.
const Format* format_of(const InputFile& file) {
    for (const auto format : kFormats) {
        for (const auto& magic : format().magics) {
            if (file.begins_with(magic)) return &format();
        }
    }
    return nullptr;
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
    return *format;
}

std::string extension_of(const std::string& path) {
    const auto name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    std::string extension = dot == std::string::npos ? "" : name.substr(dot + 1);
    for (char& c : extension) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return extension;
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

std::unique_ptr<QX_World> new_world(const std::string& path, std::int64_t width, std::int64_t height, int depth,
                                    bool clear) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width < 1 || height < 1 || width > kMostSide || height > kMostSide) {
        throw Failure(path, size + ": a side has 1 to " + std::to_string(kMostSide));
    }
    const int w = static_cast<int>(width), h = static_cast<int>(height);
    const auto d = static_cast<short>(depth);
    if (!std::get<0>(numeric_limits::CanAllocateCPUFrame(w, h, d, 16))) {
        throw Failure(path, size + " of " + std::to_string(depth) + " bits are above the limit of 2 GB");
    }
    try {
        return std::unique_ptr<QX_World>(QX_World::New(w, h, d, clear ? 1 : 0));
    } catch (int code) {
        throw Failure(path, (code == kQX_OutOfMemory ? "out of memory for " : "no frame for ") + size);
    }
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

/// What a caller takes as it is.
struct Takes {
    bool associated = false, cmyk = false;
};

Picture read_and_settle(const std::string& path, const Takes& takes, Watch& watch) {
    const bool straighten = !takes.associated;
    const ReadingTime time;
    watch.must_go_on();
    errno = 0;
    try {
        InputFile file(path);
        if (const Format* format = format_of(file)) {
            Picture picture = format->read(file, takes.cmyk, watch);
            settle(path, picture, straighten);
            if (picture.cmyk) picture.carried.reset();  // pixels of a file that they will not go to
            if (straighten && picture.associated) mark_light(picture);
            picture.linear = format->linear;
            picture.precision = picture.half ? Precision::half : precision_of(picture.world->Depth());
            if (!sensible(picture.resolution)) picture.resolution = {};
            return picture;
        }
    } catch (const std::bad_alloc&) {
        throw Failure(path, kOutOfMemory);
    }
    throw Failure(path, "is no picture of a known format (PNG, JPEG, TIFF, OpenEXR)");
}

/// Stops the reading of a picture once its size is known.
class SizeWatch : public Watch {
public:
    explicit SizeWatch(const Watch& watch) : watch_(watch) {}
    bool stops() const noexcept override { return found.width > 0 || watch_.stops(); }
    void rows(std::int64_t, std::int64_t) noexcept override {}
    void size(int width, int height) noexcept override { found = {width, height}; }
    PictureSize found{0, 0};

private:
    const Watch& watch_;
};

}  // namespace

double seconds_of_reading() { return static_cast<double>(reading_nanoseconds.load()) / 1e9; }

PictureSize picture_size(const std::string& path, Watch& watch) {
    SizeWatch sizes(watch);
    try {
        read_picture(path, sizes);
    } catch (const Stopped&) {
        watch.must_go_on();
    }
    return sizes.found;
}

bool is_picture(const std::string& path) { return format_of(InputFile(path)) != nullptr; }

Picture read_picture(const std::string& path, Watch& watch) { return read_and_settle(path, {}, watch); }

Picture read_picture_as_stored(const std::string& path, Watch& watch) {
    return read_and_settle(path, {.associated = true}, watch);
}

Picture read_picture_or_cmyk(const std::string& path, Watch& watch) {
    return read_and_settle(path, {.cmyk = true}, watch);
}

void check_output(const std::string& path) {
    format_to_write(path);
    std::error_code ignored;
    const auto folder = std::filesystem::path(path).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
        throw Failure(path, "its folder is missing");
    if (std::filesystem::is_directory(path, ignored)) throw Failure(path, "is a folder");
}

Precision precision_of(int depth) {
    return depth == 8 ? Precision::eight : depth == 16 ? Precision::sixteen : Precision::real;
}

int file_depth(const std::string& path, int depth) { return nearest_depth(format_to_write(path), depth); }

std::string known_endings() {
    std::string endings;
    for (const auto format : kFormats) endings += (endings.empty() ? "" : ", ") + format().extensions.front();
    return endings;
}

bool known_format(const std::string& path) { return format_named(path) != nullptr; }

bool is_linear_format(const std::string& path) { return format_to_write(path).linear; }

void write_picture(const std::string& path, const Picture& picture, int depth, const WriteOptions& options,
                   Watch& watch) {
    write_uncommitted(path, picture, depth, options, watch)->commit();
}

std::unique_ptr<OutputFile> write_uncommitted(const std::string& path, const Picture& picture, int depth,
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
        throw Failure(path, std::string("the result is partly transparent, which ") + format.name + " cannot hold");
    }
    errno = 0;
    try {
        auto file = std::make_unique<OutputFile>(path);
        file->check();
        format.write(*file, out, format.holds_alpha && (transparent || picture.has_alpha), options, watch);
        watch.must_go_on();
        file->finish();
        return file;
    } catch (const std::bad_alloc&) {
        throw Failure(path, kOutOfMemory);
    }
}

}  // namespace qx::pictures
