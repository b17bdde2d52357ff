// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_MaskRow.h"
#include "QX/compositing/QX_RowDriver.h"
#include "QX/compositing/QX_TransferLoop.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Progress.h"

namespace qx {

/// Where the rows of a transform go.
struct TransformRows {
    std::int32_t quiet_rows;  ///< asks after rows whose index has none of these bits
    M_LRect rect;             ///< in the destination; not empty
};

/// Modes that change a destination under a clear row.
constexpr bool draws_clear_rows(int xfer) {
    return xfer == xfer_replace || xfer == xfer_premul_over || clears_alpha_outside(xfer);
}

/// True when `xfer_over` of an opaque row is a copy.
template <class Pixel> bool copies_opaque_rows(const CompositeRun<Pixel>& run) {
    return run.mode.xfer == xfer_over && run.call.mask == nullptr && run.mode.rgb_only == 0 &&
           run.mode.opacity >= DepthOf<Pixel>::full;
}

/// Whether pixels of one world may be those of another too.
inline bool may_share_pixels(const QX_LayerDef& a, const QX_LayerDef& b) {
    const auto end = [](const QX_LayerDef& w) { return std::uintptr_t(row_of<std::byte>(w, w.height)); };
    const auto begin = [](const QX_LayerDef& w) { return std::uintptr_t(w.data); };
    const bool forwards = a.rowbytes > 0 && b.rowbytes > 0;
    return !forwards || (begin(a) < end(b) && begin(b) < end(a));
}

/// True when what is drawn of a row becomes the destination's, bit for bit, no routine of a host's is asked, and
/// nothing of the source is overwritten before it is read.
template <class Pixel>
bool copies_rows(const CompositeRun<Pixel>& run, const QX_BlendModeDescriptor<Pixel>& descriptor) {
    const auto& mode = run.mode;
    if ((mode.xfer != xfer_copy && mode.xfer != xfer_replace) || run.call.mask != nullptr || mode.rgb_only != 0 ||
        may_share_pixels(*run.call.src, *run.call.dst)) {
        return false;
    }
    QX_RowFunc<Pixel> own = nullptr;
    row_lookups.of<Pixel>().at[0](mode.xfer, &own);
    return mode.opacity == DepthOf<Pixel>::full && descriptor.row == own &&
           slot<SlotsOf<Pixel>.driver>() == &drive_row<Pixel>;
}

/// True where a row is known not to be clear before it is sampled, so that it may be sampled where it is to lie.
template <class Rows> bool surely_shows(const Rows& rows, std::int32_t count) {
    if constexpr (requires { rows.surely_shows(count); }) return rows.surely_shows(count);
    return false;
}

/// Samples row by row into the spare row of the scratch and composites each.
/// @param rows  sample(count, out) gives the sum of a row's alphas; advance() goes to the next row
/// @return 0, 5 for an unknown mode (nothing is written), or the code of a row or of the progress function
template <class Pixel, class Rows>
int composite_rows(const CompositeRun<Pixel>& run, const TransformRows& where, Rows rows) {
    const CompositeCall& call = run.call;
    const M_LRect& rect = where.rect;
    QX_BlendModeDescriptor<Pixel> descriptor(run.mode, call.mask != nullptr, call.tables);
    if (descriptor.row == nullptr) return kQX_UnimplementedMode;
    if (clears_alpha_outside(run.mode.xfer)) {
        if (const int code = clear_alpha_around(rect, call.dst)) return code;
    }
    const auto drive = slot<SlotsOf<Pixel>.driver>();
    const std::int32_t count = rect.right - rect.left, total = rect.bottom - rect.top;
    const auto opaque =
        static_cast<QX_AlphaSumOf<Pixel>>(count) * static_cast<QX_AlphaSumOf<Pixel>>(DepthOf<Pixel>::full);
    auto* const row = static_cast<Pixel*>(run.scratch.spare_row);
    const bool copies = copies_rows(run, descriptor);
    MaskRows<Pixel> mask(call.mask != nullptr ? *call.mask : QX_MaskWorld{}, static_cast<Pixel*>(run.scratch.mask_row));
    RowSeed seed(run.mode.rand_seed, 0, rect.top);
    int code = kQX_NoError;
    for (std::int32_t i = 0; i < total && code == kQX_NoError; ++i) {
        const std::int32_t y = rect.top + i;
        if (in_field(call.field, y)) {
            Pixel* const to = pixel_at<Pixel>(*call.dst, rect.left, y);
            Pixel* const made = copies && surely_shows(rows, count) ? to : row;
            const auto alphas = rows.sample(count, made);
            if (made == to) {
                // it lies where it belongs
            } else if (alphas == opaque && copies_opaque_rows(run)) {
                std::copy_n(row, count, to);
            } else if (alphas != 0 || draws_clear_rows(run.mode.xfer)) {
                descriptor.mode.rand_seed = seed.value();
                const Pixel* coverage = call.mask != nullptr ? mask.row(rect.left, rect.right, y) : nullptr;
                code = drive(count, &descriptor, row, coverage, to,
                             static_cast<QX_ChannelOf<Pixel>*>(run.scratch.alpha_row));
            }
        }
        rows.advance();
        seed.advance();
        if (code == kQX_NoError && (i & where.quiet_rows) == 0) code = ask_progress(call.progress, i, total);
    }
    return code;
}

}  // namespace qx
