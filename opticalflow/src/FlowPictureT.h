// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Planes.h"
#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowPicture.h"
#include "opticalflow/src/Pixels.h"

namespace qx::QX_ISA {

inline void widen(const HvVec2* row, std::int32_t width, const FlowColumns& columns, const VectorRow& out) {
    const float* const components = &row->x;
    for_lanes(columns.count, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        const Ints left = load_some<Ints>(columns.whole + at, count);
        const Floats f = load_some<Floats>(columns.fraction + at, count);
        const auto corner = [&](Ints column, int component) QX_LAMBDA {
            const Floats read = gather_floats(components + component, limited(column, width) * 2);
            return lies_in(column, width) ? read : Floats{};
        };
        store_some(out.x + at, mix(corner(left, 0), corner(left + 1, 0), f), count);
        store_some(out.y + at, mix(corner(left, 1), corner(left + 1, 1), f), count);
    });
}

inline void mix_rows(const VectorRow& top, const VectorRow& bottom, float fraction, std::int32_t count,
                     const VectorRow& out) {
    const Floats f = splat<Floats>(fraction);
    for_lanes(count, [&](std::int32_t at, std::int32_t n) QX_LAMBDA {
        store_some(out.x + at, mix(load_some<Floats>(top.x + at, n), load_some<Floats>(bottom.x + at, n), f), n);
        store_some(out.y + at, mix(load_some<Floats>(top.y + at, n), load_some<Floats>(bottom.y + at, n), f), n);
    });
}

using FloatPlanes = Planes<Floats>;

/// The channels of one pixel a lane.
template <class T, class I> QX_INLINE Planes<FloatLanes<I>> read_pixels(const FlowFrame& frame, I column, I line) {
    using Pixel = solvan_of::Argb<T>;
    if constexpr (!is_wide<I>) {
        const auto& p = reinterpret_cast<const Pixel*>(frame.pixels + line * frame.row_bytes)[column];
        return {static_cast<float>(p.alpha), static_cast<float>(p.red), static_cast<float>(p.green),
                static_cast<float>(p.blue)};
    } else {
        const I bytes = line * splat<I>(static_cast<std::int32_t>(frame.row_bytes)) +
                        column * static_cast<std::int32_t>(sizeof(Pixel));
        const auto word = [&](int k) QX_LAMBDA { return gather(frame.pixels + 4 * k, bytes); };
        if constexpr (sizeof(T) == 1) {
            const Ints v = word(0);
            return {to_float(v & 255), to_float(v >> 8 & 255), to_float(v >> 16 & 255), to_float(v >> 24 & 255)};
        } else if constexpr (sizeof(T) == 2) {
            const Ints ar = word(0), gb = word(1);
            return {to_float(ar & 0xFFFF), to_float(ar >> 16 & 0xFFFF), to_float(gb & 0xFFFF),
                    to_float(gb >> 16 & 0xFFFF)};
        } else {
            return {(Floats)word(0), (Floats)word(1), (Floats)word(2), (Floats)word(3)};
        }
    }
}

template <class F> QX_INLINE FloatPlanes each_channel(const F& f) {
    return {f(&FloatPlanes::a), f(&FloatPlanes::r), f(&FloatPlanes::g), f(&FloatPlanes::b)};
}

