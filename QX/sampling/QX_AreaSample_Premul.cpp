// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "QX/indep/QX_Area.h"
#include "QX/sampling/QX_AreaFootprint.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampleGpu.h"
#include "QX/sampling/QX_SampleLanesT.h"

namespace qx::sampling {
namespace {

/// The product of two coverages in 16.16, truncated.
constexpr std::uint32_t product(std::int32_t a, std::int32_t b) {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::int64_t{a} * b) >> 16);
}

/// Four sums that wrap at 32 bits; a whole pixel counts 256.
class PremulSums {
public:
    void add(const QX_Pixel8& pixel, std::uint32_t coverage) {
        const std::uint64_t weight = std::uint64_t{coverage} << 8;
        const std::uint8_t channel[4] = {pixel.alpha, pixel.red, pixel.green, pixel.blue};
        for (int i = 0; i < 4; ++i) sum_[i] += static_cast<std::uint32_t>(channel[i] * weight >> 16);
    }
    QX_Pixel8 mean(std::int32_t area) const {
        const auto a = static_cast<std::uint32_t>(area);
        const std::uint32_t divisor = (a >> 8) + (a >> 7 & 1);
        if (sum_[0] == 0 || divisor == 0) return {};
        const auto channel = [&](int i) {
            return static_cast<std::uint8_t>(std::min<std::uint32_t>((sum_[i] + (divisor >> 1)) / divisor, 255));
        };
        if (channel(0) == 0) return {};
        return {channel(0), channel(1), channel(2), channel(3)};
    }

private:
    std::uint32_t sum_[4] = {};
};

void sum_box(const QX_EffectWorld& world, const Extent& across, const Extent& down, PremulSums& sums) {
    down.each([&](std::int32_t row, std::int32_t height) {
        across.each([&](std::int32_t column, std::int32_t width) {
            sums.add(load_at<QX_Pixel8>(pixel_address(world, column, row, sizeof(QX_Pixel8))), product(height, width));
        });
    });
}

/// The middle of a side, in coordinates whose integers lie on pixels.
constexpr std::int32_t middle(const Extent& side) { return side.low - kHalf + (side.length() >> 1); }

QX_Pixel8 premul_area(std::int32_t x, std::int32_t y, const QX_SampPB& params) {
    const auto across = Extent(x, params.x_radius).clipped(params.src->width);
    const auto down = Extent(y, params.y_radius).clipped(params.src->height);
    PremulSums sums;
    if (across.length() == 0 || down.length() == 0) return {};
    const auto add = [&](std::int32_t at_x, std::int32_t at_y, std::uint32_t coverage) {
        QX_Pixel8 pixel{};
        QX_SubpixelSample_Premul(nullptr, at_x, at_y, &params, &pixel);
        sums.add(pixel, coverage);
    };
    const std::int32_t width = across.length(), height = down.length();
    switch (branch_of(params)) {
        case Branch::point:
            add(x, y, product(height, width));
            break;
        case Branch::row_strip:
            across.each([&](auto i, auto c) { add(i * kOne, middle(down), product(c, height)); });
            break;
        case Branch::column_strip:
            down.each([&](auto i, auto c) { add(middle(across), i * kOne, product(c, width)); });
            break;
        case Branch::box:
            sum_box(*params.src, across, down, sums);
    }
    return sums.mean(params.area);
}

}  // namespace
}  // namespace qx::sampling

int QX_AreaSample_Premul(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    if (const int code = qx::sampling::refuse_gpu_world(params)) return code;
    *out = qx::sampling::premul_area(x, y, *params);
    return 0;
}
