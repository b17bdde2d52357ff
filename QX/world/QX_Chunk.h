// SPDX-License-Identifier: Apache-2.0
#pragma once

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

/// Bytes of one value of a type. @return 0
QX_EXPORT int QX_ChunkDataSize(std::uint32_t data_type, std::uint16_t* size);
