// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Kernel1D.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace solvan_of {

void FnKernel1D::compute(const FnKernelFunction& function, float new_radius, float centre) {
    radius = new_radius;
    const int reach = static_cast<int>(std::ceil(radius));
    const float fraction = centre - std::floor(centre);
    taps.clear();
    for (int i = -reach; i <= reach; ++i) taps.push_back(function.evaluate(static_cast<float>(i) - fraction, radius));
    const float sum = std::accumulate(taps.begin(), taps.end(), 0.0f);
    for (float& tap : taps) tap /= sum;
}

FnPrecalculatedKernel::Axis FnPrecalculatedKernel::axis(const FnKernelFunction& function, int n, float radius) {
    Axis all;
    for (int k = 0; k < n; ++k) {
        const auto kernel = std::make_shared<FnKernel1D>();
        kernel->compute(function, radius, static_cast<float>(k) / static_cast<float>(n));
        all.push_back(kernel);
    }
    all.push_back(all.front());
    return all;
}

FnPrecalculatedKernel::FnPrecalculatedKernel(const FnKernelFunction& function, int n, float radius_x, float radius_y)
    : n_(n),
      radius_x_(radius_x),
      radius_y_(radius_y),
      horizontal_(axis(function, n, radius_x)),
      vertical_(axis(function, n, radius_y)) {}

KernelPair FnPrecalculatedKernel::at(float x, float y) const {
    const auto entry = [this](float position) {
        return static_cast<std::size_t>((position - std::floor(position)) * static_cast<float>(n_));
    };
    return {horizontal_[entry(x)].get(), vertical_[entry(y)].get()};
}

std::shared_ptr<const FnPrecalculatedKernel> FnCachedPrecalculatedKernels::get(const FnKernelFunction& function, int n,
                                                                               float radius_x, float radius_y) {
    const std::unique_lock<std::mutex> held(lock_);
    if (!sets_.empty() && !sets_.front()->has_radii(radius_x, radius_y)) sets_.clear();
    for (const auto& set : sets_)
        if (set->n() == n) return set;
    sets_.push_back(std::make_shared<FnPrecalculatedKernel>(function, n, radius_x, radius_y));
    return sets_.back();
}

FnCachedPrecalculatedKernels& FnCachedPrecalculatedKernels::shared() {
    static FnCachedPrecalculatedKernels cache;
    return cache;
}

FnKernelManager::FnKernelManager(const FnKernelFunction& function, int processors, float radius_x, float radius_y,
                                 int n)
    : function_(function),
      radius_x_(radius_x),
      radius_y_(radius_y),
      own_(static_cast<std::size_t>(n > 0 ? 0 : processors)) {
    if (n > 0) precalculated_ = FnCachedPrecalculatedKernels::shared().get(function, n, radius_x, radius_y);
}

KernelPair FnKernelManager::kernelsFor(int processor, float x, float y) {
    if (precalculated_ != nullptr) return precalculated_->at(x, y);
    Own& own = own_[static_cast<std::size_t>(processor)];
    own.horizontal.compute(function_, radius_x_, x);
    own.vertical.compute(function_, radius_y_, y);
    return {&own.horizontal, &own.vertical};
}

double denominator_of(double value) {
    constexpr double kNone = 99999999, kMost = 999999999.9, kClose = 1e-06, kTiny = 1e-08;
    if (value == std::floor(value)) return 1;
    if (value < kTiny) return kNone;
    double p0 = 1, q0 = 0, p1 = std::floor(value), q1 = 1, rest = value;  // the last two convergents
    while (std::fabs(value - p1 / q1) > kClose && rest != std::floor(rest)) {
        rest = 1 / (rest - std::floor(rest));
        const double a = std::floor(rest), p = a * p1 + p0, q = a * q1 + q0;
        if (rest > kMost || q > kMost) return 1;
        p0 = p1, q0 = q1, p1 = p, q1 = q;
    }
    return q1;
}

int kernel_phases(float scale_x, float scale_y, const float (&offsets)[4]) {
    constexpr double kSteps = 10000;
    int common = 0;
    const auto take = [&](float value) {
        const double grain = std::clamp(1 / denominator_of(std::fabs(static_cast<double>(value))), 0.001, 1.0);
        common = std::gcd(common, static_cast<int>(grain * kSteps + 0.5));
    };
    take(scale_x), take(scale_y);
    for (const float offset : offsets) take(offset);
    return static_cast<int>(kSteps) / common;
}

}  // namespace solvan_of
