// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_Chunk.h"

#include <atomic>
#include <cstring>
#include <limits>

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"

namespace {

std::atomic<std::int32_t> live_chunks{0};

int invalid_parameter() { return qx::report_invalid_parameter(qx::Place::chunk); }

/// 0 for a row that does not fit.
std::int32_t bytes_of_row(std::uint32_t data_type, int width, int dimension) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    std::uint16_t size = 1;
    QX_ChunkDataSize(data_type, &size);
    const std::int64_t values = std::int64_t{width} * dimension;
    return values <= most / size ? static_cast<std::int32_t>(values * size) : 0;
}

int open_destination(void* destination, void*, QX_Destination* out) {
    if (out == nullptr) return invalid_parameter();
    *out = {destination, {}};
    return kQX_NoError;
}

int close_destination(QX_Destination* out) { return open_destination(nullptr, nullptr, out); }

}  // namespace

int QX_ChunkDataSize(std::uint32_t data_type, std::uint16_t* size) {
    if (size == nullptr) return invalid_parameter();
    switch (data_type) {
        case kQX_ChunkDouble:
            *size = 8;
            break;
        case kQX_ChunkFixed:
        case kQX_ChunkFloat:
        case kQX_ChunkLong:
        case kQX_ChunkUnsignedFixed:
            *size = 4;
            break;
        case kQX_ChunkRGB:
        case kQX_ChunkRGBSwapped:
            *size = 3;
            break;
        case kQX_ChunkShort:
        case kQX_ChunkUnsignedShort:
            *size = 2;
            break;
        default:
            *size = 1;
    }
    return 0;
}

int QX_NewChunk(int width, int height, int dimension, std::uint32_t data_type, QX_ChannelChunk* chunk) {
    if (width < 1 || height < 1 || dimension < 1 || chunk == nullptr) return invalid_parameter();
    const std::int32_t row_bytes = bytes_of_row(data_type, width, dimension);
    // A row that does not fit is a block that cannot be had: the host makes its report of either.
    const std::size_t bytes = row_bytes != 0 ? static_cast<std::size_t>(std::int64_t{row_bytes} * height) : SIZE_MAX;
    *chunk = {width, height, dimension, row_bytes, data_type, nullptr, nullptr};
    chunk->handle = TK_AllocateHandleClear(qx::site(qx::Place::chunk), qx::text_of(qx::Text::channel_chunk), bytes);
    if (chunk->handle == nullptr) return kQX_OutOfMemory;
    live_chunks.fetch_add(1, std::memory_order_relaxed);
    return QX_LockChunk(chunk);
}

int QX_LockChunk(QX_ChannelChunk* chunk) {
    if (chunk == nullptr || chunk->handle == nullptr) return invalid_parameter();
    chunk->data = *chunk->handle;
    return kQX_NoError;
}

int QX_UnlockChunk(QX_ChannelChunk* chunk) {
    if (chunk == nullptr || chunk->data == nullptr) return invalid_parameter();
    chunk->data = nullptr;
    return kQX_NoError;
}

int QX_DisposeChunk(QX_ChannelChunk* chunk) {
    if (chunk == nullptr) return invalid_parameter();
    if (chunk->handle != nullptr) {
        TK_FreeHandle(chunk->handle);
        live_chunks.fetch_sub(1, std::memory_order_relaxed);
    }
    std::memset(chunk, 0, sizeof *chunk);  // what the compiler put between the fields too
    return kQX_NoError;
}

int QX_OpenDestination(void* destination, void* ref, QX_Destination* out) {
    return qx::slot<qx::Slot::OpenDestination>()(destination, ref, out);
}

int QX_CloseDestination(QX_Destination* out) { return qx::slot<qx::Slot::CloseDestination>()(out); }

namespace qx {

std::int32_t live_chunk_count() { return live_chunks.load(std::memory_order_relaxed); }
void reset_live_chunk_count() { live_chunks.store(0, std::memory_order_relaxed); }

void fill_destination_slots() {
    set_slot<Slot::OpenDestination>(&open_destination);
    set_slot<Slot::CloseDestination>(&close_destination);
}

}  // namespace qx
