// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/PixelAccess.h"

namespace qx {

/// Walks three rows of pixels in bundles: step(src, mask, dst) works on whole ones. What is left at the end goes
/// through copies of a bundle's size, of which the pixels behind the end are clear and are not stored. The step stands
/// once in what is built, for both.
template <class P, class Pixel, class Step>
QX_INLINE void for_bundles(std::int32_t count, const Pixel* src, const Pixel* mask, Pixel* dst, const Step& step) {
    constexpr int size = pixels_in<P>;
    Pixel source[size], coverage[size], target[size], *end = nullptr;
    for (; count > 0; count -= size) {
        const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(Pixel);
        if (size > 1 && count < size) [[unlikely]] {
            const auto padded = [=](Pixel* copy, const Pixel* row) {
                for (int i = 0; i < size; ++i) copy[i] = Pixel{};
                if (row != nullptr) __builtin_memcpy(copy, row, bytes);
                return copy;
            };
            end = dst;
            src = padded(source, src);
            mask = padded(coverage, mask);
            dst = padded(target, dst);
        }
        step(src, mask, dst);
        if (end != nullptr) __builtin_memcpy(end, target, bytes);
        src += size;
        if (mask != nullptr) mask += size;
        dst += size;
    }
}

/// The same for one row, whose source may be itself.
template <class P, class Pixel, class Step>
QX_INLINE void for_bundles(std::int32_t count, const Pixel* src, Pixel* dst, const Step& step) {
    for_bundles<P, Pixel>(count, src, nullptr, dst,
                          [&](const Pixel* from, const Pixel*, Pixel* to) QX_LAMBDA { step(from, to); });
}

}  // namespace qx
