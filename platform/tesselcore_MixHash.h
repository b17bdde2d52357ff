// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "platform/Platform_Export.h"
#include "platform/tesselcore_Guid.h"

namespace tesselcore::utility {

/// Makes an identity of pieces of data, equal on every machine; where one piece ends and the next begins counts too.
/// The state is four words of 32 bits, 0 but for the last one, which is `start` and goes up by each piece's length. A
/// piece replaces the state by XXH3 (128 bits, the low 64 first) of the state's 16 bytes, each word's low byte first,
/// followed by the piece; then the last word is set to the count.
class PLATFORM_EXPORT MixHash {
public:
    explicit MixHash(std::uint32_t start) : state_{0, 0, 0, start} {}
    void MixInData(const void* bytes, std::uint32_t count);
    /// The first word; the second one's high half and its low half; the bytes of the third and the fourth, high to low.
    Guid ToGuid() const;

private:
    std::array<std::uint32_t, 4> state_;
};

}  // namespace tesselcore::utility
