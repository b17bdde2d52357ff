// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Places.h"
#include "QX/indep/QX_Records.h"

namespace qx {

/// What every call brings that composites a world onto another.
struct CompositeCall {
    const QX_ProgressInfo* progress;  ///< may be null
    int field;
    QX_LayerDef* src;
    const QX_CompositeModePlus* mode;
    const QX_LinearBlendingTables* tables;  ///< may be null
    const QX_MaskWorld* mask;               ///< may be null
    QX_ScratchBlock* scratch;               ///< null takes the shared block, or one of its own
    QX_LayerDef* dst;
};

/// What can be wrong with the records, in a fixed order. @param has_geometry  what else the call may not lack is there
/// @param depths_differ  the routine's own words, as `mask_differs` are
/// @return 0, or 3 after a report
int check_composite(Place place, const CompositeCall& call, bool has_geometry, const char* depths_differ,
                    const char* mask_differs);

/// A checked call at its depth.
template <class Pixel> struct CompositeRun {
    const CompositeCall& call;
    QX_BlendingMode<Pixel> mode;
    std::optional<LentScratch> lent;
    QX_ScratchBlock scratch;

    /// @param width  of the rows of a lent block. Throws what keeps it from being had.
    CompositeRun(const CompositeCall& c, int width) : call(c), mode(*c.mode), scratch{} {
        if (c.scratch == nullptr) lent.emplace(width, static_cast<int>(sizeof(QX_ChannelOf<Pixel>)));
        scratch = lent ? lent->block() : *c.scratch;
    }
};

}  // namespace qx
