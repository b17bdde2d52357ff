// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>

namespace qx {

/// Rows of bytes: the first one, and the way to the next.
struct ByteRows {
    void* first;
    std::ptrdiff_t step;
};

/// Moves rows one by one from the top. They may overlap: a row that was moved onto one to come is what moves on.
inline void move_rows(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows) {
    auto *from = static_cast<std::byte*>(src.first), *to = static_cast<std::byte*>(dst.first);
    for (; rows > 0; --rows, from += src.step, to += dst.step) std::memmove(to, from, row_bytes);
}

/// Moves all at once, where no row of either has bytes behind its own. @return false elsewhere, with nothing done
inline bool move_block(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows) {
    if (src.step != dst.step || src.step != static_cast<std::ptrdiff_t>(row_bytes)) return false;
    std::memmove(dst.first, src.first, row_bytes * rows);
    return true;
}

}  // namespace qx
