// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_RoutineTypes.h"

/// What the callback block and the suites hold besides the table of routines.
namespace qx {

/// "Invalid parameter, effect world cannot be null." @return 3
int report_null_world();

/// Takes any arguments and refuses. @return 3
int batch_sample_stub(...);

/// @param flags  bit 0 asks for a cleared world, bit 1 for depth 16
int new_world_callback(void* ref, int width, int height, int flags, QX_LayerDef* world);
int dispose_world_callback(void* ref, QX_LayerDef* world);

/// @param ref  begins with a QX_ProgressInfo, or is null
int transfer_rect_callback(void* ref, int quality, int flags, int field, const M_LRect* src_rect, QX_LayerDef* src,
                           const QX_CompositeMode* mode, const QX_MaskWorld* mask, int dest_x, int dest_y,
                           QX_LayerDef* dst);
int transform_world_callback(void* ref, int quality, int flags, int field, QX_LayerDef* src,
                             const QX_CompositeMode* mode, const QX_MaskWorld* mask, const M_Matrix3* matrices,
                             int num_matrices, bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst);

/// Kept: gives 516 after a report also where it has answered.
/// @param selector  0 stores the main window's handle, of which this host has none
int platform_data_callback(void* ref, int selector, void** out);

inline constexpr int kAnsiCount = 20;
/// The mathematics and text functions in the order of the block; the last one is null.
void* const* ansi_block();

/// The colour models of one form in the order of the block.
#define QX_COLOUR_ROUTINES(X, form, Form)    \
    X(rgb_to_hls_##form, QX_RGBtoHLS_##Form) \
    X(hls_to_rgb_##form, QX_HLStoRGB_##Form) \
    X(rgb_to_yiq_##form, QX_RGBtoYIQ_##Form) \
    X(yiq_to_rgb_##form, QX_YIQtoRGB_##Form) \
    X(luminance_##form, QX_Luminance_##Form) \
    X(hue_##form, QX_Hue_##Form)             \
    X(lightness_##form, QX_Lightness_##Form) \
    X(saturation_##form, QX_Saturation_##Form)

/// The routines that stand in the block, behind a selector or in a suite but in no slot, as X(name, routine).
#define QX_PRIVATE_ROUTINES(X)                                      \
    X(batch_sample, batch_sample_stub)                              \
    X(fill, QX_Fill)                                                \
    X(fill16, QX_Fill16)                                            \
    X(new_world, new_world_callback)                                \
    X(dispose_world, dispose_world_callback)                        \
    X(transfer_rect, transfer_rect_callback)                        \
    X(transform_world, transform_world_callback)                    \
    X(get_callback_addr, QX_GetCallbackAddr)                        \
    X(app, QX_AppCallback)                                          \
    X(get_platform_data, platform_data_callback)                    \
    X(gaussian_kernel, QX_GaussianKernel)                           \
    X(gaussian_value, QXp_GaussianValue)                            \
    X(premultiply, QX_Premul)                                       \
    X(premultiply_color, QX_PremulColor)                            \
    X(premultiply_color16, QX_PremulColor16)                        \
    X(blend_straight, QX_Blend_Straight)                            \
    X(blend_premul, QX_Blend_Premul)                                \
    X(insert_planes, QX_InsertPlanes)                               \
    X(extract_planes, QX_ExtractPlanes)                             \
    X(paint_spot, QX_PaintSpot)                                     \
    X(get_pixel_data8, QX_GetPixelData8)                            \
    X(get_pixel_data16, QX_GetPixelData16)                          \
    X(get_pixel_data_float, QX_GetPixelDataFloat)                   \
    X(get_pixel_data_float_gpu, QX_GetPixelDataFloatGPU)            \
    X(fill_float, QX_FillFloat)                                     \
    X(premultiply_color_float, QX_PremulColorFloat)                 \
    X(nn_sample_float, QX_NNSampleFloat)                            \
    X(subpixel_sample_float, QX_SubpixelBilinearFloat)              \
    X(area_sample_float, QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>) \
    X(processor_flag0, qx::processor_flag0)                         \
    X(processor_flag1, qx::processor_flag1)                         \
    X(processor_flag2, qx::processor_flag2)                         \
    X(processor_flag3, qx::processor_flag3)                         \
    X(new_world_by_format, qx::new_world_by_format)                 \
    X(pixel_format_of_world, qx::pixel_format_of_world)             \
    X(new_handle, qx::new_handle)                                   \
    X(lock_handle, qx::lock_handle)                                 \
    X(unlock_handle, qx::unlock_handle)                             \
    X(dispose_handle, qx::dispose_handle)                           \
    X(get_handle_size, handle_size)                                 \
    X(resize_handle, qx::resize_handle)                             \
    QX_COLOUR_ROUTINES(X, straight, Straight)                       \
    QX_COLOUR_ROUTINES(X, straight16, Straight16)                   \
    QX_COLOUR_ROUTINES(X, straight_float, StraightFloat)            \
    QX_COLOUR_ROUTINES(X, premul, Premul)

enum class Private : signed char {
    none = -1,
#define X(name, ...) name,
    QX_PRIVATE_ROUTINES(X)
#undef X
};

/// Address of a routine; not for `none`.
void* private_routine(Private routine);

}  // namespace qx
