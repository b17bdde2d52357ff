// SPDX-License-Identifier: Apache-2.0
#include "pictures/IccHeader.h"

namespace qx::pictures {
namespace {

// Places in the header, which the table of tags follows.
constexpr std::size_t kVersionAt = 8, kClassAt = 12, kSpaceAt = 16, kConnectionAt = 20, kSignatureAt = 36;
constexpr std::size_t kTagsAt = 128, kTableAt = 132, kTagBytes = 12;

/// What a code of four letters stands for.
template <class Meaning> struct Code {
    const char* letters;
    Meaning meaning;
};
constexpr Code<IccClass> kClasses[] = {
    {"scnr", IccClass::input}, {"mntr", IccClass::display}, {"prtr", IccClass::output}, {"spac", IccClass::space}};
constexpr Code<IccSpace> kSpaces[] = {{"RGB ", IccSpace::rgb}, {"GRAY", IccSpace::grey}, {"CMYK", IccSpace::cmyk}};
constexpr Code<IccConnection> kConnections[] = {{"XYZ ", IccConnection::xyz}, {"Lab ", IccConnection::lab}};
constexpr Code<bool> kSignatures[] = {{"acsp", true}};

using Block = std::span<const std::uint8_t>;

std::uint32_t number(Block block, std::size_t at) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : block.subspan(at, 4)) value = value << 8 | byte;
    return value;
}

template <class Meaning, std::size_t N>
std::optional<Meaning> meaning(Block block, std::size_t at, const Code<Meaning> (&codes)[N]) {
    for (const auto& code : codes) {
        bool same = true;
        for (std::size_t i = 0; i < 4; ++i) same = same && block[at + i] == static_cast<std::uint8_t>(code.letters[i]);
        if (same) return code.meaning;
    }
    return {};
}

/// Why the bytes are no whole profile, or null.
const char* damage(Block block) {
    if (block.size() < kTableAt) return "it is shorter than its header";
    const std::size_t bytes = number(block, 0);
    if (block.size() > kMostIccBytes || bytes > kMostIccBytes) return "it is above 64 MB";
    if (bytes < kTableAt) return "its size is less than that of its header";
    if (bytes > block.size()) return "it is cut short";
    if (!meaning(block, kSignatureAt, kSignatures)) return "it has no signature";
    const std::uint32_t tags = number(block, kTagsAt);
    if (tags > (bytes - kTableAt) / kTagBytes) return "its table of tags is cut short";
    for (std::size_t at = kTableAt; at < kTableAt + tags * kTagBytes; at += kTagBytes) {
        const std::size_t place = number(block, at + 4), length = number(block, at + 8);
        if (place > bytes || length > bytes - place) return "a tag lies outside of it";
    }
    return nullptr;
}

}  // namespace

IccVerdict vet_icc(Block block) {
    if (const char* fault = damage(block)) return {{}, fault, true};
    const auto kind = meaning(block, kClassAt, kClasses);
    if (!kind) return {{}, "it is for no device"};
    const auto space = meaning(block, kSpaceAt, kSpaces);
    if (!space) return {{}, "it is for neither RGB, grey nor CMYK"};
    const auto connection = meaning(block, kConnectionAt, kConnections);
    if (!connection) return {{}, "it connects to neither XYZ nor Lab"};
    return {IccFacts{*kind, *space, *connection, block[kVersionAt], block[kVersionAt + 1] >> 4, number(block, 0)}, ""};
}

}  // namespace qx::pictures
