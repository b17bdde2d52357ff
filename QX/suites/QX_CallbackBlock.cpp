// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_CallbackBlock.h"

#include <algorithm>

#include "QX/suites/QX_CallbackPick.h"

namespace {

using qx::Private;
using qx::Slot;
namespace picks = qx::picks;

struct Field {
    int index;
    qx::Pick pick;
};

/// The same at any quality.
constexpr Field kFixedFields[] = {
    {kQX_CB_reserved0, Slot::None0},
    {kQX_CB_batch_sample, Private::batch_sample},
    {kQX_CB_reserved1, Slot::None1},
    {kQX_CB_convolve, Slot::Convolve},
    {kQX_CB_fill, Private::fill},
    {kQX_CB_gaussian_kernel, Private::gaussian_kernel},
    {kQX_CB_iterate, Slot::Iterate},
    {kQX_CB_premultiply, Private::premultiply},
    {kQX_CB_premultiply_color, Private::premultiply_color},
    {kQX_CB_new_world, Private::new_world},
    {kQX_CB_dispose_world, Private::dispose_world},
    {kQX_CB_iterate_origin, Slot::IterateOrigin},
    {kQX_CB_iterate_lut, Slot::IterateLUT},
    {kQX_CB_transfer_rect, Private::transfer_rect},
    {kQX_CB_transform_world, Private::transform_world},
    {kQX_CB_host_new_handle, Private::new_handle},
    {kQX_CB_host_lock_handle, Private::lock_handle},
    {kQX_CB_host_unlock_handle, Private::unlock_handle},
    {kQX_CB_host_dispose_handle, Private::dispose_handle},
    {kQX_CB_get_callback_addr, Private::get_callback_addr},
    {kQX_CB_app, Private::app},
    {kQX_CB_get_platform_data, Private::get_platform_data},
    {kQX_CB_host_get_handle_size, Private::get_handle_size},
    {kQX_CB_iterate_origin_non_clip_src, Slot::IterateOriginNoClip},
    {kQX_CB_iterate_generic, Slot::IterateGeneric},
    {kQX_CB_host_resize_handle, Private::resize_handle},
    {kQX_CB_fill16, Private::fill16},
    {kQX_CB_premultiply_color16, Private::premultiply_color16},
    {kQX_CB_iterate16, Slot::Iterate},
    {kQX_CB_iterate_origin16, Slot::IterateOrigin},
    {kQX_CB_iterate_origin_non_clip_src16, Slot::IterateOriginNoClip},
    {kQX_CB_get_pixel_data8, Private::get_pixel_data8},
    {kQX_CB_get_pixel_data16, Private::get_pixel_data16},
};

constexpr Field kQualityFields[] = {
    {kQX_CB_subpixel_sample, picks::subpixel_sample},
    {kQX_CB_area_sample, picks::area_sample},
    {kQX_CB_blend, picks::blend},
    {kQX_CB_copy, picks::copy},
    {kQX_CB_composite_rect, picks::composite_rect},
    {kQX_CB_colorCB + 0, picks::colour(0)},
    {kQX_CB_colorCB + 1, picks::colour(1)},
    {kQX_CB_colorCB + 2, picks::colour(2)},
    {kQX_CB_colorCB + 3, picks::colour(3)},
    {kQX_CB_colorCB + 4, picks::colour(4)},
    {kQX_CB_colorCB + 5, picks::colour(5)},
    {kQX_CB_colorCB + 6, picks::colour(6)},
    {kQX_CB_colorCB + 7, picks::colour(7)},
};

/// Kept: 16-bit sampling has no premultiplied form, and in that form at best quality these stay as they are.
constexpr Field kSampleFields16[] = {
    {kQX_CB_subpixel_sample16, picks::subpixel_sample16},
    {kQX_CB_area_sample16, picks::area_sample16},
};

template <std::size_t N>
void store(const Field (&fields)[N], int quality, unsigned char flags, QX_CallbackBlock& block) {
    for (const Field& field : fields) block.fields[field.index] = field.pick.at(quality, flags).address();
}

}  // namespace

int QX_SetCallbackBlockQuality(int quality, unsigned char flags, QX_CallbackBlock* block) {
    const bool premul_best = quality != 0 && (flags & 1) == 0;
    store(kQualityFields, quality, flags, *block);
    if (!premul_best) store(kSampleFields16, quality, flags, *block);
    return 0;
}

int QX_GetCallbackBlock(int quality, unsigned char flags, QX_CallbackBlock* block) {
    *block = {};
    QX_SetCallbackBlockQuality(quality, flags, block);
    store(kFixedFields, quality, flags, *block);
    std::copy_n(qx::ansi_block(), qx::kAnsiCount, block->fields + kQX_CB_ansi);
    return 0;
}
