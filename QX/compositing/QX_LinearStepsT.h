// SPDX-License-Identifier: Apache-2.0
// Body of what brings rows into linear light and back, for one level. Integer channels are looked up as they lie in
// memory, alphas among them take their own way.
#pragma once

#include "QX/compositing/QX_Levels.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

/// Only registers that gather gain by more than one channel at a time.
inline constexpr bool kLooksUpLanes = kRegister >= 32;
using Lookups = Vector<std::int32_t, kLooksUpLanes ? kRegister : 16>;

/// As many channels of memory as lanes hold.
template <class T> struct PackedOf { typedef T Type [[gnu::vector_size(lanes_in<Lookups> * sizeof(T))]]; };

/// Calls lanes(channels) for whole registers of pixels and pixel(p) for what is left.
template <class From, class To, class Lanes, class One>
QX_INLINE void each_channel_of(std::int32_t count, const From* src, To* dst, const Lanes& lanes, const One& pixel) {
    constexpr int step = lanes_in<Lookups> / 4;
    if constexpr (kLooksUpLanes && !std::is_same_v<To, QX_PixelFloat>) {
        Lookups alphas{};
        for (int i = 0; i < lanes_in<Lookups>; i += 4) alphas[i] = -1;
        for (; count >= step; count -= step, src += step, dst += step) {
            const auto packed = load_lanes<typename PackedOf<QX_ChannelOf<From>>::Type>(src);
            const Lookups made = lanes(__builtin_convertvector(packed, Lookups), alphas);
            store_lanes(dst, __builtin_convertvector(made, typename PackedOf<QX_ChannelOf<To>>::Type));
        }
    }
    for (; count > 0; --count) *dst++ = pixel(*src++);
}

template <class D>
void to_linear_row(std::int32_t count, const QX_LinearBlendingTables& tables, const typename D::Pixel* src,
                   typename LinearDepth<D>::Pixel* dst) {
    each_channel_of(
        count, src, dst,
        [&](Lookups c, Lookups is_alpha) QX_LAMBDA {
            if constexpr (D::number == 8) {
                return is_alpha ? widened_8_to_16(c) : neighbours_at(&tables, 2 * c).first;
            } else {
                return is_alpha ? c : linear_lanes16(tables, c);
            }
        },
        [&](const auto& p) QX_LAMBDA { return to_linear<D>(tables, p); });
}

template <class D>
void from_linear_row(std::int32_t count, const QX_LinearBlendingTables& tables,
                     const typename LinearDepth<D>::Pixel* src, typename D::Pixel* dst) {
    each_channel_of(
        count, src, dst,
        [&](Lookups c, Lookups is_alpha) QX_LAMBDA {
            const Lookups made = is_alpha ? c : encoded_lanes16(tables, c);
            return D::number == 8 ? narrowed_16_to_8(made) : made;
        },
        [&](const auto& p) QX_LAMBDA { return from_linear<D>(tables, p); });
}

template <class D> inline constexpr LinearSteps<typename D::Pixel> linear_steps{&to_linear_row<D>, &from_linear_row<D>};

}  // namespace qx::QX_ISA
