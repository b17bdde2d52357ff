// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "opticalflow/src/QX_SolvanParams.h"
#include "pictures/Picture.h"

namespace qx::scene {

/// What moves where, for each pixel of a picture: u to the right and v down, in pixels.
struct FlowField {
    struct Vector {
        float u, v;
    };
    int width = 0, height = 0;
    std::vector<Vector> vectors;  ///< row by row

    const Vector& at(int x, int y) const {
        return vectors[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

inline constexpr float kMostFlow = 1e9f;      ///< longer vectors are none
inline constexpr float kUnknownFlow = 1e10f;  ///< what stands for them in files
inline bool is_known(const FlowField::Vector& vector) {
    const auto fits = [](float part) { return part <= kMostFlow && part >= -kMostFlow; };  // no for not-a-number
    return fits(vector.u) && fits(vector.v);
}

struct FlowFields {
    FlowField forward, backward;  ///< to the second picture, and to the first one
};

/// The fields of two pictures of one size as they are at the time of the first one; vectors that are not known are
/// kUnknownFlow. Throws pictures::Failure, WorkFault or pictures::Stopped.
/// @param params  with fractions, of flow_params
FlowFields flow_fields(const std::string& subject, const pictures::Picture& first, const pictures::Picture& second,
                       const QX_Solvan_AlgoParams& params, pictures::Watch& watch);

}  // namespace qx::scene
