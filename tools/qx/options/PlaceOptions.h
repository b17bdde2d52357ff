// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/LayerPlace.h"

// Texts that tell where a layer lies. They throw WrongUsage, which names the option.
namespace qx::tool {

/// "X,Y", each in pixels, which need not be whole, or in per cent.
void read_at(const std::string& option, const std::string& text, scene::LayerPlace& place);
/// One of kGravityWords, with or without its hyphen.
int gravity_of(const std::string& option, const std::string& text);
/// "WxH", "contain" or "cover".
scene::Fit fit_of(const std::string& option, const std::string& text);

}  // namespace qx::tool
