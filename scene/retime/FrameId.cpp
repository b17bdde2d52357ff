// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/FrameId.h"

namespace qx::scene {

Guid frame_id(const QX_World& frame) {
    tesselcore::utility::Murmur3Mixer mixer(0, 0);
    const auto depth = static_cast<int>(frame.Depth());
    for (const int number : {frame.width, frame.height, depth}) {
        std::uint8_t bytes[4];
        for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(static_cast<unsigned>(number) >> 8 * i);
        mixer.Mix(bytes, sizeof bytes);
    }
    const auto row_bytes = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(depth / 2);
    const auto* const pixels = static_cast<const std::uint8_t*>(frame.data);
    for (int y = 0; y < frame.height; ++y) mixer.Mix(pixels + std::ptrdiff_t{y} * frame.rowbytes, row_bytes);
    return mixer.ToGuid();
}

}  // namespace qx::scene
