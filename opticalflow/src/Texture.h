// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "opticalflow/src/HvVec2.h"
#include "opticalflow/src/Position.h"
#include "opticalflow/src/TexIndexer.h"
#include "opticalflow/src/multiprocess/EngineMemory.h"

namespace solvan_of {

/// Between four pixels, first along x. Pixel classes mix their channels; integers are mixed as floats and truncated.
struct MixAt {
    float fx, fy;

    template <class Pixel>
    Pixel operator()(const Pixel& p00, const Pixel& p10, const Pixel& p01, const Pixel& p11) const {
        if constexpr (std::is_arithmetic_v<Pixel>) {
            const auto along_x = [this](Pixel a, Pixel b) {
                return lerp(static_cast<float>(a), static_cast<float>(b), fx);
            };
            return static_cast<Pixel>(lerp(along_x(p00, p10), along_x(p01, p11), fy));
        } else {
            return Pixel::of(*this, p00, p10, p01, p11);
        }
    }
    /// By component; a vector that is none counts as the number that it is.
    HvVec2 operator()(const HvVec2& p00, const HvVec2& p10, const HvVec2& p01, const HvVec2& p11) const {
        return {(*this)(p00.x, p10.x, p01.x, p11.x), (*this)(p00.y, p10.y, p01.y, p11.y)};
    }
};

/// A two-dimensional array of pixels with a rule for reads beside it. Accum is what its samples are.
template <class Pixel, class Accum = Pixel> class FnTexture : public FnTexIndexer {
public:
    FnTexture() = default;
    ~FnTexture() override { release(); }
    FnTexture(const FnTexture&) = delete;
    FnTexture& operator=(const FnTexture&) = delete;

    /// Pixels of its own, unset. @return false where there is no memory or nothing to hold
    bool allocate(std::int32_t width, std::int32_t height) {
        release();
        x.set_size(width);
        y.set_size(height);
        row_bytes = static_cast<std::ptrdiff_t>(sizeof(Pixel)) * width;
        if (width > 0 && height > 0)
            origin_ =
                static_cast<std::byte*>(engineAllocate(static_cast<std::size_t>(row_bytes) * std::size_t(height)));
        owns_ = origin_ != nullptr;
        failed_ = !owns_;
        return owns_;
    }
    bool allocate_clear(std::int32_t width, std::int32_t height) {
        if (!allocate(width, height)) return false;
        std::memset(origin_, 0, static_cast<std::size_t>(row_bytes) * std::size_t(height));
        return true;
    }
    /// Pixels of somebody else.
    void wrap(void* pixels, std::int32_t width, std::int32_t height, std::ptrdiff_t bytes_a_row) {
        release();
        x.set_size(width);
        y.set_size(height);
        row_bytes = bytes_a_row;
        origin_ = static_cast<std::byte*>(pixels);
    }
    /// The other's pixels, sizes and background, which stay the other's.
    virtual void assign(const FnTexture& other) {
        release();
        x = other.x;
        y = other.y;
        row_bytes = other.row_bytes;
        background = other.background;
        origin_ = other.origin_;
    }
    virtual void setBackground(const Pixel& value) { background = value; }
    /// The sample in the middle of an area.
    virtual Accum sampleArea(float x0, float y0, float x1, float y1) const {
        return bilinear((x0 + x1) / 2.0f, (y0 + y1) / 2.0f);
    }
    virtual Accum sampleAround(float cx, float cy, float rx, float ry) const {
        return sampleArea(cx - rx, cy - ry, cx + rx, cy + ry);
    }

    bool has_pixels() const { return origin_ != nullptr && width() > 0 && height() > 0; }
    bool failed() const { return failed_; }
    void release() {
        if (owns_) engineFree(origin_);
        origin_ = nullptr;
        owns_ = failed_ = false;
    }

    std::byte* pixels() const { return origin_; }
    Pixel* row(std::int32_t y_index) const {
        return reinterpret_cast<Pixel*>(origin_ + (y_index - y.origin) * row_bytes) - x.origin;
    }
    Pixel& at(std::int32_t x_index, std::int32_t y_index) const { return row(y_index)[x_index]; }
    /// By the rule of each axis.
    const Pixel& read(std::int32_t x_index, std::int32_t y_index) const {
        const std::int32_t column = x.index(x_index), line = y.index(y_index);
        return column < 0 || line < 0 ? background : at(column, line);
    }

    /// At a position in pixels whose middles lie at halves.
    Accum bilinear(float px, float py) const { return bilinear_at(px - 0.5f - x.offset, py - 0.5f - y.offset); }
    /// At a position in pixels whose middles lie at whole numbers.
    Accum bilinear_at(float u, float v) const {
        const Place across = place_of(u), down = place_of(v);
        const auto corner = [&](int dx, int dy) { return Accum(read(across.whole + dx, down.whole + dy)); };
        return MixAt{across.fraction, down.fraction}(corner(0, 0), corner(1, 0), corner(0, 1), corner(1, 1));
    }

    void fill(const Pixel& value) { fill_rows(y.first, y.last + 1, value); }
    void fill_rows(std::int32_t begin, std::int32_t end, const Pixel& value) {
        for (std::int32_t line = begin; line < end; ++line) {
            Pixel* const to = row(line);
            for (std::int32_t i = x.first; i <= x.last; ++i) to[i] = value;
        }
    }

    std::ptrdiff_t row_bytes = 0;
    Pixel background{};

private:
    std::byte* origin_ = nullptr;
    bool owns_ = false, failed_ = false;
};

using FloatTexture = FnTexture<float>;
using IntTexture = FnTexture<std::int32_t>;
using FieldTexture = FnTexture<HvVec2>;

/// The place and rules of another texture, with pixels of its own.
template <class To, class From> bool allocate_like(To& to, const From& from) {
    if (!to.allocate(from.width(), from.height())) return false;
    to.x = from.x;
    to.y = from.y;
    return true;
}

}  // namespace solvan_of
