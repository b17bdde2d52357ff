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
template <class Pixel> class AreaSums {
public:
    QX_INLINE void add(const std::byte* pixel, double weight) {
        const auto p = widen<double, Pixel>(pixel);
        const double share = weight * alpha_of(p);
        sums_ = sums_ + splat4(share) * with_alpha(p, 1.0);
    }
    void add(const Pixel& pixel, double weight) { add(reinterpret_cast<const std::byte*>(&pixel), weight); }
    void set(Double4 sums) { sums_ = sums; }
    /// Alpha and colours over a footprint of these radii, not rounded; false is the zero pixel.
    bool mean(const QX_SampPB& params, QX_PixelDouble* out) const {
        const double total = alpha_of(sums_);
        if (total == 0) return false;
        const double rx = params.x_radius * 0x1p-16, ry = params.y_radius * 0x1p-16;
        const double alpha = std::min(static_cast<double>(DepthOf<Pixel>::full), total * (0.25 / (rx * ry)));
        if (alpha == 0) return false;
        put(out, with_alpha(sums_ * splat4(1 / total), alpha));
        return true;
    }

private:
    Double4 sums_{};
};

/// Last step of the template: half a step up and truncated, 16-bit channels limited. Float pixels are narrowed.
struct RoundUp {
    template <class Pixel> static QX_ChannelOf<Pixel> channel(double v) {
        using Channel = QX_ChannelOf<Pixel>;
        if constexpr (std::is_same_v<Channel, float>) return static_cast<float>(v);
        v += 0.5;
        if constexpr (sizeof(Channel) == 2) v = std::min(v, 32768.0);
        return static_cast<Channel>(truncate_to_int(v));
    }
};
/// Last step of the plain forms.
struct RoundNearest {
    template <class Pixel> static QX_ChannelOf<Pixel> channel(double v) {
        return static_cast<QX_ChannelOf<Pixel>>(M_RoundDouble(std::min(v, static_cast<double>(DepthOf<Pixel>::full))));
    }
};

template <class Pixel> void sum_box(const QX_SampPB& params, Extent across, Extent down, AreaSums<Pixel>& sums) {
    const QX_EffectWorld& world = *params.src;
    across.clip(world.width);
    down.clip(world.height);
    if constexpr (sizeof(Pixel) == 4) {
        if (exact_in_integers(across, down)) return sums.set(box_in_integers(world, across, down));
    }
    const double lead = across.lead() * 0x1p-16, tail = across.tail() * 0x1p-16;
    const std::int32_t from = across.first() + (across.lead() != 0 ? 1 : 0);
    down.each([&](std::int32_t row, std::int32_t coverage) {
        const double weight = coverage * 0x1p-16;  // products with the partial columns are exact
        const std::byte* line = pixel_address(world, 0, row, sizeof(Pixel));
        const auto at = [line](std::int32_t column) {
            return line + std::ptrdiff_t{column} * std::ptrdiff_t{sizeof(Pixel)};
        };
        AreaSums<Pixel> local = sums;  // in registers
        if (lead != 0) local.add(at(across.first()), weight * lead);
        for (std::int32_t column = from; column < across.last(); ++column) local.add(at(column), weight);
        if (tail != 0) local.add(at(across.last()), weight * tail);
        sums = local;
    });
}

/// Samples of the clipped point sampler where the footprint is thin in one direction or in both.
template <class Pixel>
void sum_thin(Branch branch, std::int32_t x, std::int32_t y, const QX_SampPB& params, const Extent& across,
              const Extent& down, QX_PointSampler<Pixel> sampler, AreaSums<Pixel>& sums) {
    const auto add = [&](std::int32_t at_x, std::int32_t at_y, double weight) {
        Pixel pixel{};
        sampler(nullptr, at_x, at_y, &params, &pixel);
        sums.add(pixel, weight);
    };
    const auto place = [](std::int32_t pixel) { return pixel * kOne; };
    const double width = across.length(), height = down.length();
    switch (branch) {
        case Branch::row_strip:
            return across.each([&](auto i, auto coverage) { add(place(i), y, coverage * height * 0x1p-32); });
        case Branch::column_strip:
            return down.each([&](auto i, auto coverage) { add(x, place(i), coverage * width * 0x1p-32); });
        default:
            return add(x, y, height * width * 0x1p-32);
    }
}

template <class Pixel, class LastStep>
int area_sample(std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_PointSampler<Pixel> sampler, Pixel* out) {
    const Extent across(x, params->x_radius), down(y, params->y_radius);
    AreaSums<Pixel> sums;
    const Branch branch = branch_of(*params);
    if (branch == Branch::box) {
        sum_box(*params, across, down, sums);
    } else {
        sum_thin(branch, x, y, *params, across, down, sampler, sums);
    }
    Pixel pixel{};
    if (QX_PixelDouble mean; sums.mean(*params, &mean)) {
        pixel = {LastStep::template channel<Pixel>(mean.alpha), LastStep::template channel<Pixel>(mean.red),
                 LastStep::template channel<Pixel>(mean.green), LastStep::template channel<Pixel>(mean.blue)};
    }
    *out = pixel;
    return 0;
}

}  // namespace qx::sampling
