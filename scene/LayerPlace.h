// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "platform/M_Matrix.h"
#include "scene/Placing.h"

namespace qx::scene {

/// Width and height in pixels.
struct Extent {
    int width = 0, height = 0;
};

inline constexpr const char* kGravityWords[] = {"north-west", "north",      "north-east", "west",      "center",
                                                "east",       "south-west", "south",      "south-east"};
inline constexpr int kCenter = 4;

/// A size that a layer is to have, by one factor for both of its sides.
struct Fit {
    enum class Kind {
        box,      ///< the largest that lies within `box`
        contain,  ///< the largest that lies within the background
        cover     ///< the smallest that covers the background
    };
    Kind kind = Kind::box;
    Extent box;
};

/// Where a layer is told to lie, in numbers that mean something beside the sizes of layer and background only.
struct LayerPlace {
    /// A distance in pixels, or in per cent of the background's side.
    struct Along {
        double number = 0;
        bool per_cent = false;
    };
    Along x, y;
    std::optional<int> gravity;  ///< in kGravityWords: which points of layer and background meet; x and y go inwards
    std::optional<Fit> fit;
};

/// The same in pixels.
struct Settled {
    int x = 0, y = 0;                 ///< the place, rounded where a matrix tells it
    std::optional<M_Matrix3> matrix;  ///< from the layer to the background, place included; none for a plain copy
};

/// @param placing  scale and turn of the layer, which the place moves, or null
/// @param matrix  in place of them, or null
Settled settle(const LayerPlace& place, const Placing* placing, const M_Matrix3* matrix, Extent layer,
               Extent background);

/// What a rectangle covers after a matrix.
M_FloatRect bounds_of(const M_FloatRect& rect, const M_Matrix3& matrix);

}  // namespace qx::scene
