// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"

/// The record of routines that effect plug-ins are given: 69 fields the size of a pointer. The copy does not follow
/// later changes of the table of slots. Fields by name are in QX_CallbackFields.
struct QX_CallbackBlock {
    void* fields[69];
};
static_assert(sizeof(QX_CallbackBlock) == 69 * sizeof(void*));

/// Fills the whole block. The first call also fills a private table of the routines that are in no slot, without
/// protection: it belongs to the host's start.
/// @param quality  0 is draft, anything else best
/// @param flags    bit 0 set is straight alpha, clear is premultiplied
/// @return 0
QX_EXPORT int QX_GetCallbackBlock(int quality, unsigned char flags, QX_CallbackBlock* block);

/// Sets only the fields that depend on quality and alpha form. In premultiplied best form the two fields of 16-bit
/// sampling stay as they are: there is no premultiplied 16-bit sampling. @return 0
QX_EXPORT int QX_SetCallbackBlockQuality(int quality, unsigned char flags, QX_CallbackBlock* block);

/// Looks one routine up by its selector; one without a routine in this version stores null.
/// @param ref  not read
/// @return 0; 3 for a null `out`; 515 after a report, with null in `*out`, for a selector that is none
QX_EXPORT int QX_GetCallbackAddr(void* ref, int quality, unsigned char flags, int selector, void** out);

/// Positions of the fields.
enum QX_CallbackField : int {
    kQX_CB_reserved0,
    kQX_CB_subpixel_sample,
    kQX_CB_area_sample,
    kQX_CB_batch_sample,
    kQX_CB_reserved1,
    kQX_CB_composite_rect,
    kQX_CB_blend,
    kQX_CB_convolve,
    kQX_CB_copy,
    kQX_CB_fill,
    kQX_CB_gaussian_kernel,
    kQX_CB_iterate,
    kQX_CB_premultiply,
    kQX_CB_premultiply_color,
    kQX_CB_new_world,
    kQX_CB_dispose_world,
    kQX_CB_iterate_origin,
    kQX_CB_iterate_lut,
    kQX_CB_transfer_rect,
    kQX_CB_transform_world,
    kQX_CB_host_new_handle,
    kQX_CB_host_lock_handle,
    kQX_CB_host_unlock_handle,
    kQX_CB_host_dispose_handle,
    kQX_CB_get_callback_addr,
    kQX_CB_app,
    kQX_CB_ansi,          ///< 20 fields
    kQX_CB_colorCB = 46,  ///< 8 fields
    kQX_CB_get_platform_data = 54,
    kQX_CB_host_get_handle_size,
    kQX_CB_iterate_origin_non_clip_src,
    kQX_CB_iterate_generic,
    kQX_CB_host_resize_handle,
    kQX_CB_subpixel_sample16,
    kQX_CB_area_sample16,
    kQX_CB_fill16,
    kQX_CB_premultiply_color16,
    kQX_CB_iterate16,
    kQX_CB_iterate_origin16,
    kQX_CB_iterate_origin_non_clip_src16,
    kQX_CB_get_pixel_data8,
    kQX_CB_get_pixel_data16,
    kQX_CB_reserved2
};
