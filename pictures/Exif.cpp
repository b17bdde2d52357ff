// SPDX-License-Identifier: Apache-2.0
#include "pictures/Exif.h"

#include <cstring>

namespace qx::pictures {
namespace {

/// The block behind its mark: a small TIFF of either byte order. What lies outside reads as 0.
class Block {
public:
    Block(const unsigned char* data, std::size_t bytes)
        : data_(data), bytes_(bytes), little_(bytes > 0 && data[0] == 'I') {}
    std::size_t number(std::size_t at, std::size_t length) const {
        std::size_t value = 0;
        for (std::size_t i = 0; i < length; ++i) value |= byte(at + i) << 8 * (little_ ? i : length - 1 - i);
        return value;
    }

private:
    std::size_t byte(std::size_t at) const { return at < bytes_ ? data_[at] : 0; }
    const unsigned char* data_;
    std::size_t bytes_;
    bool little_;
};

}  // namespace

int exif_orientation(const unsigned char* data, std::size_t bytes) {
    constexpr std::size_t mark = 6, entry = 12, orientation = 0x0112;
    if (bytes < mark || std::memcmp(data, "Exif\0\0", mark) != 0) return 1;
    const Block block(data + mark, bytes - mark);
    const std::size_t directory = block.number(4, 4), entries = block.number(directory, 2);
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t at = directory + 2 + i * entry;
        if (block.number(at, 2) != orientation) continue;
        const auto value = static_cast<int>(block.number(at + 8, 2));
        return value >= 1 && value <= 8 ? value : 1;
    }
    return 1;
}

}  // namespace qx::pictures
