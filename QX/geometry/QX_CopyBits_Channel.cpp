// SPDX-License-Identifier: Apache-2.0
// Chunks are copied by elements of raw bytes.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_CopyBitsPlan.h"
#include "QX/pixelops/QX_MoveRows.h"
#include "QX/world/QX_Chunk.h"

namespace {

using qx::copy_bits::Side;

/// Kept: the second text names another routine and the other end of the range.
constexpr qx::copy_bits::OverflowTexts kOverflow{qx::Place::channel_copy, "QX_ChannelCopy x overflow detected",
                                                 "QXp_CopyBitsUniversal y underflow detected"};

std::size_t element_size(const QX_ChannelChunk& chunk) {
    std::uint16_t size = 0;
    QX_ChunkDataSize(chunk.data_type, &size);
    return size * static_cast<std::size_t>(std::max(chunk.dimension, 0));
}

std::byte* element(const QX_ChannelChunk& chunk, std::size_t size, std::int32_t x, std::int32_t y) {
    return static_cast<std::byte*>(chunk.data) + std::ptrdiff_t{y} * chunk.row_bytes +
           std::ptrdiff_t{x} * static_cast<std::ptrdiff_t>(size);
}

void move_all(const QX_ChannelChunk& src, const QX_ChannelChunk& dst) {
    const auto row = static_cast<std::size_t>(std::max(std::min(src.row_bytes, dst.row_bytes), 0));
    const qx::ByteRows from{src.data, src.row_bytes}, to{dst.data, dst.row_bytes};
    const auto rows = static_cast<std::size_t>(src.height);
    if (!qx::move_block(from, to, row, rows)) qx::move_rows(from, to, row, rows);
}

void scale_row(const std::byte* src, std::int32_t from, std::byte* dst, std::int32_t to, std::size_t size) {
    qx::copy_bits::Repeats repeats(from, to);
    for (std::int32_t x = 0; x < from; ++x, src += size) {
        for (std::int32_t n = repeats.next(); n > 0; --n, dst += size) std::memmove(dst, src, size);
    }
}

}  // namespace

int QX_ChannelCopy(void*, const QX_ChannelChunk* src_chunk, QX_ChannelChunk* dst_chunk, const M_LRect* src_rect,
                   const M_LRect* dst_rect) {
    if (src_chunk == nullptr || src_chunk->data == nullptr || dst_chunk == nullptr || dst_chunk->data == nullptr) {
        return qx::report_bad_parameter(qx::Place::channel_copy);
    }
    const QX_ChannelChunk &src = *src_chunk, &dst = *dst_chunk;
    const std::size_t size = element_size(src);
    if (size != element_size(dst)) {
        qx::report_text(qx::Place::channel_copy, qx::Text::channel_worlds);
        return kQX_FailedVerification;
    }
    Side s(src_rect, src.width, src.height), d(dst_rect, dst.width, dst.height);
    if (s.nothing() || d.nothing()) return 0;
    if (s.whole() && d.whole() && same_size(s, d)) {
        move_all(src, dst);
        return 0;
    }
    if (const int code = cut_sides(s, d, kOverflow)) return code;
    if (M_EmptyLRect(s.rect) || M_EmptyLRect(d.rect)) return 0;
    for_repeated_rows(s, d, [&](std::int32_t sy, std::int32_t dy, std::int32_t n) {
        for (std::int32_t i = 0; i < n; ++i) {
            scale_row(element(src, size, s.rect.left, sy), s.rect.right - s.rect.left,
                      element(dst, size, d.rect.left, dy + i), d.rect.right - d.rect.left, size);
        }
    });
    return 0;
}
