// SPDX-License-Identifier: Apache-2.0
#include "pictures/MovieHead.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace qx::pictures {
namespace {

using namespace std::string_view_literals;

struct Head {
    std::size_t at;
    std::string_view bytes;
};
constexpr Head kHeads[] = {
    {0, "nut/multimedia"},
    {0, "\x1A\x45\xDF\xA3"},  // Matroska, WebM
    {4, "ftyp"},              // MP4, MOV
    {4, "moov"},              // older MOV
    {4, "mdat"},
    {8, "AVI "},
    {0, "\x06\x0E\x2B\x34\x02\x05\x01\x01"},  // MXF
    {0, "FLV\x01"},
    {0, "OggS"},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11"},  // ASF, WMV
    {0, "\x00\x00\x01\xBA"sv},                // a program of MPEG
    {0, "\x00\x00\x01\xB3"sv},                // its video alone
};

/// Packets of 188 bytes, each of which begins with the same one.
bool is_transport_stream(const InputFile& file) {
    constexpr long packet = 188;
    constexpr int sync = 0x47, packets = 4;
    bool all = true;
    for (int i = 0; all && i < packets; ++i) {
        all = std::fseek(file.stream(), i * packet, SEEK_SET) == 0 && std::fgetc(file.stream()) == sync;
    }
    std::rewind(file.stream());
    return all;
}

}  // namespace

bool has_movie_head(const InputFile& file) {
    const auto begins = [&](const Head& head) { return file.holds(std::string(head.bytes), head.at); };
    return std::ranges::any_of(kHeads, begins) || is_transport_stream(file);
}

}  // namespace qx::pictures
