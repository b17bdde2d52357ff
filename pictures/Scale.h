// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>

#include "QX/indep/QX_Pixel.h"

namespace qx::pictures {

inline constexpr std::uint32_t kFileFull16 = 65535;

/// 16-bit files hold 0..65535, worlds 0..32768, so that two of a file become one. Every value of a world survives the
/// way out and back.
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

/// 16-bit values at depth 32, and back by rounding: all 65,536 survive. What is beyond 0 and 1 is cut, and what is not
/// a number counts as 0.
constexpr float float_of_file16(std::uint32_t v) { return static_cast<float>(v) / static_cast<float>(kFileFull16); }
constexpr std::uint16_t file16_of_float(float v) {
    const float limited = v > 0 ? std::min(v, 1.0f) : 0.0f;
    return static_cast<std::uint16_t>(limited * static_cast<float>(kFileFull16) + 0.5f);
}

/// `change(channel)` of each channel.
template <class To, class From, class Change> constexpr To each_channel(const From& p, const Change& change) {
    return {change(p.alpha), change(p.red), change(p.green), change(p.blue)};
}

// Associated to straight alpha, of integers in file scale. Under an alpha of 0 the colour stays, since light may shine
// there.
constexpr QX_Pixel8 straight(const QX_Pixel8& p) {
    const std::uint8_t a = p.alpha;
    return {a, straight<255>(p.red, a), straight<255>(p.green, a), straight<255>(p.blue, a)};
}
constexpr QX_Pixel16 straight(const QX_Pixel16& p) {
    const std::uint16_t a = p.alpha;
    return {a, straight<kFileFull16>(p.red, a), straight<kFileFull16>(p.green, a), straight<kFileFull16>(p.blue, a)};
}
constexpr QX_PixelFloat straight(const QX_PixelFloat& p) {
    return p.alpha == 0 ? p : QX_PixelFloat{p.alpha, p.red / p.alpha, p.green / p.alpha, p.blue / p.alpha};
}
constexpr QX_PixelFloat associated(const QX_PixelFloat& p) {
    return {p.alpha, p.red * p.alpha, p.green * p.alpha, p.blue * p.alpha};
}

}  // namespace qx::pictures
