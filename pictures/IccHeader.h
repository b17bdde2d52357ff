// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

// The outside of an ICC profile: header and table of tags, by the bytes alone. What the tags hold is for a colour
// engine to judge. Stands on nothing.
namespace qx::pictures {

inline constexpr std::size_t kMostIccBytes = std::size_t{64} << 20;

enum class IccClass { input, display, output, space };
enum class IccSpace { rgb, grey, cmyk };
enum class IccConnection { xyz, lab };

struct IccFacts {
    IccClass kind;
    IccSpace space;  ///< of the device's side
    IccConnection connection;
    int major, minor;   ///< of the version
    std::size_t bytes;  ///< of the profile; what lies behind them is none of it
};

/// Facts, or else words.
struct IccVerdict {
    std::optional<IccFacts> facts;
    std::string fault;     ///< names the fault as a part of a sentence: "it is cut short"
    bool damaged = false;  ///< false of a whole profile that is for something else than a device's colours
};

IccVerdict vet_icc(std::span<const std::uint8_t> block);

}  // namespace qx::pictures
