// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "pictures/Picture.h"

namespace qx::pictures {

/// Lets `work` change the colours of what lies outside of an OpenEXR picture, a world of straight floats at a time.
/// Where alpha is 0 they are light.
void change_outside(Picture& picture, const std::function<void(QX_World&)>& work);

}  // namespace qx::pictures
