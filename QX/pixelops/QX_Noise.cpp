// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_Noise.h"

#include <atomic>

#include "platform/M_Tables.h"

namespace {
// The table is set once, before anything dithers. The cursor is raced on purpose: noise need not be exact.
const std::uint32_t* table_start = nullptr;
const std::uint32_t* table_end = nullptr;
std::atomic<const std::uint32_t*> dither_cursor{nullptr};
}  // namespace

void QX_ResetDitherRandomIndex() { dither_cursor.store(table_start, std::memory_order_relaxed); }

namespace qx {

int start_noise() {
    const std::uint32_t* table = nullptr;
    std::int32_t count = 0;
    if (const int code = RND_GetPrimeSizedTable(&table, &count)) return code;
    table_start = table;
    table_end = table + count;  // the last value is used before the cursor goes back
    QX_ResetDitherRandomIndex();
    return 0;
}

NoiseRow::NoiseRow() : start_(table_start), end_(table_end), cursor_(dither_cursor.load(std::memory_order_relaxed)) {}
NoiseRow::~NoiseRow() { dither_cursor.store(cursor_, std::memory_order_relaxed); }

}  // namespace qx
