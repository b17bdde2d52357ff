// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/Reshape.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "QX/indep/QX_Depth.h"
#include "pictures/Scale.h"
#include "scene/Composite.h"
#include "scene/Faults.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/options/PlaceOptions.h"

namespace qx::tool {
namespace {

std::string size_words(scene::Extent size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

constexpr int kMargin = 3;  ///< pixels that bicubic samples and rounded positions see beyond an edge

/// The picture with its edges repeated on all sides.
std::unique_ptr<QX_World> with_margin(const std::string& path, const QX_World& world) {
    auto wide = pictures::new_world(path, world.width + 2 * kMargin, world.height + 2 * kMargin, world.Depth(), false);
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        pictures::each_pixel<Pixel>(*wide, [&](Pixel& p, int x, int y) {
            const int from_x = std::clamp(x - kMargin, 0, world.width - 1);
            p = pictures::row_of<Pixel>(world, std::clamp(y - kMargin, 0, world.height - 1))[from_x];
        });
    });
    return wide;
}

template <class Pixel> QX_ChannelOf<Pixel> channel(const Pixel& p, char letter, QX_ChannelOf<Pixel> full) {
    switch (letter) {
        case 'r':
            return p.red;
        case 'g':
            return p.green;
        case 'b':
            return p.blue;
        case 'a':
            return p.alpha;
        case '1':
            return full;
        default:
            return 0;
    }
}

/// @param of_file  16 bits go to 65535
void shuffle_pixels(QX_World& world, const Channels& c, bool of_file) {
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        const auto full = static_cast<QX_ChannelOf<Pixel>>(of_file ? pictures::kFileFull16 : DepthOf<Pixel>::full);
        pictures::each_pixel<Pixel>(world, [&](Pixel& p, int, int) {
            p = {channel(p, c[3], full), channel(p, c[0], full), channel(p, c[1], full), channel(p, c[2], full)};
        });
    });
}

}  // namespace

M_LRect crop_of(const std::string& option, const std::string& text, scene::Extent whole) {
    int width = 0, height = 0, x = 0, y = 0, length = 0;
    const bool has_size = std::sscanf(text.c_str(), "%6dx%6d%n", &width, &height, &length) == 2;
    int more = 0;
    if (has_size && length < static_cast<int>(text.size())) {
        const int read = std::sscanf(text.c_str() + length, "+%6d+%6d%n", &x, &y, &more);
        length = read == 2 ? length + more : -1;
    }
    if (!has_size || length != static_cast<int>(text.size()) || width < 1 || height < 1 || x < 0 || y < 0) {
        throw WrongUsage(option + " " + text + ": not a part WxH or WxH+X+Y");
    }
    if (x + width > whole.width || y + height > whole.height) {
        throw WrongUsage(option + " " + text + ": goes beyond the picture, which has " + size_words(whole));
    }
    return {x, y, x + width, y + height};
}

std::unique_ptr<QX_World> cropped(const std::string& path, const QX_World& world, const M_LRect& part) {
    auto to = pictures::new_world(path, part.right - part.left, part.bottom - part.top, world.Depth(), false);
    to->CopyRect(&world, part, 0, 0);
    return to;
}

scene::Extent size_of(const std::string& option, const std::string& text, scene::Extent now) {
    const auto side = [&](const std::string& number) { return whole_number(option, number, 1, pictures::kMostSide); };
    const auto part = [](int length, double factor) {
        return static_cast<int>(std::clamp(std::floor(length * factor + 0.5), 1.0, double{pictures::kMostSide}));
    };
    if (text.ends_with('%')) {
        const double factor = real_number(option, text.substr(0, text.size() - 1), 0.001, 1e6) / 100;
        return {part(now.width, factor), part(now.height, factor)};
    }
    const bool exact = text.ends_with('!');
    const std::string size = exact ? text.substr(0, text.size() - 1) : text;
    const auto cross = size.find('x');
    if (cross == std::string::npos || size.size() < 2) {
        throw WrongUsage(option + " " + text + ": not a size WxH, WxH!, Wx, xH or P%");
    }
    const std::string across = size.substr(0, cross), down = size.substr(cross + 1);
    if (across.empty()) return {part(now.width, double(side(down)) / now.height), side(down)};
    if (down.empty()) return {side(across), part(now.height, double(side(across)) / now.width)};
    if (exact) return {side(across), side(down)};
    const double factor = std::min(double(side(across)) / now.width, double(side(down)) / now.height);
    return {part(now.width, factor), part(now.height, factor)};
}

std::unique_ptr<QX_World> resized(const std::string& path, const QX_World& world, scene::Extent size,
                                  pictures::Watch& watch) {
    const auto wide = with_margin(path, world);
    auto to = pictures::new_world(path, size.width, size.height, world.Depth());
    const double across = double(size.width) / world.width, down = double(size.height) / world.height;
    scene::Transfer transfer;
    transfer.layer = wide.get();
    transfer.mode = xfer_copy;
    transfer.quality = 2;
    transfer.matrices = {M_Matrix3{{{across, 0, 0}, {0, down, 0}, {-kMargin * across, -kMargin * down, 1}}}};
    scene::must(scene::composite(transfer, *to, watch), path);
    return to;
}

Channels channels_of(const std::string& option, const std::string& text) {
    if (text.empty() || text.size() > 4 || text.find_first_not_of("rgba01") != std::string::npos) {
        throw WrongUsage(option + " " + text + ": not one to four of r, g, b, a, 0 and 1");
    }
    if (text.size() < 3) return {text[0], text[0], text[0], text.size() == 2 ? text[1] : '1'};
    return {text[0], text[1], text[2], text.size() == 4 ? text[3] : 'a'};
}

void shuffle(const std::string& path, pictures::Picture& picture, const Channels& channels) {
    shuffle_pixels(*picture.world, channels, false);
    if (picture.carried && picture.world->Depth() == 16) {
        const auto whole = M_LRect{0, 0, picture.world->width, picture.world->height};
        std::shared_ptr<QX_World> carried = cropped(path, *picture.carried, whole);
        shuffle_pixels(*carried, channels, true);
        picture.carried = carried;
    } else {
        picture.carried.reset();  // of associated floats, which others are divided by now
    }
    picture.has_alpha = picture.has_alpha || channels[3] != 'a';
}

}  // namespace qx::tool
