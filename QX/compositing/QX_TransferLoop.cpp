// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TransferLoop.h"

#include "QX/compositing/QX_MaskRow.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_Fill.h"

namespace qx {

namespace {

/// Rows whose number is a multiple of 128 report.
int report_progress(const QX_ProgressInfo* progress, std::int32_t y, const M_LRect& rect) {
    if ((y & 127) != 0 || progress == nullptr || progress->progress_func == nullptr) return kQX_NoError;
    return progress->progress_func(progress->refcon, y - rect.top, rect.bottom - rect.top);
}

/// The part of the destination that a transfer reaches. @return false when it is empty
template <class Pixel>
bool clip(const Transfer<Pixel>& t, const M_LRect& src_rect, int dest_x, int dest_y, M_LRect* to) {
    M_LRect from;
    if (!M_SectLRect(src_rect, {0, 0, t.src.width, t.src.height}, &from)) return false;
    *to = M_OffsetLRect(from, wrapping_difference(dest_x, src_rect.left), wrapping_difference(dest_y, src_rect.top));
    if (!M_SectLRect(*to, {0, 0, t.dst.width, t.dst.height}, to)) return false;
    return t.mask == nullptr || !mask_clips(*t.mask) || M_SectLRect(*to, mask_bounds(*t.mask), to);
}

}  // namespace

template <class Pixel> int transfer_rows(const Transfer<Pixel>& t, const M_LRect& src_rect, int dest_x, int dest_y) {
    M_LRect to;
    if (!clip(t, src_rect, dest_x, dest_y, &to)) return kQX_NoError;
    RowSeed seed(t.mode.rand_seed, to.left, to.top);
    QX_BlendModeDescriptor<Pixel> descriptor(t.mode, t.mask != nullptr, t.tables);
    if (descriptor.row == nullptr) return kQX_UnimplementedMode;
    if (clears_alpha_outside(t.mode.xfer)) {
        if (const int code = clear_alpha_around(to, &t.dst)) return code;
    }

    const auto drive = row_driver<Pixel>();
    const M_LRect from =
        M_OffsetLRect(to, wrapping_difference(src_rect.left, dest_x), wrapping_difference(src_rect.top, dest_y));
    MaskRows<Pixel> mask(t.mask != nullptr ? *t.mask : QX_MaskWorld{}, static_cast<Pixel*>(t.scratch.mask_row));
    int code = kQX_NoError;
    for (std::int32_t y = to.top; y < to.bottom && code == kQX_NoError; ++y) {
        if (keeps_row(t.field, y)) {
            const Pixel* coverage = t.mask != nullptr ? mask.row(to.left, to.right, y) : nullptr;
            descriptor.mode.rand_seed = seed.value();
            code = drive(to.right - to.left, &descriptor, t.src.Row(from.top + (y - to.top)) + from.left, coverage,
                         t.dst.Row(y) + to.left, static_cast<QX_ChannelOf<Pixel>*>(t.scratch.alpha_row));
        }
        if (code == kQX_NoError) code = report_progress(t.progress, y, to);
        seed.advance();
    }
    return code;
}

template int transfer_rows(const Transfer<QX_Pixel8>&, const M_LRect&, int, int);
template int transfer_rows(const Transfer<QX_Pixel16>&, const M_LRect&, int, int);
template int transfer_rows(const Transfer<QX_PixelFloat>&, const M_LRect&, int, int);

int clear_alpha_around(const M_LRect& rect, QX_LayerDef* world) {
    return QX_ClearAlphaExceptRect(nullptr, &rect, world);
}

}  // namespace qx
