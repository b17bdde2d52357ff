// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_TransferRect.h"
#include "platform/M_Matrix.h"

/// Sub-frames of a moving layer, at most: the buffers of motion blur hold this many.
inline constexpr int kQX_MaxSubFrames = 256;

/// Places one world on another through a matrix, or through several that tell its motion while the shutter is open,
/// and composites it.
/// @param progress  may be null; its progress function (without one the abort function) is asked between rows
/// @param quality   0 nearest pixels, 1 bilinear, 2 and 3 bicubic; above 0 a layer that shrinks is averaged
/// @param flags     accepted and never read
/// @param field     0 all rows of the destination, 1 the even ones, 2 the odd ones
/// @param mode      transfer mode, opacity, seed and rgb_only
/// @param tables    null blends the stored values, else in linear light
/// @param mask      in destination coordinates; may be null
/// @param matrices  `num_matrices` in time order, at most 257. One, or several whose first and last agree, make a
///                  still layer. Two make 16 samples a pixel (8 in draft) on a straight line; n others make n - 1.
/// @param src2dst_matrix  true when they map the source to the destination, false for the other way
/// @param dest_rect  in destination coordinates; null is the whole destination
/// @return 0, also when nothing is to be drawn or the first matrix has no inverse; 3 for null or GPU worlds and for
///         different or unknown depths; 4 for missing memory; 5 for an unknown mode; 516 for too many matrices. A code
///         of the progress function ends after whole rows.
/// Runs on all processors where the acceleration layer is installed. Any number of calls at once on different
/// destinations. The source may not be the destination.
QX_EXPORT int QX_TransformWorld(const QX_ProgressInfo* progress, int quality, int flags, int field,
                                QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                                const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                                const M_Matrix3* matrices, int num_matrices, bool src2dst_matrix,
                                const M_LRect* dest_rect, QX_LayerDef* dst_world);
/// The routine behind QX_TransformWorld, on the calling thread.
QX_EXPORT int QX_TransformWorld_S(const QX_ProgressInfo* progress, int quality, int flags, int field,
                                  QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                                  const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                                  const M_Matrix3* matrices, int num_matrices, bool src2dst_matrix,
                                  const M_LRect* dest_rect, QX_LayerDef* dst_world);
/// With a scratch block of the caller's that has the buffers of motion blur and is as wide as `dest_rect`: any number
/// of calls run at once on different rows. A null block is the shared one.
QX_EXPORT int QX_TransformWorldPlus(const QX_ProgressInfo* progress, int quality, int flags, int field,
                                    QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                                    const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                                    QX_ScratchBlock* scratch, const M_Matrix3* matrices, int num_matrices,
                                    bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst_world);
