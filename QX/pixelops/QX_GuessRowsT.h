// SPDX-License-Identifier: Apache-2.0
// Body of the scan for what alpha means, for one level: pixels that tell nothing new are counted a register at a time.
#include "QX/pixelops/QX_GuessKernels.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

/// What bytes have above others.
template <class V> QX_INLINE V excess(V a, V b) {
    QX_RETURN_BY_WIDTH(V, sizeof(V), subs_epu8, (Register<V>)a, (Register<V>)b)
}

template <class V> QX_INLINE std::uint32_t lanes_counted(V negative) {
    std::uint32_t sum = 0;
    for (int i = 0; i < lanes_in<V>; ++i) sum -= static_cast<std::uint32_t>(negative[i]);
    return sum;
}

std::size_t scan_stretch([[maybe_unused]] const QX_Pixel8* row, [[maybe_unused]] std::size_t count,
                         [[maybe_unused]] AlphaStretch& stretch) {
    std::size_t at = 0;
    if constexpr (kRegister > 0) {
        using V = Wide<std::int32_t>;
        constexpr std::size_t step = lanes_in<V>;
        const auto same = [](std::uint32_t word) QX_LAMBDA { return splat<V>(static_cast<std::int32_t>(word)); };
        const V clear_word = same(stretch.clear_word), visible_word = same(stretch.visible_word),
                watch_clear = same(stretch.watch_clear ? ~0u : 0),
                watch_visible = same(stretch.watch_visible ? ~0u : 0), least = same(stretch.min_alpha);
        V clear{}, white{}, black{}, above{};
        for (; at + step <= count; at += step) {
            const V v = load_lanes<V>(row + at), alpha = v & 255, is_clear = alpha == 0;
            const V news = (is_clear & watch_clear & (v != clear_word)) |
                           (~is_clear & ((watch_visible & (v != visible_word)) | (alpha < least)));
            if (!all_equal(news, 0)) break;
            const V alphas = shuffle_bytes<0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12>(v);
            above |= excess(v, alphas) & ~is_clear;
            clear += is_clear;
            white += v == ~255;
            black += v == 0;
        }
        stretch.clear += lanes_counted(clear);
        stretch.white += lanes_counted(white);
        stretch.black += lanes_counted(black);
        stretch.above_alpha |= !all_equal(above, 0);
    }
    return at;
}

const GuessKernels guess_kernels{&scan_stretch};

}  // namespace qx::QX_ISA
