// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"

/// From the number of a depth to its pixel type: the one place that tells them apart.
namespace qx {

/// Gives `body.operator()<Pixel>()` for a depth, `otherwise()` for a number that is none.
template <class Body, class Otherwise>
decltype(auto) for_depth(int depth, const Body& body, const Otherwise& otherwise) {
    switch (depth) {
        case 8:
            return body.template operator()<QX_Pixel8>();
        case 16:
            return body.template operator()<QX_Pixel16>();
        case 32:
            return body.template operator()<QX_PixelFloat>();
        default:
            return otherwise();
    }
}

/// Kept: reported as it stands, mark and all.
inline constexpr const char* kUnknownDepth = "Unknown world bitdepth in##CONDITIONNAME";

/// The way of the exported routines: `body.operator()<Pixel>()` for the record's depth. Another depth is a failed
/// verification with this text. @return the body's code, or 3
template <class Body>
int with_depth(const QX_LayerDef& record, Place place, const Body& body, const char* unknown_depth = kUnknownDepth) {
    return for_depth(QXp_WorldDepth(&record), body, [&] { return report_failed_verification(place, unknown_depth); });
}

/// The same for routines that throw their codes.
template <class Body>
decltype(auto) must_have_depth(int depth, Place place, const Body& body, const char* unknown_depth) {
    using Result = decltype(body.template operator()<QX_Pixel8>());
    return for_depth(depth, body, [&]() -> Result { throw report_failed_verification(place, unknown_depth); });
}

}  // namespace qx
