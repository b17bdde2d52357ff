// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>

#include "QX/indep/QX_Pixel.h"

namespace qx::pictures {

inline constexpr std::uint32_t kFileFull16 = 65535;

/// 16-bit files hold 0..65535, worlds 0..32768. Every value of a world survives the way out and back.
constexpr std::uint16_t from_file16(std::uint32_t v) {
    return static_cast<std::uint16_t>((v * 32768 + 32767) / kFileFull16);
}
constexpr std::uint16_t to_file16(std::uint32_t v) {
    v = std::min(v, 32768u);
    return static_cast<std::uint16_t>((v * kFileFull16 + 16384) >> 15);
}

/// Associated to straight alpha of integer channels, rounded, at the file's own precision. Under alpha 0 the
/// colour stays.
template <std::uint32_t Full, class Channel> constexpr Channel straight(Channel c, Channel a) {
    if (a == 0) return c;
    return static_cast<Channel>(std::min(Full, (c * Full + a / 2u) / a));
}

/// The last step of reading a row in file scale.
inline void finish_row(QX_Pixel8* row, int width, bool associated) {
    for (int x = 0; associated && x < width; ++x) {
        QX_Pixel8& p = row[x];
        p = {p.alpha, straight<255>(p.red, p.alpha), straight<255>(p.green, p.alpha), straight<255>(p.blue, p.alpha)};
    }
}

inline void finish_row(QX_Pixel16* row, int width, bool associated) {
    for (int x = 0; x < width; ++x) {
        QX_Pixel16 p = row[x];
        if (associated) {
            p = {p.alpha, straight<kFileFull16>(p.red, p.alpha), straight<kFileFull16>(p.green, p.alpha),
                 straight<kFileFull16>(p.blue, p.alpha)};
        }
        row[x] = {from_file16(p.alpha), from_file16(p.red), from_file16(p.green), from_file16(p.blue)};
    }
}

/// Under an alpha of 0 light may shine, so its colour stays too.
inline void finish_row(QX_PixelFloat* row, int width, bool associated) {
    for (int x = 0; associated && x < width; ++x) {
        QX_PixelFloat& p = row[x];
        if (p.alpha != 0) p = {p.alpha, p.red / p.alpha, p.green / p.alpha, p.blue / p.alpha};
    }
}

}  // namespace qx::pictures
