// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Picture.h"

// A file's pixels pass through those of a world: 65,536 steps of 16 bits through 32,769, associated floats through
// straight ones, which back again may be off by the last bit, and a step of 32,768 is none of 65,535. So a picture
// carries the pixels of such a file beside its own ones. What is written is a carried value wherever it stands for the
// pixel that there is now, which is one that nothing was laid over.
namespace qx::pictures {

/// The last step of reading: from pixels as a file has them, 16 bits from 0 to 65535, to straight ones of the world's
/// scale. The first are carried if the second do not tell them all.
/// @param straighten  false leaves associated colours what they are
void settle(const std::string& path, Picture& picture, bool straighten);

/// The pixels of a 16-bit file, from 0 to 65535, of a picture of 16 bits or float. What is beyond 0 and 1 is cut.
std::unique_ptr<QX_World> pixels_of_file16(const std::string& path, const Picture& picture);

/// The pixels of a file of 8 bits or floats. Floats of a picture of 16 bits are v / 65535 where a value is carried.
std::unique_ptr<QX_World> pixels_of_depth(const std::string& path, const Picture& picture, int depth);

/// Forgets what only a background passes on.
inline void drop_beside(Picture& picture) { picture.beside() = {}; }

/// An input at another depth: 16-bit files become v / 65535 at depth 32, which is rounded back to them; everything else
/// is `at_depth`.
void bring_to_depth(const std::string& path, Picture& picture, int depth);

/// A pixel of a float picture with associated alpha.
QX_PixelFloat associated_pixel(const Picture& picture, int x, int y);

}  // namespace qx::pictures
