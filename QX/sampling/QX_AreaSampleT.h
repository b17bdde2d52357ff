// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/sampling/QX_AreaFootprint.h"
#include "QX/sampling/QX_AreaSums8.h"
#include "QX/sampling/QX_SampleLanesT.h"
#include "QX/sampling/QX_SampleTapsT.h"
#include "QX/sampling/QX_SamplerSet.h"
#include "platform/M_Matrix.h"

/// The area samplers of straight pixels. Contributions add up in double, one by one, in the order of rows.
namespace qx::sampling {

/// Alpha by weight, and in the other lanes the colours by both.
template <class Pixel> QX_INLINE void add_share(Double4& sums, const std::byte* pixel, double weight) {
    const auto p = widen<double, Pixel>(pixel);
    const double share = weight * alpha_of(p);
    sums = sums + splat4(share) * with_alpha(p, 1.0);
}

/// Alpha and colours over a footprint of these radii, not rounded. @return false for the zero pixel
template <class Pixel> QX_INLINE bool mean_of(Double4 sums, const QX_SampPB& params, Double4& mean) {
    constexpr auto full = static_cast<double>(DepthOf<Pixel>::full);
    const double total = alpha_of(sums);
    if (total == 0) return false;
    const double rx = params.x_radius * 0x1p-16, ry = params.y_radius * 0x1p-16;
    const auto limited = (Double2)_mm_min_sd(_mm_set_sd(total * (0.25 / (rx * ry))), _mm_set_sd(full));
    mean = with_alpha(sums * splat4(1 / total), limited[0]);
    return limited[0] != 0;
}

/// Last step of the template: half a step up and truncated, 16-bit channels limited. Float pixels are narrowed.
struct RoundUp {
    template <class Pixel> QX_INLINE static auto pixel(Double4 mean) {
        if constexpr (sizeof(Pixel) == 16) {
            return (Float4)_mm_movelh_ps(_mm_cvtpd_ps((__m128d)mean.low), _mm_cvtpd_ps((__m128d)mean.high));
        } else {
            const Double4 up = mean + splat4(0.5);
            if constexpr (sizeof(Pixel) == 4) return pack<Pixel>(truncate(up));
            const auto full = _mm_set1_pd(DepthOf<Pixel>::full);
            return pack<Pixel>(truncate(
                Double4{(Double2)_mm_min_pd((__m128d)up.low, full), (Double2)_mm_min_pd((__m128d)up.high, full)}));
        }
    }
};
/// Last step of the plain forms: channels limited to full scale, then rounded to the nearest.
struct RoundNearest {
    template <class Pixel> static Bits<Pixel> pixel(Double4 mean) {
        const double channels[4] = {mean.low[0], mean.low[1], mean.high[0], mean.high[1]};
        Int4 rounded{};
        for (int i = 0; i < 4; ++i) {
            rounded[i] = M_RoundDouble(std::min(channels[i], static_cast<double>(DepthOf<Pixel>::full)));
        }
        return pack<Pixel>(rounded);
    }
};

/// A box that is cut to the world, pixel by pixel.
template <class Pixel> [[gnu::noinline]] Double4 sum_pixels(const QX_EffectWorld& world, Extent across, Extent down) {
    Double4 sums{};
    const double lead = across.lead() * 0x1p-16, tail = across.tail() * 0x1p-16;
    const std::int32_t from = across.first() + (across.lead() != 0 ? 1 : 0);
    down.each([&](std::int32_t row, std::int32_t coverage) {
        const double weight = coverage * 0x1p-16;  // products with the partial columns are exact
        const auto add = [&, line = pixel_address(world, 0, row, sizeof(Pixel))](std::int32_t column, double w) {
            add_share<Pixel>(sums, line + std::ptrdiff_t{column} * std::ptrdiff_t{sizeof(Pixel)}, w);
        };
        if (lead != 0) add(across.first(), weight * lead);
        for (std::int32_t column = from; column < across.last(); ++column) add(column, weight);
        if (tail != 0) add(across.last(), weight * tail);
    });
    return sums;
}

template <class Pixel> QX_INLINE Double4 sum_box(const QX_EffectWorld& world, Extent across, Extent down) {
    across = across.clipped(world.width);
    down = down.clipped(world.height);
    if constexpr (sizeof(Pixel) == 4) {
        if (is_small_and_whole(across, down)) return small_whole_box(world, across, down);
        if (exact_in_integers(across, down)) return box_in_integers(world, across, down);
    }
    return sum_pixels<Pixel>(world, across, down);
}

/// Samples of the clipped point sampler where the footprint is thin in one direction or in both.
template <class Pixel>
[[gnu::noinline]] Double4 sum_thin(Branch branch, std::int32_t x, std::int32_t y, const QX_SampPB& params,
                                   Extent across, Extent down, int quality) {
    Double4 sums{};
    // The set is asked, since a host may have put a routine of its own into the table of slots.
    const auto sampler = QXp_GetSamplerSet<Pixel>(quality).clipped;
    const auto add = [&](std::int32_t at_x, std::int32_t at_y, double weight) {
        Pixel pixel{};
        sampler(nullptr, at_x, at_y, &params, &pixel);
        add_share<Pixel>(sums, reinterpret_cast<const std::byte*>(&pixel), weight);
    };
    const auto place = [](std::int32_t pixel) { return pixel * kOne; };
    const double width = across.length(), height = down.length();
    switch (branch) {
        case Branch::row_strip:
            across.each([&](auto i, auto coverage) { add(place(i), y, coverage * height * 0x1p-32); });
            break;
        case Branch::column_strip:
            down.each([&](auto i, auto coverage) { add(x, place(i), coverage * width * 0x1p-32); });
            break;
        default:
            add(x, y, height * width * 0x1p-32);
    }
    return sums;
}

template <class Pixel, class LastStep>
QX_INLINE int area_sample(std::int32_t x, std::int32_t y, const QX_SampPB* params, int quality, Pixel* out) {
    const Extent across(x, params->x_radius), down(y, params->y_radius);
    const Branch branch = branch_of(*params);
    const Double4 sums = branch == Branch::box ? sum_box<Pixel>(*params->src, across, down)
                                               : sum_thin<Pixel>(branch, x, y, *params, across, down, quality);
    Double4 mean;
    if (mean_of<Pixel>(sums, *params, mean)) {
        put(out, LastStep::template pixel<Pixel>(mean));
    } else {
        *out = Pixel{};
    }
    return 0;
}

}  // namespace qx::sampling
