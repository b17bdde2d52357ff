// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowChoice.h"
#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/Monitor.h"

namespace solvan_of {

/// Candidate rows of a field around the row that is worked on, which goes downwards. Those that stay in reach are made
/// once.
class CandidateRows {
public:
    /// @param reach  rows between the upper, the middle and the lower row
    CandidateRows(std::int32_t width, std::int32_t reach);  ///< Want of memory is thrown as a code.

    /// Rows y - reach, y and y + reach of a field, of which all may be chosen, and none beside it.
    void around(const FieldTexture& field, std::int32_t y, qx::CandidateRow (&rows)[3]);
    /// The same of what a monitor saved, of which what has changed may be chosen.
    void around(const FnMotionEstimateGradientChangedNeighboursMonitor& monitor, std::int32_t y,
                qx::CandidateRow (&rows)[3]);

private:
    template <class MapRow>
    void around(const FieldTexture& field, const MapRow& map_row, std::int32_t y, qx::CandidateRow (&rows)[3]);
    qx::CandidateRow slot(std::int32_t y) const;

    std::int32_t width_, reach_, kept_;  ///< so many rows are kept
    EngineBlock<float> vectors_;
    EngineBlock<std::int32_t> changed_;
    EngineBlock<std::int32_t> lines_;  ///< which row each place has, -1 for none
};

}  // namespace solvan_of
