// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_ImagePlanes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Report.h"

namespace {

constexpr std::uint32_t kMasks = 16;

/// The channels of a mask, by their places in a pixel.
class Channels {
public:
    explicit Channels(std::uint32_t mask) {
        for (int i = 0; i < 4; ++i) {
            if ((mask >> i & 1) != 0) place_[count_++] = i;
        }
    }
    const int* begin() const { return place_; }
    const int* end() const { return place_ + count_; }

private:
    int place_[4]{};
    int count_ = 0;
};

/// Calls move(channel of a pixel, byte of a plane) over a world's pixels.
template <class Move>
void for_each_sample(const QX_LayerDef& world, TK_Handle handle, std::ptrdiff_t rowbytes, std::uint32_t mask,
                     const Move& move) {
    const Channels channels(mask);
    auto* row = static_cast<std::uint8_t*>(TK_LockHandle(handle));
    for (std::int32_t y = 0; y < world.height; ++y, row += rowbytes) {
        auto* pixel = reinterpret_cast<std::uint8_t*>(qx::pixel_address(world, 0, y, 4));
        std::uint8_t* plane = row;
        for (std::int32_t x = 0; x < world.width; ++x, pixel += 4) {
            for (const int channel : channels) move(pixel[channel], *plane++);
        }
    }
    TK_UnlockHandle(handle);
}

bool unusable(const QX_LayerDef* world, std::uint32_t mask) {
    return world == nullptr || world->data == nullptr || mask >= kMasks;
}

/// Copies `count` elements that lie `step` apart.
template <class T> void gather(const T* src, std::ptrdiff_t step, std::ptrdiff_t count, T* dst) {
    for (std::ptrdiff_t i = 0; i < count; ++i) dst[i] = src[i * step];
}

/// Bytes leave in words of four, from the first aligned one on.
void gather_words(const std::uint8_t* src, std::ptrdiff_t step, std::ptrdiff_t count, std::uint8_t* dst) {
    const auto head = std::min(static_cast<std::ptrdiff_t>(-reinterpret_cast<std::uintptr_t>(dst) & 3), count);
    gather(src, step, head, dst);
    std::ptrdiff_t i = head;
    for (; i + 4 <= count; i += 4) {
        const std::uint8_t* s = src + i * step;
        const std::uint32_t word = s[0] | static_cast<std::uint32_t>(s[step]) << 8 |
                                   static_cast<std::uint32_t>(s[2 * step]) << 16 |
                                   static_cast<std::uint32_t>(s[3 * step]) << 24;
        std::memcpy(dst + i, &word, sizeof word);
    }
    gather(src + i * step, step, count - i, dst + i);
}

template <class T> T* element(T* base, M_Vector2T<int> pos, std::ptrdiff_t row, std::ptrdiff_t step) {
    return base + pos.y * row + pos.x * step;
}

}  // namespace

int QX_ExtractPlanes(void*, const QX_LayerDef* world, std::uint32_t plane_mask, TK_Handle* handle,
                     std::int32_t* rowbytes) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::extract_planes);
    if (unusable(world, plane_mask) || handle == nullptr || rowbytes == nullptr) {
        return qx::report_bad_parameter(qx::Place::extract_planes);
    }
    const std::int64_t columns = std::max(world->width, 0), rows = std::max(world->height, 0);
    const std::int64_t row = (std::popcount(plane_mask) * (columns + 8) + 3) & ~std::int64_t{1};
    if (row != static_cast<std::int32_t>(row)) return qx::report_bad_parameter(qx::Place::extract_planes);
    TK_Handle made = TK_AllocateHandle(qx::site(qx::Place::extract_planes), qx::text_of(qx::Text::plane_buffer),
                                       static_cast<std::size_t>(row * rows));
    if (made == nullptr) return kQX_OutOfMemory;
    for_each_sample(*world, made, row, plane_mask, [](std::uint8_t channel, std::uint8_t& out) { out = channel; });
    *handle = made;
    *rowbytes = static_cast<std::int32_t>(row);
    return 0;
}

int QX_InsertPlanes(void*, TK_Handle handle, std::int32_t rowbytes, std::uint32_t plane_mask, QX_LayerDef* world) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::insert_planes);
    if (unusable(world, plane_mask) || handle == nullptr) return qx::report_bad_parameter(qx::Place::insert_planes);
    for_each_sample(*world, handle, rowbytes, plane_mask, [](std::uint8_t& channel, std::uint8_t in) { channel = in; });
    return 0;
}

template <class T>
void QX_Deinterleave1(const T* src, int step, int src_row, int dst_row, M_Vector2T<int> size, M_Vector2T<int> src_pos,
                      M_Vector2T<int> dst_pos, T* dst) {
    const T* from = element(src, src_pos, src_row, step);
    T* to = element(dst, dst_pos, dst_row, 1);
    for (int y = 0; y < size.y; ++y, from += src_row, to += dst_row) {
        if constexpr (std::is_same_v<T, std::uint8_t>) {
            gather_words(from, step, size.x, to);
        } else {
            gather(from, step, size.x, to);
        }
    }
}

template <class T>
void QX_Interleave1to4(const T* src, int src_row, int dst_row, M_Vector2T<int> size, M_Vector2T<int> src_pos,
                       M_Vector2T<int> dst_pos, T* dst) {
    const T* from = element(src, src_pos, src_row, 1);
    T* to = element(dst, dst_pos, dst_row, 4);
    for (int y = 0; y < size.y; ++y, from += src_row, to += dst_row) {
        for (std::ptrdiff_t x = 0; x < size.x; ++x) to[4 * x] = from[x];
    }
}

template void QX_Deinterleave1(const std::uint8_t*, int, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>,
                               std::uint8_t*);
template void QX_Deinterleave1(const std::uint16_t*, int, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>,
                               std::uint16_t*);
template void QX_Deinterleave1(const float*, int, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>, float*);
template void QX_Interleave1to4(const std::uint8_t*, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>,
                                std::uint8_t*);
template void QX_Interleave1to4(const std::uint16_t*, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>,
                                std::uint16_t*);
template void QX_Interleave1to4(const float*, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>, float*);
