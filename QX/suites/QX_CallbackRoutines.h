// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_RoutineTypes.h"

/// What the callback block holds besides the table of routines.
namespace qx {

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

inline constexpr int kColourModels = 8;

/// The routines that stand in the block or behind a selector but in no slot, in the order of their private table.
/// Those whose family is still to come are null there.
enum class Private : signed char {
    none = -1,
    batch_sample,
    fill,
    fill16,
    new_world,
    dispose_world,
    transfer_rect,
    transform_world,
    get_callback_addr,
    app,
    get_platform_data,
    gaussian_kernel,
    gaussian_value,
    premultiply,
    premultiply_color,
    premultiply_color16,
    blend_straight,
    blend_premul,
    insert_planes,
    extract_planes,
    paint_spot,
    get_pixel_data8,
    get_pixel_data16,
    new_handle,
    lock_handle,
    unlock_handle,
    dispose_handle,
    get_handle_size,
    resize_handle,
    colour_straight,  ///< the first of kColourModels, as the next is
    colour_premul = colour_straight + kColourModels
};

/// Address of a routine; null for one still to come.
void* private_routine(Private routine);

}  // namespace qx
