// SPDX-License-Identifier: Apache-2.0
// Body of the row conversions, for one level. Rows between integer depths, and to float, treat all channels alike and
// run over plain channels; rows from float have rules of their own for alpha.
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/pixelops/QX_CopyKernels.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

template <class T> QX_INLINE const Loose<T>* loose(const std::byte* p) { return reinterpret_cast<const Loose<T>*>(p); }
template <class T> QX_INLINE Loose<T>* loose(std::byte* p) { return reinterpret_cast<Loose<T>*>(p); }

template <class From, class To> void channel_row(const std::byte* src, std::byte* dst, std::size_t columns) {
    const auto* s = loose<QX_ChannelOf<From>>(src);
    auto* d = loose<QX_ChannelOf<To>>(dst);
    for (std::size_t i = 0; i < 4 * columns; ++i) d[i].value = convert_channel<To, float, From>(s[i].value);
}

/// Channels that are worked on at once; those of whole pixels.
inline constexpr int kChannels = kRegister == 0 ? 4 : static_cast<int>(kRegister / 4);
using Floats = Vector<float, kRegister == 0 ? 16 : kRegister>;
using Ints = Vector<std::int32_t, sizeof(Floats)>;
using UnsignedInts = Vector<std::uint32_t, sizeof(Floats)>;

QX_INLINE Ints alpha_lanes() {
    Ints lanes{};
    for (int i = 0; i < kChannels; i += 4) lanes[i] = -1;
    return lanes;
}

/// Limited to 0 and full. No number becomes 0.
QX_INLINE Floats limited(Floats v, float full) {
    const Floats above = v > 0.0f ? v : Floats{};
    return lesser(above, splat<Floats>(full));
}

/// Colours are limited, alpha is not; truncated after adding a half.
struct Truncated {
    template <class To> QX_INLINE static Ints channels(Floats v) {
        constexpr auto full = static_cast<float>(DepthOf<To>::full);
        v *= full;
        return truncate_to_int((alpha_lanes() ? v : limited(v, full)) + 0.5f);
    }
};
/// Rounded to nearest even, alpha limited too. The limit comes first, which changes no result: it takes 2^31 and above
/// to full and what is no number to 0.
struct Nearest {
    template <class To> QX_INLINE static Ints channels(Floats v) {
        constexpr auto full = static_cast<float>(DepthOf<To>::full);
        return round_to_int(limited(v * full, full));
    }
};

/// Calls step(channels, noise, made) for whole registers of channels, and for what is left with copies. `noise` is one
/// value a channel, or null.
template <class From, class To, class Step>
QX_INLINE void each_register(const std::byte* src, const std::uint32_t* noise, std::byte* dst, std::size_t columns,
                             const Step& step) {
    From last[kChannels]{};
    std::uint32_t drawn[kChannels]{};
    To made[kChannels];
    for (std::size_t left = 4 * columns; left > 0;) {
        const std::size_t n = std::min<std::size_t>(left, kChannels);
        if (n == kChannels) {
            step(reinterpret_cast<const From*>(src), noise, reinterpret_cast<To*>(dst));
        } else {
            __builtin_memcpy(last, src, n * sizeof(From));
            if (noise != nullptr) __builtin_memcpy(drawn, noise, n * sizeof *noise);
            step(last, drawn, made);
            __builtin_memcpy(dst, made, n * sizeof(To));
        }
        src += n * sizeof(From);
        dst += n * sizeof(To);
        if (noise != nullptr) noise += n;
        left -= n;
    }
}

template <class To, class Rounding> void float_row(const std::byte* src, std::byte* dst, std::size_t columns) {
    each_register<float, QX_ChannelOf<To>>(
        src, nullptr, dst, columns, [](const float* s, const std::uint32_t*, QX_ChannelOf<To>* d) QX_LAMBDA {
            store_channels(d, Rounding::template channels<To>(load_lanes<Floats>(s)));
        });
}

/// The rounding term becomes a uniform value on 0..32767.
void from16_to8_dithered(const std::byte* src, std::byte* dst, std::size_t columns, const std::uint32_t* noise) {
    each_register<std::uint16_t, std::uint8_t>(
        src, noise, dst, columns, [](const std::uint16_t* s, const std::uint32_t* drawn, std::uint8_t* d) QX_LAMBDA {
            const auto v = load_channels<Ints, std::uint16_t>(s);
            store_channels(d, (v * 255 + (load_lanes<Ints>(drawn) & 0x7FFF)) >> 15);
        });
}

/// Half a step of 8 bits to either side; then alpha is limited as well. Kept: drawn alpha, red, blue, green.
void float_to8_dithered(const std::byte* src, std::byte* dst, std::size_t columns, const std::uint32_t* noise) {
    each_register<float, std::uint8_t>(
        src, noise, dst, columns, [](const float* s, const std::uint32_t* values, std::uint8_t* d) QX_LAMBDA {
            const auto drawn = load_lanes<UnsignedInts>(values);
            const Floats share = __builtin_convertvector(shuffle<0, 1, 3, 2>(drawn, drawn), Floats) * 0x1p-40f;
            const Floats v = load_lanes<Floats>(s) + share - 0x1p-9f;
            store_channels(d, truncate_to_int(limited(v * 255.0f, 255.0f) + 0.5f));
        });
}

const CopyKernels copy_kernels{.from8_to16 = &channel_row<QX_Pixel8, QX_Pixel16>,
                               .from8_to_float = &channel_row<QX_Pixel8, QX_PixelFloat>,
                               .from16_to8 = &channel_row<QX_Pixel16, QX_Pixel8>,
                               .from16_to_float = &channel_row<QX_Pixel16, QX_PixelFloat>,
                               .float_to8 = &float_row<QX_Pixel8, Truncated>,
                               .float_to8_nearest = &float_row<QX_Pixel8, Nearest>,
                               .float_to16 = &float_row<QX_Pixel16, Truncated>,
                               .from16_to8_dithered = &from16_to8_dithered,
                               .float_to8_dithered = &float_to8_dithered};

}  // namespace qx::QX_ISA
