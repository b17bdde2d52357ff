// SPDX-License-Identifier: Apache-2.0
// Against a colour: one text for the three depths, and for colours of the three.
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_MatteKernels.h"
#include "QX/pixelops/QX_Premul.h"
#include "QX/pixelops/QX_PremulRows.h"

namespace {

const qx::MatteKernels* kernels = &qx::plain::matte_kernels;

template <class Pixel>
int matte_rows(void* effect_ref, const QX_LayerDef& src, const Pixel& colour, bool forward, const M_LRect* rect,
               const QX_LayerDef& dst) {
    const M_LRect in_dst = qx::clip_to(dst, rect), area = qx::clip_to(src, &in_dst);
    const qx::MatteRows<Pixel>& rows = kernels->of<Pixel>();
    const auto row = forward ? rows.forward : rows.back;
    const auto columns = static_cast<std::int32_t>(qx::columns_of(area));
    return qx::run_rows(qx::slot<qx::Slot::IterateGeneric>(), effect_ref, area, [&](std::int32_t y) {
        row(columns, qx::pixel_at<Pixel>(src, area.left, y), colour, qx::pixel_at<Pixel>(dst, area.left, y));
    });
}

struct Texts {
    const char *same_depth, *unknown_depth;
};

template <class Colour>
int premul_colour(const Texts& texts, void* effect_ref, QX_LayerDef* src, const Colour* colour, bool forward,
                  const M_LRect* rect, QX_LayerDef* dst) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(qx::Place::premul_colour);
    if (src == nullptr || src->data == nullptr || dst == nullptr || dst->data == nullptr) {
        return qx::report_bad_parameter(qx::Place::missing_pixels);
    }
    const int depth = QXp_WorldDepth(src);
    if (const int code =
            qx::must_have_depth(QXp_WorldDepth(dst), depth, "source", qx::Place::premul_colour, texts.same_depth)) {
        return code;
    }
    return qx::with_depth(
        *dst, qx::Place::premul_colour,
        [&]<class Pixel>() {
            return matte_rows(effect_ref, *src, qx::colour_argument<Pixel>(colour), forward, rect, *dst);
        },
        texts.unknown_depth);
}

}  // namespace

void qx::choose_matte_kernels(Level level) { kernels = &matte_kernels_of(level); }

int QX_PremulColorRect(void* effect_ref, QX_LayerDef* src, const QX_Pixel8* colour, bool forward, const M_LRect* rect,
                       QX_LayerDef* dst) {
    constexpr Texts texts{"worlds must be same bitdepth in QX_PremulColorRect()",
                          "Unknown world bitdepth in QX_PremulColorRect"};
    return premul_colour(texts, effect_ref, src, colour, forward, rect, dst);
}

int QX_PremulColorRect16(void* effect_ref, QX_LayerDef* src, const QX_Pixel16* colour, bool forward,
                         const M_LRect* rect, QX_LayerDef* dst) {
    constexpr Texts texts{"worlds must be same bitdepth in QX_PremulColorRect16()",
                          "Unknown world bitdepth in QX_PremulColorRect16"};
    return premul_colour(texts, effect_ref, src, colour, forward, rect, dst);
}

int QX_PremulColorRectFloat(void* effect_ref, QX_LayerDef* src, const QX_PixelFloat* colour, bool forward,
                            const M_LRect* rect, QX_LayerDef* dst) {
    // Kept: the first text names the routine of 16 bits.
    constexpr Texts texts{"worlds must be same bitdepth in QX_PremulColorRect16()",
                          "Unknown world bitdepth in QX_PremulColorRectFloat"};
    return premul_colour(texts, effect_ref, src, colour, forward, rect, dst);
}

int QX_PremulColor(void* effect_ref, QX_LayerDef* src, const QX_Pixel8* colour, bool forward, QX_LayerDef* dst) {
    return QX_PremulColorRect(effect_ref, src, colour, forward, nullptr, dst);
}

int QX_PremulColor16(void* effect_ref, QX_LayerDef* src, const QX_Pixel16* colour, bool forward, QX_LayerDef* dst) {
    return QX_PremulColorRect16(effect_ref, src, colour, forward, nullptr, dst);
}

int QX_PremulColorFloat(void* effect_ref, QX_LayerDef* src, const QX_PixelFloat* colour, bool forward,
                        QX_LayerDef* dst) {
    return QX_PremulColorRectFloat(effect_ref, src, colour, forward, nullptr, dst);
}
