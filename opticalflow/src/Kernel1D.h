// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace solvan_of {

/// What a kernel weighs by the distance from its middle.
class FnKernelFunction {
public:
    virtual ~FnKernelFunction() = default;
    virtual float evaluate(float x, float radius) const = 0;
};

/// Weights of 2 * ceil(radius) + 1 pixels around a position along an axis; their sum is 1.
class FnKernel1D {
public:
    virtual ~FnKernel1D() = default;
    /// For a position whose fraction is that of `centre`.
    void compute(const FnKernelFunction& function, float radius, float centre);

    float radius = 0;
    std::vector<float> taps{1.0f};
};

/// A kernel for each axis. The weight of a pixel is the product of both.
struct KernelPair {
    const FnKernel1D *horizontal, *vertical;
};

/// Kernels for N fractions of a position, k / N. Entry N of an axis stands for 1 and is that of 0.
class FnPrecalculatedKernel {
public:
    FnPrecalculatedKernel(const FnKernelFunction& function, int n, float radius_x, float radius_y);
    virtual ~FnPrecalculatedKernel() = default;

    /// Those of the fractions at or below these positions'.
    KernelPair at(float x, float y) const;
    int n() const { return n_; }
    bool has_radii(float x, float y) const { return radius_x_ == x && radius_y_ == y; }

private:
    using Axis = std::vector<std::shared_ptr<const FnKernel1D>>;
    static Axis axis(const FnKernelFunction& function, int n, float radius);

    int n_;
    float radius_x_, radius_y_;
    Axis horizontal_, vertical_;
};

/// Sets of kernels for some N of one function, of one pair of radii at a time. Any thread.
class FnCachedPrecalculatedKernels {
public:
    virtual ~FnCachedPrecalculatedKernels() = default;
    /// Other radii than before drop all sets; those that are in use live on.
    std::shared_ptr<const FnPrecalculatedKernel> get(const FnKernelFunction& function, int n, float radius_x,
                                                     float radius_y);
    /// The one of the process, whose callers all have one function.
    static FnCachedPrecalculatedKernels& shared();

private:
    std::mutex lock_;
    std::vector<std::shared_ptr<const FnPrecalculatedKernel>> sets_;
};

/// Kernels for positions, for each processor its own where they are not calculated before.
class FnKernelManager {
public:
    /// @param n  fractions that are calculated before; 0: none
    FnKernelManager(const FnKernelFunction& function, int processors, float radius_x, float radius_y, int n);
    virtual ~FnKernelManager() = default;

    /// Valid until the same processor asks again.
    KernelPair kernelsFor(int processor, float x, float y);

private:
    struct Own {
        FnKernel1D horizontal, vertical;
    };
    const FnKernelFunction& function_;
    float radius_x_, radius_y_;
    std::vector<Own> own_;
    std::shared_ptr<const FnPrecalculatedKernel> precalculated_;
};

/// How many fractions there are of positions that these scales and offsets step through: 1 over the greatest measure of
/// all of them, in steps of 1 / 10000.
int kernel_phases(float scale_x, float scale_y, const float (&offsets)[4]);
/// The least q for which some p / q is within a millionth of `value`, by its continued fraction.
double denominator_of(double value);

}  // namespace solvan_of
