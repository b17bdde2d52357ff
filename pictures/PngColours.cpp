// SPDX-License-Identifier: Apache-2.0
#include "pictures/PngColours.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "pictures/Profiles.h"

namespace qx::pictures {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr const char* kUnreadable = "it cannot be read";

std::uint32_t number(const Bytes& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 | std::uint32_t{bytes[at + 2]} << 8 |
           bytes[at + 3];
}
void append(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

/// The bytes of a packed block, or nothing of a damaged one. Stops behind the most that a profile may have.
Bytes unpacked(const std::uint8_t* packed, std::size_t size) {
    constexpr std::size_t step = 1 << 16;
    z_stream stream{};
    stream.next_in = const_cast<Bytef*>(packed);
    stream.avail_in = static_cast<uInt>(size);
    if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
    const struct End {
        z_stream& stream;
        ~End() { inflateEnd(&stream); }
    } end{stream};
    Bytes bytes;
    for (int state = Z_OK; state != Z_STREAM_END && bytes.size() <= kMostIccBytes;) {
        const std::size_t had = bytes.size();
        bytes.resize(had + step);
        stream.next_out = bytes.data() + had;
        stream.avail_out = step;
        state = inflate(&stream, Z_NO_FLUSH);
        if (state == Z_MEM_ERROR) throw std::bad_alloc();
        if (state != Z_OK && state != Z_STREAM_END) return {};
        bytes.resize(had + step - stream.avail_out);
    }
    return bytes;
}

Bytes packed(const Bytes& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    Bytes to(size);
    if (compress(to.data(), &size, bytes.data(), static_cast<uLong>(bytes.size())) != Z_OK) throw std::bad_alloc();
    to.resize(size);
    return to;
}

/// Behind a name, its end and a number of the packing, of which there is one.
void keep_iccp(Picture& picture, const Bytes& chunk, bool grey) {
    const auto end = std::find(chunk.begin(), chunk.end(), std::uint8_t{0});
    if (chunk.end() - end < 2 || end[1] != 0) return note_damaged_profile(picture, kUnreadable);
    const auto start = static_cast<std::size_t>(end - chunk.begin()) + 2;
    const Bytes bytes = unpacked(chunk.data() + start, chunk.size() - start);
    if (bytes.empty()) return note_damaged_profile(picture, kUnreadable);
    keep_profile(picture, bytes.data(), bytes.size(), grey ? IccSpace::grey : IccSpace::rgb);
}

/// @return false for what the chunk may not hold
bool keep_number(PngColours& png, std::string_view name, const Bytes& chunk) {
    constexpr std::uint32_t most = 0x7FFFFFFF, intents = 4;
    if (name == "sRGB") {
        if (chunk.size() != 1 || chunk[0] >= intents) return false;
        png.intent = chunk[0];
    } else if (name == "gAMA") {
        if (chunk.size() != 4 || number(chunk, 0) == 0 || number(chunk, 0) > most) return false;
        png.gamma = number(chunk, 0);
    } else {
        std::array<std::uint32_t, 8> primaries;
        if (chunk.size() != 4 * primaries.size()) return false;
        for (std::size_t i = 0; i < primaries.size(); ++i) primaries[i] = number(chunk, 4 * i);
        if (*std::max_element(primaries.begin(), primaries.end()) > most) return false;
        png.primaries = primaries;
    }
    return true;
}

}  // namespace

void keep_chunk(Picture& picture, const PngChunk& chunk, bool grey) {
    const bool is_profile = std::strcmp(chunk.name, "iCCP") == 0;
    if (is_profile && chunk.fault != nullptr) return note_damaged_profile(picture, chunk.fault);
    if (is_profile) return keep_iccp(picture, chunk.bytes, grey);
    if (chunk.fault == nullptr && keep_number(picture.colours.png, chunk.name, chunk.bytes)) return;
    picture.notes.push_back(std::string("its chunk ") + chunk.name + " is damaged and is left out");
}

std::vector<PngChunk> chunks_of(const ColourTags& tags) {
    std::vector<PngChunk> chunks;
    if (const auto* icc = profile_for(png_format(), tags)) {
        constexpr std::string_view name("ICC profile\0\0", 13);
        Bytes bytes(name.begin(), name.end());
        const Bytes profile = packed(*icc);
        bytes.insert(bytes.end(), profile.begin(), profile.end());
        chunks.push_back({"iCCP", std::move(bytes)});
    }
    if (tags.png.intent) chunks.push_back({"sRGB", {*tags.png.intent}});
    if (tags.png.gamma) append(chunks.emplace_back(PngChunk{"gAMA", {}}).bytes, *tags.png.gamma);
    if (tags.png.primaries) {
        Bytes& bytes = chunks.emplace_back(PngChunk{"cHRM", {}}).bytes;
        for (const std::uint32_t value : *tags.png.primaries) append(bytes, value);
    }
    return chunks;
}

}  // namespace qx::pictures
