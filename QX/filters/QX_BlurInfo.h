// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "QX/filters/QX_BlurLine.h"
#include "QX/filters/QX_BoxBlurPass.h"
#include "QX/filters/QX_GaussianBlurLine.h"
#include "QX/world/QX_World.h"
#include "platform/GK_Blur.h"

/// What a call of a blur makes before its first line, and all that it allocates.
namespace qx {

/// A world seen as lines, rows or columns.
class BlurLines {
public:
    BlurLines(const QX_World& world, bool vertical, GK::AlphaType alpha);

    std::int64_t count, length;
    std::int32_t along, across;  ///< the origin, in the direction of the lines and from line to line
    std::ptrdiff_t line_step, pixel_step;
    std::size_t pixel_bytes;
    GK::AlphaType alpha;
    std::byte* first;

    /// Pixels from one of a line to the next, rounded up: 1 means neighbours.
    int stride() const {
        const auto bytes = static_cast<std::ptrdiff_t>(pixel_bytes);
        return static_cast<int>((pixel_step + bytes - 1) / bytes);
    }
    std::size_t bytes() const { return static_cast<std::size_t>(count * length) * pixel_bytes; }
    template <class Pixel> BlurLine<Pixel> line(std::int64_t index) const {
        return {first + index * line_step, pixel_step, length};
    }
};

/// A block of the host's memory that stands in its books. The host empties its caches before it says that there is
/// none; then 4 is thrown.
class BlurMemory {
public:
    explicit BlurMemory(std::size_t bytes);
    ~BlurMemory();
    BlurMemory(const BlurMemory&) = delete;
    BlurMemory& operator=(const BlurMemory&) = delete;
    void* get() const { return block_; }

private:
    std::size_t bytes_;
    void* block_ = nullptr;
};

/// As many buffers as indices of threads, each beginning a cache line. Of 0 bytes there are none.
class BlurBuffers {
public:
    explicit BlurBuffers(std::size_t bytes);
    std::byte* of(std::int32_t thread) const;

private:
    std::size_t bytes_;
    BlurMemory memory_;
};

}  // namespace qx

class QXp_CPUBlur1DInfo : public GK::Blur_1DImgOpInfo {
public:
    /// @param group_bytes  what a group of lines needs of a buffer; 0 where lines are filtered one by one
    QXp_CPUBlur1DInfo(float radius, std::uint32_t conv_flags, const qx::BlurLines& src, const qx::BlurLines& dst,
                      bool copy_lines, std::size_t group_bytes);
    /// The weights as numbers of another type, with two zeroes behind them.
    template <class T> void fill(T* weights) const {
        const auto* const mine = static_cast<const std::int32_t*>(weights_.get());
        for (std::int64_t i = 0; i <= reach_; ++i) weights[i] = static_cast<T>(mine[i]);
        weights[reach_ + 1] = weights[reach_ + 2] = 0;
    }

    bool mattes() const { return mattes_; }
    bool needs_line() const { return mattes_ || copies_; }
    qx::GaussianLines lines() const;
    const qx::BlurBuffers& buffers() const { return buffers_; }

private:
    void fill_weights();
    void fill_divisors();

    float radius_;
    std::int64_t reach_, offset_;
    std::uint32_t conv_flags_;
    bool mattes_, copies_;
    qx::BlurMemory weights_, divisors_;
    qx::BlurBuffers buffers_;
};

class QXp_CPUBoxBlur1DInfo : public GK::BoxBlur_1DImgOpInfo {
public:
    QXp_CPUBoxBlur1DInfo(float radius, std::uint32_t conv_flags, int iterations, const qx::BlurLines& src,
                         const qx::BlurLines& dst, bool copy_lines);

    /// Makes the buffers that every thread has: GetNumberOfBuffers() for lines, one for groups.
    void make_buffers(int count, std::size_t bytes);
    const qx::BoxWindow& window() const { return window_; }
    std::byte* buffer(std::int32_t thread, int which) const;

private:
    qx::BoxWindow window_;
    std::size_t buffer_bytes_ = 0;
    std::optional<qx::BlurBuffers> buffers_;
};
