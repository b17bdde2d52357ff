// SPDX-License-Identifier: Apache-2.0
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <new>

#include "pictures/Exr.h"
#include "pictures/ExrHeader.h"
#include "pictures/ExrTasks.h"
#include "pictures/Format.h"
#include "pictures/Losses.h"
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

/// @return whether the picture is grey
bool read_lines(Imf::InputFile& exr, const std::string& path, const Lines<QX_PixelFloat>& lines, int last) {
    Imf::FrameBuffer buffer;
    bool grey = false;
    if (!bind_channels(exr.header().channels(), lines, buffer, grey)) {
        throw Failure(path, "has no channels R, G, B, and no Y alone");
    }
    for (auto i = buffer.begin(); i != buffer.end(); ++i) {
        const Imf::Channel* channel = exr.header().channels().findChannel(i.name());
        if (channel && (channel->xSampling != 1 || channel->ySampling != 1)) {
            throw Failure(path, std::string("its channel ") + i.name() + " has fewer samples than there are pixels");
        }
    }
    exr.setFrameBuffer(buffer);
    exr.readPixels(lines.top(), last);
    return grey;
}

/// What lies outside of the picture is kept if a window around both is not larger than a picture may be.
bool is_kept(const Imath::Box2i& display, const Imath::Box2i& data) {
    Imath::Box2i both = display;
    both.extendBy(data);
    const std::int64_t width = std::int64_t{both.max.x} - both.min.x + 1;
    const std::int64_t height = std::int64_t{both.max.y} - both.min.y + 1;
    return width <= kMostSide && height <= kMostSide && width * height <= INT_MAX / std::int64_t{sizeof(QX_PixelFloat)};
}

/// Rows of the data window go to their place in the display window, which is the picture.
/// @param outside  gets the pixels that have none there, may be null
void read_rows(Imf::InputFile& exr, const std::string& path, QX_World& world, std::vector<QX_PixelFloat>* outside,
               Watch& watch) {
    const Imath::Box2i &display = exr.header().displayWindow(), &data = exr.header().dataWindow();
    const int top = outside ? data.min.y : std::max(data.min.y, display.min.y);
    const int bottom = (outside ? data.max.y : std::min(data.max.y, display.max.y)) + 1;
    Lines<QX_PixelFloat> lines(data);
    for (int first = top; first < bottom; first += lines.rows()) {
        lines.begin_at(first);
        const int end = std::min(first + lines.rows(), bottom);
        const bool grey = read_lines(exr, path, lines, end - 1);
        for (int y = first; y < end; ++y) {
            watch.must_next_row(y - top, bottom - top);
            QX_PixelFloat* line = lines.row(y);
            for (std::size_t x = 0; grey && x < lines.columns(); ++x) line[x].green = line[x].blue = line[x].red;
            const Columns inside = shown(data, display, y);
            if (outside) outside->insert(outside->end(), line, line + inside.begin);
            if (outside) outside->insert(outside->end(), line + inside.end, line + lines.columns());
            if (y < display.min.y || y > display.max.y) continue;
            auto* row = row_of<QX_PixelFloat>(world, y - display.min.y);
            std::fill(row, row + world.width, QX_PixelFloat{});
            const auto left = std::max(std::int64_t{data.min.x} - display.min.x, std::int64_t{0});
            if (inside.begin < inside.end) std::copy(line + inside.begin, line + inside.end, row + left);
        }
    }
    for (int y = 0; y < world.height; ++y) {  // last, when there has been something to read
        auto* row = row_of<QX_PixelFloat>(world, y);
        const bool filled = y + display.min.y >= data.min.y && y + display.min.y <= data.max.y;
        if (!filled) std::fill(row, row + world.width, QX_PixelFloat{});
    }
}

/// The picture's pixels as they lie in the file, and what lies beside them.
void read_pixels(Imf::InputFile& exr, const std::string& path, Picture& picture, Watch& watch) {
    const Imf::Header& header = exr.header();
    auto window = std::make_shared<ExrWindow>();
    window->display = header.displayWindow();
    window->data = header.dataWindow();
    window->has_alpha = header.channels().findChannel("A") != nullptr;
    picture.has_alpha = window->has_alpha || window->data != window->display;
    const bool keeps = is_kept(window->display, window->data);
    const auto all = [&] { read_rows(exr, path, *picture.world, keeps ? &window->outside : nullptr, watch); };
    with_idle_threads(all);
    if (!keeps) picture.notes.emplace_back(kOutsideIsLost);
    const bool usual = window->data == window->display && window->data.min == Imath::V2i(0, 0);
    if (keeps && !usual) picture.window = std::move(window);
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
    any = any || header.screenWindowWidth() != usual.screenWindowWidth();
    any = any || header.screenWindowCenter() != usual.screenWindowCenter();
    if (any) picture.attributes = std::move(kept);
}

/// True for a channel that makes the picture.
bool is_used(const Imf::ChannelList& channels, const std::string& name) {
    const bool rgb = channels.findChannel("R") != nullptr && channels.findChannel("G") != nullptr &&
                     channels.findChannel("B") != nullptr;
    return name == "A" || (rgb ? name == "R" || name == "G" || name == "B" : name == "Y");
}

/// What a picture has no place for, and whether all channels that make it are half floats.
void note_rest(const Imf::ChannelList& channels, Picture& picture) {
    std::string further;
    picture.half = true;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        if (!is_used(channels, i.name())) {
            further += (further.empty() ? "" : ", ") + std::string(i.name());
        } else if (i.channel().type != Imf::HALF) {
            picture.half = false;
        }
    }
    if (!further.empty()) picture.notes.push_back("its further channels are left out: " + further);
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
    picture.colours.primaries = {c.red.x, c.red.y, c.green.x, c.green.y, c.blue.x, c.blue.y, c.white.x, c.white.y};
}

Picture read_file(const std::string& path, Watch& watch) {
    start_library();
    Imf::InputFile exr(path.c_str(), exr_threads());
    const Imf::Header& header = exr.header();
    const auto& display = header.displayWindow();
    Picture picture;
    picture.world = new_world(path, std::int64_t{display.max.x} - display.min.x + 1,
                              std::int64_t{display.max.y} - display.min.y + 1, 32, false);
    watch.must_go_on_with(picture.world->width, picture.world->height);
    read_pixels(exr, path, picture, watch);
    picture.associated = true;
    read_extras(header, picture);
    keep_attributes(header, picture);
    if (const auto* mark = header.findTypedAttribute<Imf::StringAttribute>(kMarkKey)) picture.mark = mark->value();
    note_rest(header.channels(), picture);
    if (header.hasType() && Imf::isDeepData(header.type())) {
        picture.notes.emplace_back("its samples in depth become one a pixel");
    }
    if (Imf::MultiPartInputFile(path.c_str()).parts() > 1) picture.notes.emplace_back("only its first part is used");
    return picture;
}

}  // namespace

void start_library() {
    static const bool started = [] {
        try {
            Imf::staticInitialize();
        } catch (const std::exception&) {
            return false;
        }
        Imf::Header::setMaxImageSize(kMostRead, kMostRead);
        return true;
    }();
    if (!started) throw std::bad_alloc();
}

bool is_own_attribute(const std::string& name) {
    constexpr const char* own[] = {"channels",
                                   "chromaticities",
                                   "chunkCount",
                                   "compression",
                                   "dataWindow",
                                   "displayWindow",
                                   "dwaCompressionLevel",
                                   "lineOrder",
                                   kMarkKey,
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

Picture read_exr(InputFile& file, bool, Watch& watch) {
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
