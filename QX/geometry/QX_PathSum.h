// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Depth.h"

namespace qx {

/// The samples of one pixel while the shutter is open: alphas, and colours times alpha. A clear sample adds nothing,
/// but counts: outside the world the layer is transparent for that part of the time.
template <class Pixel> class PathSum {
    using D = DepthOf<Pixel>;
    static constexpr bool kFloat = D::number == 32;
    using Alpha = std::conditional_t<kFloat, float, std::uint32_t>;
    using Colour = std::conditional_t<kFloat, float, std::uint64_t>;
    using Channel = QX_ChannelOf<Pixel>;

public:
    void add(const Pixel& p) {
        if (p.alpha == 0) return;
        const Colour a = p.alpha;
        alpha_ += p.alpha;
        red_ += a * p.red;
        green_ += a * p.green;
        blue_ += a * p.blue;
    }

    /// The mean of `count` samples.
    Pixel mean(std::int32_t count) const {
        if (alpha_ == 0) return {};
        const auto n = static_cast<Alpha>(count);
        const auto alpha = static_cast<Channel>(alpha_ / n);
        if (alpha_ == n * static_cast<Alpha>(D::full)) {
            return {alpha, covered(red_, n), covered(green_, n), covered(blue_, n)};
        }
        return {alpha, partly(red_), partly(green_), partly(blue_)};
    }

private:
    Channel partly(Colour sum) const { return static_cast<Channel>(sum / alpha_); }

    /// A pixel that was opaque all the time must not darken by truncation: what is left of full scale is divided out
    /// with rounding.
    static Channel covered(Colour sum, Alpha n) {
        if constexpr (kFloat) {
            return sum / n;
        } else {
            const std::int32_t v = truncate_to_int(static_cast<float>(sum) / static_cast<float>(n));
            if constexpr (D::number == 8) {
                return static_cast<Channel>(D::reduced(std::uint32_t{static_cast<std::uint16_t>(v)}));
            } else {
                return static_cast<Channel>(D::reduced(v));
            }
        }
    }

    Alpha alpha_{};
    Colour red_{}, green_{}, blue_{};
};

}  // namespace qx
