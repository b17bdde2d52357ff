// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Depth.h"
#include "lanes/Levels.h"

namespace qx {

/// A window: the samples nearer than `reach`, and of `share` parts of full of the two at `reach`.
struct BoxWindow {
    std::int32_t reach, share;

    /// By what a weighted sum with so many of the two is divided.
    template <class D> QX_INLINE std::int64_t divisor(int ends) const {
        return std::int64_t{D::full} * (2 * reach - 1) + std::int64_t{share} * ends;
    }
    /// A weighted sum; moved by D::half it is below 2^32 at 8 bits and below 2^47 at 16.
    template <class D, class V> QX_INLINE V weighted(V sum, V ends) const {
        return sum * static_cast<NumberOf<V>>(D::full) + ends * static_cast<NumberOf<V>>(share);
    }
};

/// Quotients by one divisor, from 2 to below 2^31, of n below 2^32 at 8 bits, and below 2^16 times the divisor at 16
/// bits, where the divisor is 2^15 or more. The factor f lies above 2^k / divisor, by less than 1, so n * f / 2^k lies
/// above n / divisor by less than n / 2^k. That stays below 1 / divisor, and so below the next integer: n * divisor is
/// less than 2^k, with k = 64 for divisors below 2^24, as they are at 8 bits, and less than 2^16 * 2^62 with k = 78.
template <class D> class BoxQuotient {
public:
    QX_INLINE explicit BoxQuotient(std::int64_t divisor)
        : factor_(static_cast<std::uint64_t>((kOne - 1) / static_cast<Wide>(divisor)) + 1) {}
    QX_INLINE std::int64_t operator()(std::int64_t n) const {
        return static_cast<std::int64_t>(static_cast<Wide>(n) * factor_ >> kShift);
    }

private:
    __extension__ using Wide = unsigned __int128;
    static constexpr int kShift = D::number == 8 ? 64 : 78;
    static constexpr Wide kOne = Wide{1} << kShift;
    std::uint64_t factor_;
};

/// Means of windows side by side, all inside of the line; that of the first is around `copy`. `*sum` is that of its
/// inner samples, and becomes that of the window behind the last.
template <class Sample>
using BoxMeans = void(std::int32_t count, const BoxWindow& window, const Sample* copy, std::int64_t* sum, Sample* line);

struct UnoScanKernels {
    BoxMeans<std::uint8_t>* means8;
    BoxMeans<std::uint16_t>* means16;
};
QX_DECLARE_LEVELS(UnoScanKernels, uno_scan_kernels)

/// Chooses the kernels of blurs of lines, at the library's start. Until then they are the plain ones.
void choose_uno_scan_kernels(Level level);

}  // namespace qx
