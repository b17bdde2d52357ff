// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_MoveRows.h"

#include <cstring>
#include <functional>

#include "QX/pixelops/QX_PastCaches.h"

namespace qx {
namespace {

/// Whether bytes of one range lie in the other.
bool overlap(const std::byte* a, const std::byte* b, std::size_t bytes) {
    const std::less<> before;  // of addresses in different objects too
    return before(a, b + bytes) && before(b, a + bytes);
}

void move(std::byte* to, const std::byte* from, std::size_t bytes, const PastCaches& past) {
    if (past && !overlap(to, from, bytes)) {
        PastCaches::copy(to, from, bytes);
    } else {
        std::memmove(to, from, bytes);
    }
}

}  // namespace

void move_rows(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows) {
    const PastCaches past(2 * row_bytes * rows);
    auto *from = static_cast<std::byte*>(src.first), *to = static_cast<std::byte*>(dst.first);
    for (; rows > 0; --rows, from += src.step, to += dst.step) move(to, from, row_bytes, past);
}

bool move_block(ByteRows src, ByteRows dst, std::size_t row_bytes, std::size_t rows) {
    if (src.step != dst.step || src.step != static_cast<std::ptrdiff_t>(row_bytes)) return false;
    const PastCaches past(2 * row_bytes * rows);
    move(static_cast<std::byte*>(dst.first), static_cast<std::byte*>(src.first), row_bytes * rows, past);
    return true;
}

}  // namespace qx
