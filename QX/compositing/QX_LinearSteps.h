// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_LinearLookup.h"
#include "QX/indep/QX_PerDepth.h"
#include "lanes/Levels.h"
#include "lanes/Rows.h"

/// What rows in linear light are made of at a level.
namespace qx {

/// What 8-bit codes become on the way into linear light and back, which tables need not make the identity.
using CodeMap = std::uint16_t[256];

/// A row into linear light and back.
template <class Pixel> struct LinearSteps {
    using Linear = typename LinearDepth<DepthOf<Pixel>>::Pixel;
    void (*to)(std::int32_t count, const QX_LinearBlendingTables& tables, const Pixel* src, Linear* dst);
    void (*from)(std::int32_t count, const QX_LinearBlendingTables& tables, const Linear* src, Pixel* dst);
    /// Both ways at once, with nothing blended between; the row may be its own source. 8 bits take what `map` made.
    /// Opaque alphas are stored as a blend stores them, limited; others stay as they are.
    void (*through)(std::int32_t count, const QX_LinearBlendingTables& tables, const CodeMap& map, Stretch kind,
                    const Pixel* src, Pixel* dst);
    void (*map)(const QX_LinearBlendingTables& tables, CodeMap& map);
    /// How far the row goes on as it begins, and of which kind that is.
    /// @param most_mixed  where a mixed stretch ends
    /// @param tells_opaque  else opaque pixels are mixed ones
    /// @param mask  may be null
    std::int32_t (*stretch)(std::int32_t count, std::int32_t most_mixed, bool tells_opaque, const Pixel* src,
                            const Pixel* mask, Stretch* kind);
};

QX_DECLARE_LEVELS(PerDepth<LinearSteps>, linear_steps)

}  // namespace qx
