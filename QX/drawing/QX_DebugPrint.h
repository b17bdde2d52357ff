// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/world/QX_World.h"

/// Prints small text over an 8-bit or 16-bit world by the rules of printf. A character takes a cell of 6 by 10 pixels,
/// and is left out where the cell does not fit. Line feed starts a new line below.
/// Kept: a tab moves to column (x modulo 4) + 24 of the world.
/// @param x  left edge of the first cell
/// @param y  top of the first line
/// Throws 3 after a report for a world of another depth.
[[gnu::format(printf, 5, 6)]] QX_EXPORT void QX_DebugPrint(QX_World* world, int x, int y, const QX_PixelFloat& colour,
                                                           const char* format, ...);