/// A frame where the vectors, times k and the scale, lead. Where there is no vector the marker: alpha 0, colours -1.
template <class T>
QX_INLINE FloatPlanes follow(const FlowFrame& frame, Floats x, Floats y, Floats vx, Floats vy, float k, float scale) {
    const Floats none = splat<Floats>(INVALID_VECTOR);
    const Floats dx = vx * splat<Floats>(k) * splat<Floats>(scale), dy = vy * splat<Floats>(k) * splat<Floats>(scale);
    const Places across = places_of(x - dx - 0.5f), down = places_of(y + dy - 0.5f);
    const Ints x0 = limited(across.whole, frame.width), x1 = limited(across.whole + 1, frame.width);
    const Ints y0 = limited(down.whole, frame.height), y1 = limited(down.whole + 1, frame.height);
    const FloatPlanes p00 = read_pixels<T>(frame, x0, y0), p10 = read_pixels<T>(frame, x1, y0);
    const FloatPlanes p01 = read_pixels<T>(frame, x0, y1), p11 = read_pixels<T>(frame, x1, y1);
    const Mask is_none = vx == none, overflows = dx == none;
    return each_channel([&](auto channel) QX_LAMBDA {
        const Floats sample = mix(mix(p00.*channel, p10.*channel, across.fraction),
                                  mix(p01.*channel, p11.*channel, across.fraction), down.fraction);
        const Floats marker = splat<Floats>(channel == &FloatPlanes::a ? 0.0f : -1.0f);
        return is_none ? marker : overflows ? splat<Floats>(128.0f) : sample;
    });
}

/// Integer channels limited and truncated.
template <class T> QX_INLINE Ints channel_of(Floats v) {
    const Floats full = splat<Floats>(solvan_of::kRange<T>);
    const Floats least = v > Floats{} ? v : Floats{};
    return truncate_to_int(least < full ? least : full);
}

template <class T> QX_INLINE void put_pixels(solvan_of::Argb<T>* to, const FloatPlanes& v, std::int32_t count) {
    if constexpr (std::is_floating_point_v<T>) {
        float a[lanes_in<Floats>], r[lanes_in<Floats>], g[lanes_in<Floats>], b[lanes_in<Floats>];
        store_lanes(a, v.a), store_lanes(r, v.r), store_lanes(g, v.g), store_lanes(b, v.b);
        for (std::int32_t i = 0; i < count; ++i) {
            to[i].alpha = a[i];
            to[i].red = r[i];
            to[i].green = g[i];
            to[i].blue = b[i];
        }
    } else {
        const Ints a = channel_of<T>(v.a), r = channel_of<T>(v.r), g = channel_of<T>(v.g), b = channel_of<T>(v.b);
        if constexpr (sizeof(T) == 1) {
            std::int32_t pixel[lanes_in<Ints>];
            store_lanes(pixel, a | r << 8 | g << 16 | b << 24);
            __builtin_memcpy(to, pixel, static_cast<std::size_t>(count) * 4);
        } else {
            std::int32_t ar[lanes_in<Ints>], gb[lanes_in<Ints>];
            store_lanes(ar, a | r << 16), store_lanes(gb, g | b << 16);
            for (std::int32_t i = 0; i < count; ++i) {
                __builtin_memcpy(&to[i].alpha, ar + i, 4);
                __builtin_memcpy(&to[i].green, gb + i, 4);
            }
        }
    }
}

template <class T> void picture_row(const FlowPictureRow& row) {
    auto* const out = static_cast<solvan_of::Argb<T>*>(row.out);
    const Floats y = splat<Floats>(static_cast<float>(row.y) + 0.5f);
    const float s = 1.0f - row.t;
    for_lanes(row.count, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        const Floats x = to_float(lane_numbers<Ints>() + at) + 0.5f;
        const auto sample = [&](const FlowFrame& frame, const VectorRow& v, float k) QX_LAMBDA {
            return follow<T>(frame, x, y, load_some<Floats>(v.x + at, count), load_some<Floats>(v.y + at, count), k,
                             row.scale);
        };
        const FloatPlanes s0 = sample(row.first, row.to_first, row.t), s1 = sample(row.second, row.to_second, s);
        put_pixels<T>(out + at, each_channel([&](auto channel) QX_LAMBDA {
                          return s0.*channel * splat<Floats>(s) + s1.*channel * splat<Floats>(row.t);
                      }),
                      count);
    });
}

extern const FlowPicture flow_picture;
const FlowPicture flow_picture{.widen = &widen,
                               .mix_rows = &mix_rows,
                               .bilinear8 = &picture_row<std::uint8_t>,
                               .bilinear16 = &picture_row<std::uint16_t>,
                               .bilinear32 = &picture_row<float>};

}  // namespace qx::QX_ISA
