// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/world/QX_World.h"

/// Reverses the four channels of every pixel of a world in place; twice gives the first state back.
/// Throws 3 after a report for a depth of no known class.
QX_EXPORT void QX_IteratePixels(QX_World* world);
