// SPDX-License-Identifier: Apache-2.0
// Pixels without a head: rows from the top, low bytes first.
#include "pictures/Raw.h"

#include <algorithm>
#include <cstring>

#include "pictures/Format.h"
#include "pictures/Pixels.h"
#include "pictures/RawFormat.h"

namespace qx::pictures {
namespace {

/// Channels of a pixel in their order; Y is all three colours.
struct Kind {
    const char *name, *channels;
    int depth;
};
constexpr Kind kKinds[] = {{"gray", "Y", 8},       {"rgb24", "RGB", 8},      {"bgr24", "BGR", 8},
                           {"rgba", "RGBA", 8},    {"bgra", "BGRA", 8},      {"argb", "ARGB", 8},
                           {"abgr", "ABGR", 8},    {"gray16le", "Y", 16},    {"rgb48le", "RGB", 16},
                           {"bgr48le", "BGR", 16}, {"rgba64le", "RGBA", 16}, {"bgra64le", "BGRA", 16},
                           {"grayf32le", "Y", 32}, {"rgbf32le", "RGB", 32},  {"rgbaf32le", "RGBA", 32}};

const Kind* kind_named(const std::string& name) {
    const auto* found = std::ranges::find_if(kKinds, [&](const Kind& kind) { return name == kind.name; });
    return found == std::end(kKinds) ? nullptr : found;
}

template <class Pixel> void set(Pixel& pixel, char channel, QX_ChannelOf<Pixel> value) {
    if (channel == 'A') pixel.alpha = value;
    if (channel == 'R' || channel == 'Y') pixel.red = value;
    if (channel == 'G' || channel == 'Y') pixel.green = value;
    if (channel == 'B' || channel == 'Y') pixel.blue = value;
}

/// Opaque in a file, where 16 bits go to 65535.
template <class Pixel> constexpr QX_ChannelOf<Pixel> full() {
    if constexpr (std::is_floating_point_v<QX_ChannelOf<Pixel>>) {
        return 1.0f;
    } else {
        return static_cast<QX_ChannelOf<Pixel>>(-1);
    }
}

template <class Pixel> void read_pixels(const unsigned char* bytes, const char* channels, QX_World& world) {
    each_pixel<Pixel>(world, [&](Pixel& pixel, int, int) {
        pixel = {full<Pixel>(), 0, 0, 0};
        for (const char* channel = channels; *channel != '\0'; ++channel, bytes += sizeof pixel.alpha) {
            QX_ChannelOf<Pixel> value{};
            std::memcpy(&value, bytes, sizeof value);
            set(pixel, *channel, value);
        }
    });
}

void write(OutputFile& file, const Picture& picture, bool, const WriteOptions&, Watch& watch) {
    const QX_World& world = *picture.world;
    with_pixel_of(world, [&]<class Pixel>() {
        std::vector<QX_ChannelOf<Pixel>> values;
        for (int y = 0; y < world.height; ++y) {
            watch.must_next_row(y, world.height);
            values.clear();
            const Pixel* row = row_of<Pixel>(world, y);
            for (int x = 0; x < world.width; ++x) {
                values.insert(values.end(), {row[x].red, row[x].green, row[x].blue, row[x].alpha});
            }
            file.write(values.data(), values.size() * sizeof values[0]);
        }
    });
    file.check();
}

}  // namespace

std::string raw_formats() {
    std::string all;
    for (const Kind& kind : kKinds) all += (all.empty() ? "" : ", ") + std::string(kind.name);
    return all;
}

bool is_raw_format(const std::string& name) { return kind_named(name) != nullptr; }

Picture read_raw(InputFile& file, const ReadOptions& options, Watch& watch) {
    const RawLayout& layout = *options.raw;
    const Kind& kind = *kind_named(layout.format);
    Picture picture;
    picture.has_alpha = std::strchr(kind.channels, 'A') != nullptr;
    if (!make_room(file.path(), layout.width, layout.height, kind.depth, options, watch, picture)) return picture;
    const std::vector<unsigned char> bytes = file.contents();
    const auto pixels = static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.height);
    const std::size_t wanted = pixels * std::strlen(kind.channels) * static_cast<std::size_t>(kind.depth) / 8;
    if (bytes.size() < wanted) {
        throw Failure(file.path(), "has " + std::to_string(bytes.size()) + " bytes, " + layout.format +
                                       " of that size has " + std::to_string(wanted));
    }
    if (bytes.size() > wanted) picture.notes.emplace_back("only its first frame is used");
    with_pixel_of(*picture.world,
                  [&]<class Pixel>() { read_pixels<Pixel>(bytes.data(), kind.channels, *picture.world); });
    return picture;
}

const Format& raw_format() {
    static const Format format{"raw", {}, {"raw"}, {8, 16, 32}, true, false, 0, read_raw, write};
    return format;
}

}  // namespace qx::pictures
