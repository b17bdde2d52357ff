// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// Kernels of whole numbers for convolutions: those of files, and the ones that have a name.
namespace qx::scene {

/// How weights lie.
enum class KernelForm { square, row, column };

struct Kernels {
    int size = 0;                                      ///< odd
    std::array<std::vector<std::int32_t>, 4> weights;  ///< of alpha, red, green, blue: `size` squared, or `size`
    bool normalise = false;                            ///< they mean shares of their sum
};

inline constexpr int kMostKernelSize = 1023;

/// Rows of whole numbers, as many as there are in a row; a row or a column has but one line of them. What follows # is
/// a comment. One block is for all channels, four with an empty line between are for alpha, red, green and blue.
/// @param contents  of a text file. Throws BadText.
Kernels kernels_of_text(const std::string& contents, KernelForm form);

/// sharpen, edges, emboss, gaussian:R or box:N. Throws BadText, which tells the nearest.
Kernels kernels_of_filter(const std::string& filter, KernelForm form);

}  // namespace qx::scene
