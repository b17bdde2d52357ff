// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pictures/Format.h"

// ICC profiles on their way from files into pictures and from pictures into files.
namespace qx::pictures {

/// Keeps an embedded profile if it fits pixels of this space, else leaves a note. Grey becomes RGB, so that a profile
/// for either fits it.
void keep_profile(Picture& picture, const unsigned char* data, std::size_t bytes, IccSpace pixels);

/// The note on one that cannot be read. @param words  name the fault
void note_damaged_profile(Picture& picture, const std::string& words);

/// Throws Failure for a CMYK file where RGB is asked for. @param picture  what has been kept of it
[[noreturn]] void refuse_cmyk(const std::string& path, const Picture& picture);

/// Why a file of this format, whose pixels are always RGB, does not get the profile: a note, or null if it gets it.
const char* profile_hindrance(const Format& format, const ColourTags& tags);

/// The profile that a file of this format gets; null when it gets none.
inline const std::vector<std::uint8_t>* profile_for(const Format& format, const ColourTags& tags) {
    const bool embeds = !tags.icc.bytes.empty() && profile_hindrance(format, tags) == nullptr;
    return embeds ? &tags.icc.bytes : nullptr;
}

}  // namespace qx::pictures
