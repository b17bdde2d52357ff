// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "pictures/Picture.h"
#include "tools/qx/options/EncodingOptions.h"

// Results over an opaque colour.
namespace qx::tool {

/// The frame at a depth over a colour, black where none is told, as movies without alpha show it.
std::shared_ptr<const pictures::Picture> opaque_frame(const std::string& path, const QX_World& frame, int depth,
                                                      const std::optional<QX_PixelFloat>& ground,
                                                      pictures::Watch& watch);

/// The picture over the colour that is asked for; none where none is, or the picture is opaque.
std::optional<pictures::Picture> flattened(const std::string& path, const pictures::Picture& picture,
                                           const EncodingOptions& encoding, pictures::Watch& watch);

}  // namespace qx::tool
