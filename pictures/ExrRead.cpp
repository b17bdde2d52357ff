// SPDX-License-Identifier: Apache-2.0
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfMultiPartInputFile.h>
#include <ImfStandardAttributes.h>

#include <algorithm>
#include <memory>
#include <new>

#include "pictures/Carried.h"
#include "pictures/Exr.h"
#include "pictures/ExrHeader.h"
#include "pictures/ExrTasks.h"
#include "pictures/Light.h"
#include "pictures/Pixels.h"

namespace qx::pictures {
namespace {

constexpr int kMostRead = 1 << 16;  // a side of a file's windows: more than a picture has, for what lies outside it

/// Slices for what the file has. @return false when it has nothing that makes a picture
bool bind_channels(const Imf::ChannelList& channels, const Lines<QX_PixelFloat>& lines, Imf::FrameBuffer& buffer,
                   bool& grey) {
    const auto bind = [&](const char* name, float* first, double fill) {
        buffer.insert(name, lines.slice(Imf::FLOAT, first, fill));
    };
    const bool rgb = channels.findChannel("R") && channels.findChannel("G") && channels.findChannel("B");
    grey = !rgb && channels.findChannel("Y") && !channels.findChannel("RY");
    if (!rgb && !grey) return false;
    bind("A", &lines.first()->alpha, 1.0);
    bind(grey ? "Y" : "R", &lines.first()->red, 0.0);
    if (rgb) bind("G", &lines.first()->green, 0.0);
    if (rgb) bind("B", &lines.first()->blue, 0.0);
    return true;
}

void clear(const QX_World& world, int y, int left, int right) {
    auto* row = row_of<QX_PixelFloat>(world, y);
    std::fill(row + left, row + std::max(left, right), QX_PixelFloat{});
}

/// @return whether the picture is grey
bool read_lines(Imf::InputFile& exr, const std::string& path, const Lines<QX_PixelFloat>& lines, int last) {
    Imf::FrameBuffer buffer;
    bool grey = false;
    if (!bind_channels(exr.header().channels(), lines, buffer, grey)) {
        throw Failure(path, "has no channels R, G, B, and no Y alone");
    }
    exr.setFrameBuffer(buffer);
    exr.readPixels(lines.top(), last);
    return grey;
}

/// Rows of the data window go to their place in the display window, which is the picture.
void read_rows(Imf::InputFile& exr, const std::string& path, QX_World& world, Watch& watch) {
    const auto& display = exr.header().displayWindow();
    const auto& window = exr.header().dataWindow();
    Lines<QX_PixelFloat> lines(window);
    const int left = std::max(window.min.x, display.min.x), right = std::min(window.max.x, display.max.x) + 1;
    const int top = std::max(window.min.y, display.min.y), bottom = std::min(window.max.y, display.max.y) + 1;
    for (int first = top; first < bottom && left < right; first += lines.rows()) {
        lines.begin_at(first);
        const int end = std::min(first + lines.rows(), bottom);
        const bool grey = read_lines(exr, path, lines, end - 1);
        for (int y = first; y < end; ++y) {
            watch.must_next_row(y - top, bottom - top);
            auto* row = row_of<QX_PixelFloat>(world, y - display.min.y) + (left - display.min.x);
            const QX_PixelFloat* line = lines.row(y);
            std::copy(line + (left - window.min.x), line + (right - window.min.x), row);
            for (int x = 0; grey && x < right - left; ++x) row[x].green = row[x].blue = row[x].red;
            clear(world, y - display.min.y, 0, left - display.min.x);
            clear(world, y - display.min.y, right - display.min.x, world.width);
        }
    }
    for (int y = 0; y < world.height; ++y) {  // last, when there has been something to read
        const bool filled = y >= top - display.min.y && y < bottom - display.min.y && left < right;
        if (!filled) clear(world, y, 0, world.width);
    }
}

void keep_attributes(const Imf::Header& header, Picture& picture) {
    auto kept = std::make_shared<ExrAttributes>();
    bool any = false;
    const Imf::Header usual;
    for (auto i = header.begin(); i != header.end(); ++i) {
        if (is_own_attribute(i.name())) continue;
        kept->header.insert(i.name(), i.attribute());
        any = any || usual.find(i.name()) == usual.end();
    }
    if (any) picture.attributes = std::move(kept);
}

/// What a picture has no place for.
void note_rest(const Imf::Header& header, Picture& picture) {
    const auto& channels = header.channels();
    const bool rgb = channels.findChannel("R") != nullptr && channels.findChannel("G") != nullptr &&
                     channels.findChannel("B") != nullptr;
    std::string further;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        const std::string name = i.name();
        const bool used = name == "A" || (rgb ? name == "R" || name == "G" || name == "B" : name == "Y");
        if (!used) further += (further.empty() ? "" : ", ") + name;
    }
    if (!further.empty()) picture.notes.push_back("its further channels are left out: " + further);
    const auto &display = header.displayWindow(), &window = header.dataWindow();
    if (!display.intersects(window.min) || !display.intersects(window.max)) {
        picture.notes.emplace_back("what lies outside its display window is left out");
    }
}

/// True when all channels that make the picture are half floats.
bool is_half(const Imf::Header& header) {
    for (const char* name : {"R", "G", "B", "A", "Y"}) {
        const Imf::Channel* channel = header.channels().findChannel(name);
        if (channel != nullptr && channel->type != Imf::HALF) return false;
    }
    return true;
}

void read_extras(const Imf::Header& header, Picture& picture) {
    const double ratio = header.pixelAspectRatio();
    if (Imf::hasXDensity(header)) {
        const double x = Imf::xDensity(header);
        picture.resolution = {x, x * ratio, Resolution::Unit::inch};
    } else if (ratio != 1) {
        picture.resolution = {1, ratio, Resolution::Unit::none};
    }
    if (!Imf::hasChromaticities(header)) return;
    const Imf::Chromaticities& c = Imf::chromaticities(header);
    picture.primaries = {c.red.x, c.red.y, c.green.x, c.green.y, c.blue.x, c.blue.y, c.white.x, c.white.y};
}

/// Else a header alone could claim gigabytes of tables. The limit is one for all threads, so it is set once.
void limit_sizes() {
    static const bool limited = (Imf::Header::setMaxImageSize(kMostRead, kMostRead), true);
    static_cast<void>(limited);
}

Picture read_file(const std::string& path, Watch& watch) {
    limit_sizes();
    Imf::InputFile exr(path.c_str(), exr_threads());
    const Imf::Header& header = exr.header();
    const auto& display = header.displayWindow();
    Picture picture;
    picture.has_alpha = header.channels().findChannel("A") != nullptr || header.dataWindow() != display;
    picture.world = new_world(path, std::int64_t{display.max.x} - display.min.x + 1,
                              std::int64_t{display.max.y} - display.min.y + 1, 32, false);
    with_idle_threads([&] { read_rows(exr, path, *picture.world, watch); });
    settle(path, picture, true);
    mark_light(picture);
    picture.half = is_half(header);
    read_extras(header, picture);
    keep_attributes(header, picture);
    note_rest(header, picture);
    if (Imf::MultiPartInputFile(path.c_str()).parts() > 1) picture.notes.emplace_back("only its first part is used");
    return picture;
}

}  // namespace

bool is_own_attribute(const std::string& name) {
    constexpr const char* own[] = {"channels",
                                   "chromaticities",
                                   "chunkCount",
                                   "compression",
                                   "dataWindow",
                                   "displayWindow",
                                   "dwaCompressionLevel",
                                   "lineOrder",
                                   "maxSamplesPerPixel",
                                   "multiView",
                                   "name",
                                   "pixelAspectRatio",
                                   "preview",
                                   "tiles",
                                   "type",
                                   "version",
                                   "view",
                                   "xDensity"};
    return std::find(std::begin(own), std::end(own), name) != std::end(own);
}

Picture read_exr(InputFile& file, Watch& watch) {
    if (!attributes_fit(file.stream()))
        throw Failure(file.path(), "damaged or cut short OpenEXR: the file ends within its header");
    try {
        return read_file(file.path(), watch);
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& fault) {  // the library's texts begin with the file's name, and are long
        if (memory_ran_out()) throw std::bad_alloc();
        throw Failure(file.path(), std::string("damaged or cut short OpenEXR: ") + fault.what());
    }
}

}  // namespace qx::pictures
