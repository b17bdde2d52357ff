// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"

// The chunks of a PNG that tell of colours, as bytes: libpng would drop what it finds unlikely, and make up the rest.
namespace qx::pictures {

struct PngChunk {
    const char* name;
    std::vector<std::uint8_t> bytes;
    const char* fault = nullptr;  ///< words for why it cannot be read
};

inline constexpr const char* kPngColourChunks[] = {"iCCP", "sRGB", "gAMA", "cHRM"};

/// What a chunk says goes into the picture. One that cannot be read leaves a note.
void keep_chunk(Picture& picture, const PngChunk& chunk, bool grey);

/// Those that the picture's tags make, in their order.
std::vector<PngChunk> chunks_of(const ColourTags& tags);

}  // namespace qx::pictures
