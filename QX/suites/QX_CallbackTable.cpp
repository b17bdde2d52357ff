// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdio>
#include <cstring>

#include "QX/compositing/QX_Blend.h"
#include "QX/drawing/QX_Drawing.h"
#include "QX/filters/QX_GaussianKernel.h"
#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_ColourModels.h"
#include "QX/pixelops/QX_Fill.h"
#include "QX/pixelops/QX_ImagePlanes.h"
#include "QX/pixelops/QX_Premul.h"
#include "QX/suites/QX_CallbackBlock.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/suites/QX_General.h"
#include "QX/world/QX_PixelData.h"
#include "platform/M_Tables.h"

namespace qx {

namespace {

template <class Routine> void* address(Routine* routine) { return reinterpret_cast<void*>(routine); }
/// Picks the form in double of an overloaded function.
void* unary(double (*routine)(double)) { return address(routine); }
void* binary(double (*routine)(double, double)) { return address(routine); }

struct AnsiBlock {
    void* routine[kAnsiCount] = {
        unary(&::atan),      binary(&::atan2),   unary(&::ceil),    unary(&::cos),     unary(&::exp),
        unary(&::fabs),      unary(&::floor),    binary(&::M_fmod), binary(&QX_Hypot), unary(&::log),
        unary(&::log10),     binary(&::pow),     unary(&::sin),     unary(&::sqrt),    unary(&::tan),
        address(&::sprintf), address(&::strcpy), unary(&::asin),    unary(&::acos),    nullptr,
    };
};

/// The colour models in the order of the block, straight and premultiplied.
#define QX_COLOUR_MODELS(Form)                                                                    \
    {                                                                                             \
        address(&QX_RGBtoHLS_##Form), address(&QX_HLStoRGB_##Form), address(&QX_RGBtoYIQ_##Form), \
            address(&QX_YIQtoRGB_##Form), address(&QX_Luminance_##Form), address(&QX_Hue_##Form), \
            address(&QX_Lightness_##Form), address(&QX_Saturation_##Form)                         \
    }
void* colour_model(int i) {
    void* const models[2][kColourModels] = {QX_COLOUR_MODELS(Straight), QX_COLOUR_MODELS(Premul)};
    return models[i / kColourModels][i % kColourModels];
}

}  // namespace

void* const* ansi_block() {
    static const AnsiBlock block;
    return block.routine;
}

void* private_routine(Private routine) {
    if (routine >= Private::colour_straight) {
        return colour_model(static_cast<int>(routine) - static_cast<int>(Private::colour_straight));
    }
    switch (routine) {
        case Private::batch_sample:
            return address(&batch_sample_stub);
        case Private::fill:
            return address(&QX_Fill);
        case Private::fill16:
            return address(&QX_Fill16);
        case Private::new_world:
            return address(&new_world_callback);
        case Private::dispose_world:
            return address(&dispose_world_callback);
        case Private::transfer_rect:
            return address(&transfer_rect_callback);
        case Private::transform_world:
            return address(&transform_world_callback);
        case Private::get_callback_addr:
            return address(&QX_GetCallbackAddr);
        case Private::app:
            return address(&QX_AppCallback);
        case Private::get_platform_data:
            return address(&platform_data_callback);
        case Private::gaussian_kernel:
            return address(&QX_GaussianKernel);
        case Private::gaussian_value:
            return address(&QXp_GaussianValue);
        case Private::premultiply:
            return address(&QX_Premul);
        case Private::premultiply_color:
            return address(&QX_PremulColor);
        case Private::premultiply_color16:
            return address(&QX_PremulColor16);
        case Private::blend_straight:
            return address(&QX_Blend_Straight);
        case Private::blend_premul:
            return address(&QX_Blend_Premul);
        case Private::insert_planes:
            return address(&QX_InsertPlanes);
        case Private::extract_planes:
            return address(&QX_ExtractPlanes);
        case Private::paint_spot:
            return address(&QX_PaintSpot);
        case Private::get_pixel_data8:
            return address(&QX_GetPixelData8);
        case Private::get_pixel_data16:
            return address(&QX_GetPixelData16);
        default:
            return nullptr;
    }
}

}  // namespace qx
