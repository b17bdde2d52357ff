// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_GaussianKernel.h"

#include <algorithm>
#include <cmath>

#include "QX/indep/QX_Report.h"

namespace {

/// Truncated and limited to 0..255; NaN is 0.
std::uint32_t entry_of(double v) {
    const double rounded = v + 0.5;
    return rounded > 0 ? static_cast<std::uint32_t>(std::min(rounded, 255.0)) : 0;
}

/// The row's square is held in 16 bits.
double distance_of(std::int32_t row, std::int32_t column, double radius) {
    const auto square = static_cast<std::int16_t>(row * row);
    const double distance = square == 0 ? column : std::sqrt(column * column + square);
    return distance / (radius + 1.0);
}

/// Scales entries until their mean is about 255. Where the sum is 0 or no number all become 0.
void normalise(std::int64_t entries, double sum, std::uint32_t* weights) {
    const double scale = (255.0 * static_cast<double>(entries)) / sum;
    const auto scaled = [scale](std::uint32_t entry) {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(entry * scale));
    };
    for (std::int64_t i = 0; i < entries; ++i) weights[i] = std::isfinite(scale) ? scaled(weights[i]) : 0;
}

}  // namespace

double QXp_GaussianValue(double distance) {
    return distance > 1 ? 0 : 1 - (1 - std::exp(-2.378 * distance * distance)) * 1.102;
}

int QX_GaussianKernel(void*, double radius, std::uint32_t flags, double multiplier, std::int32_t* width,
                      std::uint32_t* weights) {
    if (!(radius >= 0 && radius <= 32767) || width == nullptr || weights == nullptr) {
        return qx::report_bad_parameter(qx::Place::gaussian_kernel);
    }
    const auto reach = static_cast<std::int32_t>(std::ceil(radius));
    const std::int32_t rows = (flags & kQX_GaussianKernel_OneRow) != 0 ? 0 : reach;
    const std::int64_t row_length = 2 * std::int64_t{reach} + 1;
    double sum = 0;
    for (std::int32_t i = -rows; i <= rows; ++i) {
        std::uint32_t* const centre = weights + (i + rows) * row_length + reach;
        for (std::int32_t j = reach; j >= 0; --j) {
            double v = 255 * QXp_GaussianValue(distance_of(i, j, radius));
            if (multiplier != 1.0) v *= multiplier;
            sum += v;
            if (j != 0) sum += v;
            centre[j] = centre[-j] = entry_of(v);
        }
    }
    if ((flags & kQX_GaussianKernel_Normalise) != 0) normalise((2 * rows + std::int64_t{1}) * row_length, sum, weights);
    *width = static_cast<std::int32_t>(row_length);
    return 0;
}
