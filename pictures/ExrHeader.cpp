// SPDX-License-Identifier: Apache-2.0
#include "pictures/ExrHeader.h"

#include <cstdint>

namespace qx::pictures {
namespace {

/// Passes a text that ends with a 0. @return its length
long skip_text(std::FILE* stream) {
    long length = 0;
    for (int c = std::getc(stream); c != EOF && c != 0; c = std::getc(stream)) ++length;
    return length;
}

std::uint32_t read_number(std::FILE* stream) {
    std::uint32_t number = 0;
    for (int shift = 0; shift < 32; shift += 8)
        number |= (static_cast<std::uint32_t>(std::getc(stream)) & 255) << shift;
    return number;
}

long length_of(std::FILE* stream) {
    std::fseek(stream, 0, SEEK_END);
    return std::ftell(stream);
}

}  // namespace

bool attributes_fit(std::FILE* stream) {
    constexpr long version = 4;
    constexpr std::uint32_t multipart = 0x1000;
    const long length = length_of(stream);
    std::fseek(stream, version, SEEK_SET);
    const bool several = (read_number(stream) & multipart) != 0;
    for (bool more = true; more;) {  // a header ends with an empty name, several end with an empty header
        more = several;
        long name = skip_text(stream);
        if (name == 0) return true;
        for (; name > 0; name = skip_text(stream)) {
            skip_text(stream);
            const std::uint32_t bytes = read_number(stream);
            if (std::feof(stream) != 0) return true;  // the library says what is missing
            if (bytes > length - std::ftell(stream)) return false;
            std::fseek(stream, static_cast<long>(bytes), SEEK_CUR);
        }
    }
    return true;
}

}  // namespace qx::pictures
