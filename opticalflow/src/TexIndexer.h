// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace solvan_of {

/// What a read beside the used range of an axis finds.
enum class Addressing : std::int32_t {
    background = 0,
    clamp = 1,   ///< the nearest pixel of the range
    mirror = 2,  ///< the range turned over and over, its outermost pixels twice
    wrap = 3     ///< the range again and again
};

/// One axis of a texture: its pixels, and the part of them that is used.
struct TexAxis {
    std::int32_t size = 0;
    float offset = 0;
    std::int32_t integer_offset = 0;
    Addressing mode = Addressing::background;
    std::int32_t first = 0, last = 0;
    std::int32_t length = 0;
    std::int32_t origin = 0;  ///< number of the first pixel in memory
    std::uint32_t flags = 0;

    void set_size(std::int32_t pixels);
    void set_range(std::int32_t from, std::int32_t to);
    /// The pixel that is read for `index`; -1 where that is the background.
    std::int32_t index(std::int32_t index) const;
};

/// The two axes of a texture.
class FnTexIndexer {
public:
    virtual ~FnTexIndexer() = default;
    /// Each pair in any order, limited to the pixels that there are.
    virtual void setRange(std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1);
    virtual void setAddressing(Addressing x_mode, Addressing y_mode);
    virtual void setIntegerOffset(std::int32_t dx, std::int32_t dy);
    /// The integer offset becomes the nearest one, between two the upper.
    virtual void setFloatOffset(float dx, float dy);

    std::int32_t width() const { return x.size; }
    std::int32_t height() const { return y.size; }

    TexAxis x, y;
};

}  // namespace solvan_of
