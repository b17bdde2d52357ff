// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "QX/world/QX_World.h"

// How far two pictures of one size lie apart.
namespace qx::tool {

inline constexpr const char* kChannelWords[] = {"alpha", "red", "green", "blue"};

/// Values are those of float worlds: full scale is 1.
struct Differences {
    std::int64_t pixels = 0, differing = 0;  ///< those with a channel beyond the tolerance
    double largest = 0;                      ///< of all channels; infinite where one value is no number
    int x = 0, y = 0, channel = 0;           ///< the first place of it, in kChannelWords
    double mean = 0, mean_square = 0;        ///< over all four channels of all pixels

    /// In decibels of full scale; nothing for equal pictures.
    std::optional<double> psnr() const;
};

/// Two float worlds of one size. Sums run in row order, so that the same pictures give the same figures.
Differences differences(const QX_World& a, const QX_World& b, double tolerance);

/// The largest difference of each pixel in colours, at 8 bits: black for none within the tolerance, then from dark red
/// over yellow to white for the largest one of all.
std::unique_ptr<QX_World> heat(const QX_World& a, const QX_World& b, double tolerance, double largest);

}  // namespace qx::tool
