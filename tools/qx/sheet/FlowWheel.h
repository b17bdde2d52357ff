// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Picture.h"
#include "scene/retime/Field.h"

namespace qx::tool {

/// The colour of a motion: its hue tells the direction (red to the right, yellow down, blue to the left, violet up),
/// from white for none to full at a length of `most`, and darker beyond. Black where nothing is known.
QX_Pixel8 flow_colour(const scene::FlowField::Vector& vector, double most);

/// The length that 99 of 100 known vectors stay below, at least a hundredth of a pixel.
double usual_length(const scene::FlowField& field);

/// A field in these colours. Where there is room the lower right corner has a legend: the wheel, and `most`.
pictures::Picture flow_picture(const scene::FlowField& field, double most);

}  // namespace qx::tool
