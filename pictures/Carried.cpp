// SPDX-License-Identifier: Apache-2.0
#include "pictures/Carried.h"

#include <algorithm>
#include <array>
#include <bit>
#include <type_traits>

#include "pictures/Light.h"
#include "pictures/Scale.h"

namespace qx::pictures {
namespace {

bool same_bits(const QX_PixelFloat& a, const QX_PixelFloat& b) {
    using Bits = std::array<std::uint32_t, 4>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

// What a file's pixel is in a world, and what that is in a file.
QX_Pixel16 to_world(const QX_Pixel16& p) { return each_channel<QX_Pixel16>(p, from_file16); }
QX_Pixel16 to_file(const QX_Pixel16& p) { return each_channel<QX_Pixel16>(p, to_file16); }
QX_PixelFloat to_world(const QX_PixelFloat& p) { return straight(p); }
QX_PixelFloat to_file(const QX_PixelFloat& p) { return p.alpha == 0 ? p : associated(p); }

// Whether a world tells a pixel of a file by its own, in files of all depths.
bool is_told(const QX_PixelFloat& p) { return same_bits(to_file(to_world(p)), p); }
bool is_told(const QX_Pixel16& p) {
    const auto is_end = [](std::uint16_t v) { return v == 0 || v == kFileFull16; };  // others are no v / 65535
    return is_end(p.alpha) && is_end(p.red) && is_end(p.green) && is_end(p.blue);
}

template <class Pixel> void settle_pixels(const std::string& path, Picture& picture) {
    const QX_World& file = *picture.world;
    std::unique_ptr<QX_World> carried;
    if (any_pixel<Pixel>(file, [](const Pixel& p, int, int) { return !is_told(p); })) {
        carried = std::move(picture.world);
        picture.world = new_world(path, carried->width, carried->height, carried->Depth(), false);
    }
    const QX_World& from = carried ? *carried : *picture.world;
    each_pixel<Pixel>(*picture.world, [&](Pixel& p, int x, int y) { p = to_world(row_of<Pixel>(from, y)[x]); });
    picture.carried = std::move(carried);
}

template <class Pixel> void make_straight(Picture& picture) {
    bool cut = false;
    each_pixel<Pixel>(*picture.world, [&](Pixel& p, int, int) {
        cut = cut || (p.alpha != 0 && std::max({p.red, p.green, p.blue}) > p.alpha);
        p = straight(p);
    });
    if (cut) picture.notes.emplace_back("its associated colours above their alpha are cut");
}

/// The value in a 16-bit file of a channel of a world of 16 bits, and of the one that is carried there.
std::uint16_t file16(std::uint16_t own, std::uint16_t carried) {
    return from_file16(carried) == own ? carried : to_file16(own);
}

/// The same in a file of floats, where `real` is that of the world.
float float16(std::uint16_t own, std::uint16_t carried, float real) {
    return from_file16(carried) == own ? float_of_file16(carried) : real;
}

/// Calls `make(to, pixel, carried)` for all pixels of a picture of 16 bits, of which `carried` is the nearest in a file
/// when nothing is carried.
template <class To, class Make> void each_file16(const Picture& picture, const QX_World& to, const Make& make) {
    each_pixel<To>(to, [&](To& out, int x, int y) {
        const QX_Pixel16 p = row_of<QX_Pixel16>(*picture.world, y)[x];
        const QX_Pixel16 c = picture.carried ? row_of<QX_Pixel16>(*picture.carried, y)[x] : to_file(p);
        out = make(QX_Pixel16{file16(p.alpha, c.alpha), file16(p.red, c.red), file16(p.green, c.green),
                              file16(p.blue, c.blue)});
    });
}

}  // namespace

void settle(const std::string& path, Picture& picture, bool straighten) {
    const bool is_associated = straighten && picture.associated;
    switch (picture.world->Depth()) {
        case 8:
            if (is_associated) make_straight<QX_Pixel8>(picture);
            return;
        case 16:
            if (is_associated) make_straight<QX_Pixel16>(picture);
            return settle_pixels<QX_Pixel16>(path, picture);
        default:
            if (is_associated) settle_pixels<QX_PixelFloat>(path, picture);
    }
}

std::unique_ptr<QX_World> pixels_of_file16(const std::string& path, const Picture& picture) {
    const QX_World& world = *picture.world;
    auto file = new_world(path, world.width, world.height, 16, false);
    if (world.Depth() == 16) {
        each_file16<QX_Pixel16>(picture, *file, [](const QX_Pixel16& p) { return p; });
    } else {
        each_pixel<QX_Pixel16>(*file, [&](QX_Pixel16& p, int x, int y) {
            p = each_channel<QX_Pixel16>(row_of<QX_PixelFloat>(world, y)[x], file16_of_float);
        });
    }
    return file;
}

std::unique_ptr<QX_World> pixels_of_depth(const std::string& path, const Picture& picture, int depth) {
    auto file = at_depth(path, *picture.world, depth);
    if (!picture.carried || picture.world->Depth() != 16 || depth != 32) return file;
    each_pixel<QX_PixelFloat>(*file, [&](QX_PixelFloat& p, int x, int y) {
        const QX_Pixel16& own = row_of<QX_Pixel16>(*picture.world, y)[x];
        const QX_Pixel16& carried = row_of<QX_Pixel16>(*picture.carried, y)[x];
        p = {float16(own.alpha, carried.alpha, p.alpha), float16(own.red, carried.red, p.red),
             float16(own.green, carried.green, p.green), float16(own.blue, carried.blue, p.blue)};
    });
    return file;
}

void bring_to_depth(const std::string& path, Picture& picture, int depth) {
    const QX_World& world = *picture.world;
    if (world.Depth() == depth) return;
    std::unique_ptr<QX_World> other;
    if (world.Depth() == 16 && depth == 32) {
        other = new_world(path, world.width, world.height, depth, false);
        each_file16<QX_PixelFloat>(picture, *other,
                                   [](const QX_Pixel16& p) { return each_channel<QX_PixelFloat>(p, float_of_file16); });
    } else {
        other = at_depth(path, world, depth);
    }
    picture.world = std::move(other);
    picture.carried.reset();
    picture.precision = std::min(picture.precision, precision_of(depth));
    picture.half = picture.half && depth != 16;  // which has finer steps
}

/// Under an alpha of 0 only light has a colour, and what is infinite must not become not-a-number.
QX_PixelFloat associated_pixel(const Picture& picture, int x, int y) {
    const QX_PixelFloat& p = row_of<QX_PixelFloat>(*picture.world, y)[x];
    if (p.alpha == 0) return is_light(picture, x, y) ? p : QX_PixelFloat{};
    if (!picture.carried) return associated(p);
    const QX_PixelFloat& carried = row_of<QX_PixelFloat>(*picture.carried, y)[x];
    return same_bits(straight(carried), p) ? carried : associated(p);
}

}  // namespace qx::pictures
