// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"
#include "opticalflow/src/FlowRing.h"
#include "opticalflow/src/HvVec2.h"
#include "opticalflow/src/NeighbourMean.h"

namespace qx {

/// What a pixel chooses from: a vector of its own and eight others. A slot is a number from 0 to 8.
inline constexpr std::int32_t kSlots = 9;

/// Room beside a row for slots to both sides and for whole registers.
inline constexpr std::int32_t kMostReach = 48, kRowPadding = kMostReach + 16;
/// Floats or integers that a row of so many pixels takes.
constexpr std::size_t padded_row(std::int32_t width) { return std::size_t(width) + 2 * std::size_t{kRowPadding}; }

/// A row of vectors that may be chosen, their components apart; what may not, and what lies beside the row, has
/// INVALID_VECTOR. Pixel 0 stands behind kRowPadding others.
struct CandidateRow {
    float *x, *y;
    std::int32_t* changed;  ///< all set where a vector counts as changed, else 0
};

/// Says which of equal costs a shuffle puts first: as lowest_after_shuffle.
using SettleTie = int (*)(const float* costs, int count, std::uint32_t state);

/// A row of the field of blocks, each of whose pixels takes the best of nine.
struct AssignRow {
    FlowImage image{};            ///< sampled where vectors lead
    const float* here = nullptr;  ///< what the other image shows at the row's own pixels
    float data_weight = 1;
    std::int32_t y = 0, width = 0;
    std::int32_t reach = 0;  ///< pixels to the neighbours on the left and on the right
    CandidateRow rows[3]{};  ///< those above by a reach, of the row itself, below by a reach
    HvVec2* out = nullptr;
    std::uint32_t random = 0;  ///< state of the random sequence, from row to row
    SettleTie settle = nullptr;
};

/// A row of a field in place, each of whose pixels may take a neighbour's vector.
struct RefineRow {
    FlowImage image{};
    const float* here = nullptr;
    float data_weight = 1, smoothness = 1;
    std::int32_t y = 0, width = 0;
    CandidateRow rows[3]{};                           ///< above, itself, below, as the monitor saved them
    HvVec2* row = nullptr;                            ///< live
    const HvVec2 *above = nullptr, *below = nullptr;  ///< live or as they were before the pass; null beside the field
    std::uint32_t random = 0;
    SettleTie settle = nullptr;
};

struct FlowChoice {
    /// Makes a candidate row of a row of vectors, which may be null, for one beside the field. Without `map` all have
    /// changed.
    void (*spread)(const HvVec2* row, const std::int32_t* map, std::int32_t width, const CandidateRow& out);
    /// What a monitor does of a row: notes which vectors differ from the saved ones, and saves them.
    /// @return whether one has a component that is none
    bool (*watch)(const HvVec2* row, std::int32_t width, HvVec2* saved, std::int32_t* map);
    void (*assign)(AssignRow& row);
    void (*refine)(RefineRow& row);
};
QX_DECLARE_LEVELS(FlowChoice, flow_choice)

}  // namespace qx
