// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeCall.h"
#include "QX/compositing/QX_Rows.h"
#include "QX/indep/QX_SlotsOf.h"

namespace qx {

/// The rectangle loop: clips `src_rect`, whose corner lands on (dest_x, dest_y), and drives the rows.
/// @return 0, 5 for an unknown mode (nothing is written), or the code of a row or of the progress function
template <class Pixel>
int transfer_rows(const CompositeRun<Pixel>& run, const M_LRect& src_rect, int dest_x, int dest_y);

/// The two modes that leave no alpha in the destination where the layer is not.
constexpr bool clears_alpha_outside(int xfer) {
    return xfer == xfer_alpha_multiply || xfer == xfer_alpha_multiply_luma;
}

/// Clears destination alpha in the eight rectangles of a three-by-three grid around `rect`, which lies in the world.
int clear_alpha_around(const M_LRect& rect, QX_LayerDef* world);

/// Seed of the dissolving rows: it takes a running increment, which grows by its own first step every row, so that a
/// rectangle's pattern depends on its top edge.
class RowSeed {
public:
    RowSeed(std::int32_t seed, std::int32_t left, std::int32_t top)
        : seed_(static_cast<std::uint32_t>(seed) + static_cast<std::uint32_t>(left)),
          increment_(static_cast<std::uint32_t>(top) * kStep) {}
    std::int32_t value() const { return static_cast<std::int32_t>(seed_); }
    void advance() {
        seed_ += increment_;
        increment_ += kStep;
    }

private:
    static constexpr std::uint32_t kStep = 12281;
    std::uint32_t seed_, increment_;
};

}  // namespace qx
