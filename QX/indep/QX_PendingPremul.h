// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_World.h"

namespace qx {

/// What the world classes need from the premultiply and matte routines, which this version does not have yet: all
/// of it stands here, and the routines take the place of these two bodies.
template <class Pixel> [[noreturn]] void premultiply_world(QX_LayerDef*, bool /*forward*/) {
    throw report_failed_verification(50, "premultiply is not available in this version");
}

/// @param colour  of the world's depth
template <class Pixel> [[noreturn]] void matte_world(QX_LayerDef*, const Pixel& /*colour*/, bool /*forward*/) {
    throw report_failed_verification(51, "colour mattes are not available in this version");
}

}  // namespace qx
