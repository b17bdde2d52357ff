// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "platform/TK_Memory.h"

/// A block of typed samples that is no image, such as depths or normals. The host lays the record down.
struct QX_ChannelChunk {
    std::int32_t width, height;  ///< in elements
    std::int32_t dimension;      ///< values in an element
    std::int32_t row_bytes;
    std::uint32_t data_type;  ///< QX_ChunkType
    TK_Handle handle;         ///< null when there is no block
    void* data;               ///< the block while it is locked, else null
};

/// Four characters, the first in the highest byte. Every other number is a type of one byte.
enum QX_ChunkType : std::uint32_t {
    kQX_ChunkDouble = 0x44424C38,         ///< "DBL8"
    kQX_ChunkFixed = 0x46495834,          ///< "FIX4"
    kQX_ChunkFloat = 0x464C5434,          ///< "FLT4"
    kQX_ChunkLong = 0x4C4F4E34,           ///< "LON4"
    kQX_ChunkUnsignedFixed = 0x55465834,  ///< "UFX4"
    kQX_ChunkRGB = 0x52474220,            ///< "RGB "
    kQX_ChunkRGBSwapped = 0x52424720,     ///< Kept: hosts know the same type under this number too
    kQX_ChunkShort = 0x53485432,          ///< "SHT2"
    kQX_ChunkUnsignedShort = 0x55535432   ///< "UST2"
};

static_assert(sizeof(QX_ChannelChunk) == 40 && offsetof(QX_ChannelChunk, row_bytes) == 12);
static_assert(offsetof(QX_ChannelChunk, data_type) == 16 && offsetof(QX_ChannelChunk, handle) == 24);
static_assert(offsetof(QX_ChannelChunk, data) == 32);

/// Bytes of one value of a type. @return 0, or 516 after a report for a null `size`
QX_EXPORT int QX_ChunkDataSize(std::uint32_t data_type, std::uint16_t* size);

/// Chunks lie in the host's handles. A chunk belongs to its caller: nothing is locked between threads. The routines
/// give 0, or 516 after a report for a null record.

/// Makes a chunk of cleared values, locked. Rows lie one behind another.
/// @return 516 for a side or dimension below 1, with the record as it was; 4 after a report where memory is short or a
///         row passes 31 bits, with sizes and type set, `row_bytes` 0 where it does not fit, and no block
QX_EXPORT int QX_NewChunk(int width, int height, int dimension, std::uint32_t data_type, QX_ChannelChunk* chunk);
/// Takes `data` from the handle, also from one that is locked. @return 516 after a report without a handle
QX_EXPORT int QX_LockChunk(QX_ChannelChunk* chunk);
/// Forgets `data` and leaves the handle alone. @return 516 after a report for one that is not locked
QX_EXPORT int QX_UnlockChunk(QX_ChannelChunk* chunk);
/// Frees the handle, if there is one, locked or not, and zeroes the record.
QX_EXPORT int QX_DisposeChunk(QX_ChannelChunk* chunk);

/// Where output goes. A host may put routines of its own into the two slots.
struct QX_Destination {
    void* destination;
    void* reserved[3];  ///< null
};
static_assert(sizeof(QX_Destination) == 32);

/// Through the table of slots. @param ref  not read @return 0, or 516 after a report for a null `out`
QX_EXPORT int QX_OpenDestination(void* destination, void* ref, QX_Destination* out);
QX_EXPORT int QX_CloseDestination(QX_Destination* out);  ///< zeroes it

namespace qx {
/// Chunks alive that have a handle. For inspection only.
QX_EXPORT std::int32_t live_chunk_count();
/// Starts the count over, at the library's start.
void reset_live_chunk_count();
/// Writes the family's routines into the table of slots.
void fill_destination_slots();
}  // namespace qx
