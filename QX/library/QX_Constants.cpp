// SPDX-License-Identifier: Apache-2.0
// Constants that exist before the library's start: all of them are initialised by the linker.
#include "QX/library/QX_ByteToFloat.h"
#include "QX/library/QX_Library.h"

constinit const double QX_G_ZeroData[16] = {};

constinit const QX_FloatQuad QX_G_vf255{{255.0f, 255.0f, 255.0f, 255.0f}};
constinit const QX_FloatQuad QX_G_vfHalf{{0.5f, 0.5f, 0.5f, 0.5f}};
constinit const QX_Int32Quad QX_G_vi128_32{{128, 128, 128, 128}};
constinit const QX_Int32Quad QX_G_viLoWordMask{{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}};
constinit const QX_Int32Quad QX_G_viLoByteMask32{{0xFF, 0xFF, 0xFF, 0xFF}};
constinit const QX_Mask128 QX_G_AlphaMask32{{0xFFFFFFFF, 0, 0, 0}};
constinit const QX_Mask128 QX_G_BGRMask32{{0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}};

namespace qx {

constinit const std::array<float, 256> byte_to_float = [] {
    std::array<float, 256> table{};
    for (int i = 0; i < 256; ++i) table[static_cast<std::size_t>(i)] = static_cast<float>(i);
    return table;
}();

}  // namespace qx
