// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_RowLookup.h"
#include "QX/compositing/QX_Rows.h"
#include "QX/indep/QX_Errors.h"

namespace qx {

/// Pre-filter, row (behind first, where the mode asks), alpha merge, post-filter. A pass that fails ends them.
template <class Pixel>
int passes(std::int32_t count, const QX_BlendModeDescriptor<Pixel>& d, const Pixel* src, const Pixel* mask,
           Pixel* dst) {
    int code = kQX_NoError;
    if (d.pre_post != 0) {
        code = d.pre_filter(count, nullptr, dst);
    } else if (d.behind_first != 0) {
        code = d.behind_row(count, &d.mode, d.tables, src, mask, dst);
    }
    if (code == kQX_NoError) code = d.row(count, &d.mode, d.tables, src, mask, dst);
    if (code == kQX_NoError && d.merges_alpha != 0) code = d.alpha_merge(count, src, d.mode.opacity, mask, dst);
    if (code == kQX_NoError && d.pre_post != 0) code = d.post_filter(count, nullptr, dst);
    return code;
}

/// One row with its alpha saved and restored where the mode keeps it, in one pass where there is such a form. A row
/// that fails ends without the restoration.
template <class Pixel>
int drive_row(std::int32_t count, const QX_BlendModeDescriptor<Pixel>* descriptor, const Pixel* src, const Pixel* mask,
              Pixel* dst, QX_ChannelOf<Pixel>* alpha_row) {
    const auto& d = *descriptor;
    const bool restores_alpha = d.keeps_alpha != 0 && d.mode.rgb_only != 0;
    if (restores_alpha) {
        for (std::int32_t i = 0; i < count; ++i) alpha_row[i] = dst[i].alpha;
    }
    const auto one_pass = one_pass_row(d, mask != nullptr);
    const int code =
        one_pass != nullptr ? one_pass(count, &d.mode, nullptr, src, mask, dst) : passes(count, d, src, mask, dst);
    if (code == kQX_NoError && restores_alpha) {
        for (std::int32_t i = 0; i < count; ++i) dst[i].alpha = alpha_row[i];
    }
    return code;
}

}  // namespace qx
