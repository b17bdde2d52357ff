// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_Chunk.h"

int QX_ChunkDataSize(std::uint32_t data_type, std::uint16_t* size) {
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
