// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "tests/support/Test.h"

/// Every form of a compositing kernel against its plain form, on cases that a seed remakes.
namespace qx::test {

/// The kernels as the table of routines has them at one processor level.
template <class Pixel> struct Kernels {
    QX_RowFunc<Pixel> row[44][2];  ///< by mode number + 3 and mask
    QX_FilterFunc<Pixel> filter[6];
    QX_MergeFunc<Pixel> merge;
};

struct LevelKernels {
    std::string name;
    std::tuple<Kernels<QX_Pixel8>, Kernels<QX_Pixel16>, Kernels<QX_PixelFloat>> kernels;
};

/// All levels that this processor has, plain first.
const std::vector<LevelKernels>& levels();

enum class Kernel { row, filter, merge };

struct Case {
    std::uint64_t seed = 0;
    int depth = 8;
    Kernel kernel = Kernel::row;
    int number = 0;  ///< mode of a row, place of a filter
    bool masked = false, rgb_only = false;
    double opacity = 1;
    FillKind src = FillKind::random, dst = FillKind::random;
    int count = 0, src_offset = 0, dst_offset = 0;  ///< offsets in pixels from a 64-byte boundary
};

Case random_case(std::uint64_t seed);
std::string describe(const Case& c);

/// Runs the case at every level. @return what differs from the plain form, or what was written outside the row
std::optional<std::string> run_case(const Case& c);

}  // namespace qx::test
