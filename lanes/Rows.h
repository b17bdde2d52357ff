// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>

#include "lanes/PixelAccess.h"

namespace qx {

/// What the alphas of a stretch of pixels have in common.
enum class Stretch { mixed, clear, opaque };
/// Pixels of four registers.
template <std::size_t Register, class Pixel>
inline constexpr int kStretch = static_cast<int>(4 * Register / sizeof(Pixel));

/// Reads a stretch. 16-bit alphas above full count as full; a negative zero is mixed.
template <std::size_t Register, class Pixel> QX_INLINE Stretch look_ahead(const Pixel* p) {
    using V = Vector<std::int32_t, Register>;
    const auto alphas = [](std::int32_t bits) QX_LAMBDA {
        V v{};
        for (std::size_t i = 0; i < Register / 4; i += sizeof(Pixel) / 4) v[i] = bits;
        return v;
    };
    const auto at = [=](int k) QX_LAMBDA { return load_lanes<V>(p + k * kStretch<Register, Pixel> / 4); };
    const V common = at(0) & at(1) & at(2) & at(3), any = at(0) | at(1) | at(2) | at(3);
    constexpr std::int32_t one = 0x3F800000;  // the bits of a float 1
    constexpr std::int32_t alpha = sizeof(Pixel) == 4 ? 0xFF : sizeof(Pixel) == 8 ? 0xFFFF : -1;
    constexpr std::int32_t full = sizeof(Pixel) == 4 ? 0xFF : sizeof(Pixel) == 8 ? 0x8000 : one;
    constexpr std::int32_t telling = sizeof(Pixel) == 8 ? 0x8000 : alpha;
    if (all_equal(any & alphas(alpha), 0)) return Stretch::clear;
    const V differs = ((common ^ alphas(full)) | (any ^ alphas(full))) & alphas(telling);
    return all_equal(differs, 0) ? Stretch::opaque : Stretch::mixed;
}

/// A source under a mask. A float that is no number stays one where nothing covers it.
template <bool IsFloat> QX_INLINE Stretch covered(Stretch source, Stretch coverage) {
    if (coverage == Stretch::opaque) return source;
    if (IsFloat && (source == Stretch::mixed || coverage == Stretch::mixed)) return Stretch::mixed;
    return source == Stretch::clear || coverage == Stretch::clear ? Stretch::clear : Stretch::mixed;
}

/// Asks for the lines of rows before they are reached. A row that looks at stretches before it works on them waits for
/// memory and for arithmetic by turns, and what the processor asks for by itself ends where a stretch is passed over.
/// So 6 KiB are asked for ahead at least; a stretch that costs arithmetic leaves time for two stretches of memory, up
/// to 16 KiB ahead, and those that cost none use them up.
template <class Pixel> class ReadAhead {
public:
    /// The stretch of `size` pixels at `at` is next. `mask` may be null.
    QX_INLINE void next(std::int32_t at, std::int32_t size, bool costs, const Pixel* src, const Pixel* mask,
                        const Pixel* dst) {
        const std::int32_t least = at + size + kNear;
        const std::int32_t end = costs ? std::max(least, std::min(asked_ + 2 * size, at + kFar)) : least;
        for (; asked_ < end; asked_ += kLine) {
            __builtin_prefetch(src + asked_, 0);
            if (mask != nullptr) __builtin_prefetch(mask + asked_, 0);
            __builtin_prefetch(dst + asked_, 1);
        }
    }

private:
    static constexpr std::int32_t kLine = 64 / sizeof(Pixel), kNear = 6144 / sizeof(Pixel),
                                  kFar = 16384 / sizeof(Pixel);
    std::int32_t asked_ = kNear;
};

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
