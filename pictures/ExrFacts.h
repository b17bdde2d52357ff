// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ImfHeader.h>

#include "pictures/Picture.h"

namespace qx::pictures {

/// The windows, packing, channels and attributes of a part, in words.
std::vector<Fact> facts_of(const Imf::Header& header);

}  // namespace qx::pictures
