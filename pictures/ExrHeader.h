// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>

namespace qx::pictures {

/// False when an attribute of an OpenEXR file's headers claims to reach beyond the end of the file. The library takes
/// memory for an attribute before it reads it, up to 2 GB. Moves the stream's place.
bool attributes_fit(std::FILE* stream);

}  // namespace qx::pictures
