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

/// The low bits of each channel.
template <class To, class Rounding> QX_INLINE void float_step(const float* src, QX_ChannelOf<To>* dst) {
    typedef QX_ChannelOf<To> Narrow [[gnu::vector_size(kChannels * sizeof(QX_ChannelOf<To>))]];
    store_lanes(dst, __builtin_convertvector(Rounding::template channels<To>(load_lanes<Floats>(src)), Narrow));
}

template <class To, class Rounding> void float_row(const std::byte* src, std::byte* dst, std::size_t columns) {
    using Channel = QX_ChannelOf<To>;
    float last[kChannels]{};
    Channel made[kChannels];
    for (std::size_t left = 4 * columns; left > 0;) {
        const std::size_t n = std::min<std::size_t>(left, kChannels);
        if (n == kChannels) {
            float_step<To, Rounding>(reinterpret_cast<const float*>(src), reinterpret_cast<Channel*>(dst));
        } else {
            __builtin_memcpy(last, src, n * sizeof(float));
            float_step<To, Rounding>(last, made);
            __builtin_memcpy(dst, made, n * sizeof(Channel));
        }
        src += n * sizeof(float);
        dst += n * sizeof(Channel);
        left -= n;
    }
}

const CopyKernels copy_kernels{.from8_to16 = &channel_row<QX_Pixel8, QX_Pixel16>,
                               .from8_to_float = &channel_row<QX_Pixel8, QX_PixelFloat>,
                               .from16_to8 = &channel_row<QX_Pixel16, QX_Pixel8>,
                               .from16_to_float = &channel_row<QX_Pixel16, QX_PixelFloat>,
                               .float_to8 = &float_row<QX_Pixel8, Truncated>,
                               .float_to8_nearest = &float_row<QX_Pixel8, Nearest>,
                               .float_to16 = &float_row<QX_Pixel16, Truncated>};

}  // namespace qx::QX_ISA
