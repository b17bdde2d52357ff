// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositeMode.h"

#include <cmath>

#include "QX/indep/QX_DepthSteps.h"

namespace {

/// The finer field that can be believed: a record of old code filled in only the 8-bit one.
float opacity_of(const QX_CompositeMode& mode) {
    const float coarse = static_cast<float>(mode.opacity) / 255.0f;
    const float fine = static_cast<float>(mode.opacity16) * qx::kRow16ToFloat;
    return static_cast<double>(std::fabs(coarse - fine)) >= qx::kOpacityStep ? coarse : fine;
}

template <class Pixel> QX_ChannelOf<Pixel> opacity_at(float opacity) {
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return opacity;
    } else {
        return qx::alpha_from_float<Pixel>(opacity);
    }
}

}  // namespace

QX_CompositeModePlus::QX_CompositeModePlus(const QX_CompositeMode& mode)
    : xfer(mode.xfer), rand_seed(mode.rand_seed), rgb_only(mode.rgb_only != 0), opacity(opacity_of(mode)) {}

QX_CompositeModePlus::QX_CompositeModePlus(int xfer_, float opacity_, const QX_LinearBlendingTables* tables_,
                                           bool rgb_only_, int rand_seed_)
    : xfer(xfer_), rand_seed(rand_seed_), rgb_only(rgb_only_), tables(tables_), opacity(opacity_) {}

template <class Pixel>
QX_BlendingMode<Pixel>::QX_BlendingMode(const QX_CompositeModePlus& plus)
    : xfer(plus.xfer), rand_seed(plus.rand_seed), opacity(opacity_at<Pixel>(plus.opacity)), rgb_only(plus.rgb_only) {}

template struct QX_BlendingMode<QX_Pixel8>;
template struct QX_BlendingMode<QX_Pixel16>;
template struct QX_BlendingMode<QX_PixelFloat>;

int QX_GetTransferFlags(int xfer) {
    switch (xfer) {
        case xfer_replace:
        case xfer_copy:
        case xfer_behind:
        case xfer_over:
        case xfer_add:
        case xfer_multiply:
        case xfer_screen:
        case xfer_overlay:
        case xfer_alpha_add:
        case xfer_exclusion:
        case xfer_subtract:
        case xfer_divide:
            return 1;
        default:
            return xfer >= xfer_hard_light && xfer <= xfer_luminosity ? 1 : 0;
    }
}
