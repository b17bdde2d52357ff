// SPDX-License-Identifier: Apache-2.0
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <new>

#include "pictures/Exr.h"
#include "pictures/ExrFacts.h"
#include "pictures/ExrHeader.h"
#include "pictures/ExrLayers.h"
#include "pictures/ExrTasks.h"
#include "pictures/Format.h"
#include "pictures/Losses.h"
#include "pictures/Pixels.h"

namespace qx::pictures {
namespace {

constexpr int kMostRead = 1 << 16;  // a side of a file's windows: more than a picture has, for what lies outside it

/// A part of a file that is read, and what of it.
struct Part {
    Imf::InputPart& exr;
    const ExrChosen& channels;
    const std::string& path;
};

/// Slices for what is chosen.
void bind_channels(const ExrChosen& channels, const Lines<QX_PixelFloat>& lines, Imf::FrameBuffer& buffer) {
    const auto bind = [&](const std::string& name, float* first, double fill) {
        buffer.insert(name, lines.slice(Imf::FLOAT, first, fill));
    };
    QX_PixelFloat* const first = lines.first();
    float* const places[] = {&first->red, &first->green, &first->blue};
    for (std::size_t i = 0; i < channels.colours.size(); ++i) bind(channels.colours[i], places[i], 0.0);
    bind(channels.alpha.empty() ? "A" : channels.alpha, &first->alpha, 1.0);
}

void read_lines(const Part& part, const Lines<QX_PixelFloat>& lines, int last) {
    Imf::FrameBuffer buffer;
    bind_channels(part.channels, lines, buffer);
    for (auto i = buffer.begin(); i != buffer.end(); ++i) {
        const Imf::Channel* channel = part.exr.header().channels().findChannel(i.name());
        if (channel && (channel->xSampling != 1 || channel->ySampling != 1)) {
            throw Failure(part.path,
                          std::string("its channel ") + i.name() + " has fewer samples than there are pixels");
        }
    }
    part.exr.setFrameBuffer(buffer);
    part.exr.readPixels(lines.top(), last);
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
void read_rows(const Part& part, QX_World& world, std::vector<QX_PixelFloat>* outside, Watch& watch) {
    const Imf::Header& header = part.exr.header();
    const Imath::Box2i &display = header.displayWindow(), &data = header.dataWindow();
    const bool grey = part.channels.is_grey();
    const int top = outside ? data.min.y : std::max(data.min.y, display.min.y);
    const int bottom = (outside ? data.max.y : std::min(data.max.y, display.max.y)) + 1;
    Lines<QX_PixelFloat> lines(data);
    for (int first = top; first < bottom; first += lines.rows()) {
        lines.begin_at(first);
        const int end = std::min(first + lines.rows(), bottom);
        read_lines(part, lines, end - 1);
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
void read_pixels(const Part& part, Picture& picture, Watch& watch) {
    const Imf::Header& header = part.exr.header();
    auto window = std::make_shared<ExrWindow>();
    window->display = header.displayWindow();
    window->data = header.dataWindow();
    window->has_alpha = !part.channels.alpha.empty();
    const bool keeps = is_kept(window->display, window->data);
    with_idle_threads([&] { read_rows(part, *picture.world, keeps ? &window->outside : nullptr, watch); });
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

/// What a picture has no place for, and whether all channels that make it are half floats.
void note_rest(const Imf::ChannelList& channels, const ExrChosen& chosen, Picture& picture) {
    std::string further;
    picture.half = true;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        if (!chosen.uses(i.name())) {
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

std::string with_commas(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names) all += (all.empty() ? "" : ", ") + name;
    return all;
}

/// What the name that the file was given stands for.
ExrLayer layer_of(const InputFile& file, const Imf::MultiPartInputFile& exr) {
    if (auto found = find_layer(exr, file.layer())) return *found;
    const std::string others = with_commas(layers_of(exr));
    if (!file.layer().empty()) {
        const std::string known = others.empty() ? "none beside its own picture" : others;
        throw Failure(file.path(), "no part, layer or channel of that name; it has " + known);
    }
    const std::string hint = others.empty() ? "" : ", but " + others + "; name one behind the file and a colon";
    throw Failure(file.path(), "has no channels R, G, B, and no Y alone" + hint);
}

/// All that the head tells.
void read_head(const InputFile& file, const Imf::MultiPartInputFile& exr, const ExrLayer& layer, Picture& picture) {
    const Imf::Header& header = exr.header(layer.part);
    picture.in_file.layers = layers_of(exr);
    picture.has_alpha = !layer.channels.alpha.empty() || header.dataWindow() != header.displayWindow();
    picture.associated = true;
    read_extras(header, picture);
    keep_attributes(header, picture);
    if (const auto* mark = header.findTypedAttribute<Imf::StringAttribute>(kMarkKey)) picture.mark = mark->value();
    note_rest(header.channels(), layer.channels, picture);
    if (!file.layer().empty()) picture.notes.clear();  // the rest was not asked for
    if (header.hasType() && Imf::isDeepData(header.type())) {
        picture.notes.emplace_back("its samples in depth become one a pixel");
    }
    if (file.layer().empty() && exr.parts() > 1) picture.notes.emplace_back("only its first part is used");
}

Picture read_file(const InputFile& file, const ReadOptions& options, Watch& watch) {
    start_library();
    Imf::MultiPartInputFile exr(file.opened().c_str(), exr_threads());
    const ExrLayer layer = layer_of(file, exr);
    const auto& display = exr.header(layer.part).displayWindow();
    Picture picture;
    read_head(file, exr, layer, picture);
    if (!options.pixels) picture.in_file.facts = facts_of(exr.header(layer.part));
    if (!make_room(file.path(), std::int64_t{display.max.x} - display.min.x + 1,
                   std::int64_t{display.max.y} - display.min.y + 1, 32, options, watch, picture)) {
        return picture;
    }
    Imf::InputPart part(exr, layer.part);
    read_pixels({part, layer.channels, file.path()}, picture, watch);
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

Picture read_exr(InputFile& file, const ReadOptions& options, Watch& watch) {
    if (!attributes_fit(file.stream()))
        throw Failure(file.path(), "damaged or cut short OpenEXR: the file ends within its header");
    try {
        return read_file(file, options, watch);
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& fault) {  // the library's texts begin with the file's name, and are long
        if (memory_ran_out()) throw std::bad_alloc();
        throw Failure(file.path(), std::string("damaged or cut short OpenEXR: ") + fault.what());
    }
}

}  // namespace qx::pictures
