// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TransferLoop.h"

#include "QX/compositing/QX_MaskRow.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Errors.h"
#include "QX/pixelops/QX_Fill.h"

namespace qx {

namespace {

/// Rows whose number is a multiple of 128 report.
int report_progress(const QX_ProgressInfo* progress, std::int32_t y, const M_LRect& rect) {
    if ((y & 127) != 0 || progress == nullptr || progress->progress_func == nullptr) return kQX_NoError;
    return progress->progress_func(progress->refcon, y - rect.top, rect.bottom - rect.top);
}

/// The part of the destination that a transfer reaches. @return false when it is empty
bool clip(const CompositeCall& call, const M_LRect& src_rect, int dest_x, int dest_y, M_LRect* to) {
    M_LRect from;
    if (!M_SectLRect(src_rect, whole_of(*call.src), &from)) return false;
    *to = M_OffsetLRect(from, wrapping_difference(dest_x, src_rect.left), wrapping_difference(dest_y, src_rect.top));
    if (!M_SectLRect(*to, whole_of(*call.dst), to)) return false;
    return call.mask == nullptr || !mask_clips(*call.mask) || M_SectLRect(*to, mask_bounds(*call.mask), to);
}

}  // namespace

template <class Pixel>
int transfer_rows(const CompositeRun<Pixel>& run, const M_LRect& src_rect, int dest_x, int dest_y) {
    const CompositeCall& call = run.call;
    M_LRect to;
    if (!clip(call, src_rect, dest_x, dest_y, &to)) return kQX_NoError;
    RowSeed seed(run.mode.rand_seed, to.left, to.top);
    QX_BlendModeDescriptor<Pixel> descriptor(run.mode, call.mask != nullptr, call.tables);
    if (descriptor.row == nullptr) return kQX_UnimplementedMode;
    if (clears_alpha_outside(run.mode.xfer)) {
        if (const int code = clear_alpha_around(to, call.dst)) return code;
    }

    const auto drive = slot<SlotsOf<Pixel>.driver>();
    const M_LRect from =
        M_OffsetLRect(to, wrapping_difference(src_rect.left, dest_x), wrapping_difference(src_rect.top, dest_y));
    MaskRows<Pixel> mask(call.mask != nullptr ? *call.mask : QX_MaskWorld{}, static_cast<Pixel*>(run.scratch.mask_row));
    int code = kQX_NoError;
    for (std::int32_t y = to.top; y < to.bottom && code == kQX_NoError; ++y) {
        if (in_field(call.field, y)) {
            const Pixel* coverage = call.mask != nullptr ? mask.row(to.left, to.right, y) : nullptr;
            descriptor.mode.rand_seed = seed.value();
            code =
                drive(to.right - to.left, &descriptor, pixel_at<Pixel>(*call.src, from.left, from.top + (y - to.top)),
                      coverage, pixel_at<Pixel>(*call.dst, to.left, y),
                      static_cast<QX_ChannelOf<Pixel>*>(run.scratch.alpha_row));
        }
        if (code == kQX_NoError) code = report_progress(call.progress, y, to);
        seed.advance();
    }
    return code;
}

template int transfer_rows(const CompositeRun<QX_Pixel8>&, const M_LRect&, int, int);
template int transfer_rows(const CompositeRun<QX_Pixel16>&, const M_LRect&, int, int);
template int transfer_rows(const CompositeRun<QX_PixelFloat>&, const M_LRect&, int, int);

int clear_alpha_around(const M_LRect& rect, QX_LayerDef* world) {
    return QX_ClearAlphaExceptRect(nullptr, &rect, world);
}

}  // namespace qx
