// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_RoutineTypes.h"

/// Everything that one transfer chooses once.
template <class Pixel> struct QX_EXPORT QX_BlendModeDescriptor {
    QX_BlendingMode<Pixel> mode;
    QX_RowFunc<Pixel> behind_row;
    QX_FilterFunc<Pixel> pre_filter, post_filter;  ///< null without filters
    QX_RowFunc<Pixel> row;                         ///< null for a number that is no mode
    QX_MergeFunc<Pixel> alpha_merge;
    std::uint8_t pre_post, behind_first, keeps_alpha, merges_alpha;
    const QX_LinearBlendingTables* tables;

    /// Reads the table of routines. Reports a number that is no mode.
    QX_BlendModeDescriptor(const QX_BlendingMode<Pixel>& mode, bool has_mask, const QX_LinearBlendingTables* tables);
};
