// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "QX/indep/QX_Area.h"
#include "QX/pixelops/QX_PastCaches.h"

namespace qx {

/// One pixel value, to be stored many times, as fast as the processor clears memory. A plain store reads each line
/// before it writes it, so long runs go other ways: zeroes by memset, a pixel whose bits repeat every 8 bytes by the
/// processor's string store, any other pixel past the caches when the area is larger than they are.
class PixelRun {
public:
    template <class Pixel> PixelRun(const Pixel& pixel, std::size_t area_bytes) : past_caches_(area_bytes) {
        static_assert(std::is_trivially_copyable_v<Pixel> && kPeriod % sizeof(Pixel) == 0);
        for (std::size_t at = 0; at < sizeof(pattern_); at += sizeof(Pixel)) {
            std::memcpy(pattern_ + at, &pixel, sizeof(Pixel));
        }
        const std::byte nothing[kPeriod]{};  // bits, not values: a negative zero is none
        zero_ = std::memcmp(pattern_, nothing, kPeriod) == 0;
        short_period_ = std::memcmp(pattern_, pattern_ + 8, 8) == 0;
    }
    PixelRun(const PixelRun&) = delete;
    PixelRun& operator=(const PixelRun&) = delete;

    /// Fills `bytes`, a multiple of the pixel's size, from any address.
    void store(std::byte* to, std::size_t bytes) const;

private:
    static constexpr std::size_t kPeriod = 16;
    std::byte pattern_[2 * kPeriod];  ///< any 16 bytes from its first half on are the run from that phase on
    bool zero_;
    bool short_period_;  ///< the pattern repeats every 8 bytes
    const PastCaches past_caches_;
};

/// Stores one pixel value over an area that lies in the world.
template <class Pixel> void fill_area(const QX_LayerDef& world, const M_LRect& area, const Pixel& pixel) {
    std::size_t bytes = columns_of(area) * sizeof(Pixel), rows = rows_of(area);
    if (bytes == 0 || rows == 0) return;
    const PixelRun run(pixel, bytes * rows);
    std::byte* row = pixel_address(world, area.left, area.top, sizeof(Pixel));
    if (static_cast<std::ptrdiff_t>(bytes) == world.rowbytes) {  // no padding between the rows: one run
        bytes *= rows;
        rows = 1;
    }
    for (; rows > 0; --rows, row += world.rowbytes) run.store(row, bytes);
}

}  // namespace qx
