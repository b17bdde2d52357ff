// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qx::pictures {

/// What lies in bytes without a head, as other programs hand pictures on through pipes.
struct RawLayout {
    int width, height;
    std::string format;  ///< of `raw_formats`
};

/// The kinds of pixels that are known, by the names that FFmpeg has for them, with commas between.
std::string raw_formats();
bool is_raw_format(const std::string& name);

}  // namespace qx::pictures
