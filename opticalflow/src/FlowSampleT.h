// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowRing.h"
#include "opticalflow/src/HvVec2.h"

namespace qx::QX_ISA {

/// As FlowRing has it.
QX_INLINE Floats ring_sample(const FlowImage& image, Floats x, Floats y) {
    const Places across = places_of(x - 0.5f), down = places_of(y - 0.5f);
    const Mask inside = both(lies_in(across.whole + 1, image.width + 1), lies_in(down.whole + 1, image.height + 1));
    const Ints x0 = limited(across.whole, image.width), x1 = limited(across.whole + 1, image.width);
    const Ints row0 = limited(down.whole, image.height) * splat<Ints>(image.width);
    const Ints row1 = limited(down.whole + 1, image.height) * splat<Ints>(image.width);
    const auto at = [&](Ints index) QX_LAMBDA { return gather_floats(image.pixels, index); };
    const Floats top = mix(at(row0 + x0), at(row0 + x1), across.fraction);
    const Floats bottom = mix(at(row1 + x0), at(row1 + x1), across.fraction);
    return inside ? mix(top, bottom, down.fraction) : splat<Floats>(INVALID_VECTOR);
}

}  // namespace qx::QX_ISA
