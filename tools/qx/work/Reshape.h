// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <memory>
#include <string>

#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "platform/M_Geometry.h"
#include "scene/LayerPlace.h"

// A picture in another shape: a part of it, another size, channels in other places. The texts throw WrongUsage, which
// names the option; worlds have any depth.
namespace qx::tool {

/// "WxH+X+Y" within a picture of this size; without +X+Y from its left top corner.
M_LRect crop_of(const std::string& option, const std::string& text, scene::Extent whole);
std::unique_ptr<QX_World> cropped(const std::string& path, const QX_World& world, const M_LRect& part);

/// What becomes of a size: "WxH" is the largest of its proportions within, "WxH!" that very one, "Wx" and "xH" tell
/// one side, "50%" a factor.
scene::Extent size_of(const std::string& option, const std::string& text, scene::Extent now);
/// Means over the boxes of pixels where a side shrinks, bicubic samples where it grows. Edges stay: the picture goes on
/// beyond them as they are.
std::unique_ptr<QX_World> resized(const std::string& path, const QX_World& world, scene::Extent size,
                                  pictures::Watch& watch);

/// For red, green, blue and alpha where each comes from.
using Channels = std::array<char, 4>;
/// One to four of r, g, b, a, 0 and 1: of one all colours, of three alpha stays, of two grey and alpha.
Channels channels_of(const std::string& option, const std::string& text);
/// 16-bit files keep their values.
void shuffle(const std::string& path, pictures::Picture& picture, const Channels& channels);

}  // namespace qx::tool
