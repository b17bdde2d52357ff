// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace qx {

/// Rows of bytes: the first one, and the way to the next.
struct ByteRows {
    void* first;
    std::ptrdiff_t step;
};

/// Moves rows one by one from the top. They may overlap: a row that was moved onto one to come is what moves on.
void move_rows(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows);

/// Moves all at once, where no row of either has bytes behind its own. @return false elsewhere, with nothing done
bool move_block(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows);

}  // namespace qx
