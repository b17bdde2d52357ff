// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"
#include "QX/world/QX_World.h"

namespace qx {

/// Wraps a record on the stack at its depth and gives body(world), which returns a code.
/// @param unknown_depth  reported as a failed verification for a depth of no class, with result 3
template <class Body> int with_stack_world(QX_LayerDef* record, int place, const char* unknown_depth, Body&& body) {
    const auto run = [&]<class Pixel>(QX_WorldX<Pixel>&& world) { return std::forward<Body>(body)(world); };
    switch (QXp_WorldDepth(record)) {
        case 8:
            return run(QX_WorldX<QX_Pixel8>(record, false));
        case 16:
            return run(QX_WorldX<QX_Pixel16>(record, false));
        case 32:
            return run(QX_WorldX<QX_PixelFloat>(record, false));
        default:
            return report_failed_verification(place, unknown_depth);
    }
}

}  // namespace qx
