// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"

struct M_Matrix3;
struct QX_ChannelChunk;

/// Copies of a rectangle of one world to a rectangle of another. Null rectangles are the whole worlds; empty, inverted
/// ones and those outside their world do nothing and give 0. All run on the calling thread, and any number of them at
/// once on different destinations. GPU worlds are refused with 3.

/// Nearest pixels, between any two depths. Never polls. The exported name goes through the table of slots.
/// @return 0; 3 after a report for null worlds or pixels, unknown depths, and sizes that pass 32 bits
QX_EXPORT int QX_CopyBits_Draft(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                const M_LRect* src_rect, const M_LRect* dst_rect);
QX_EXPORT int QX_CopyBits_Draft_Static(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                       const M_LRect* src_rect, const M_LRect* dst_rect);

/// Bilinear samples, or area samples where either direction shrinks; both worlds of one depth. A copy without a change
/// of size is the draft one. A destination side must fit 16 signed bits. Asks the abort function every 64 rows; its
/// answer ends the copy.
QX_EXPORT int QX_CopyBits_HQ_Straight(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                      const M_LRect* src_rect, const M_LRect* dst_rect);
QX_EXPORT int QX_CopyBits_HQ_Straight_Static(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                             const M_LRect* src_rect, const M_LRect* dst_rect);
/// The same with the samplers of premultiplied 8-bit pixels, and for 8-bit worlds alone.
QX_EXPORT int QX_CopyBits_HQ_Premul(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                    const M_LRect* src_rect, const M_LRect* dst_rect);
QX_EXPORT int QX_CopyBits_HQ_Premul_Static(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                           const M_LRect* src_rect, const M_LRect* dst_rect);

/// Raw elements of two-dimensional chunks, whatever their type, nearest neighbour.
QX_EXPORT int QX_ChannelCopy(void* effect_ref, const QX_ChannelChunk* src_chunk, QX_ChannelChunk* dst_chunk,
                             const M_LRect* src_rect, const M_LRect* dst_rect);

/// Draws `src` into `dst` through a source-to-destination matrix with nearest pixels, between any two depths. Every
/// pixel of a row that is done is written, with transparent black where the source has none.
/// @param flag   quality, not read
/// @param param  field: 1 the even rows, 2 the odd ones, any other number all
/// @return 0, also for a matrix without an inverse; 3 after a report; the answer of the progress function
QX_EXPORT int QX_CopyBits3_LO_Straight(const QX_ProgressInfo* progress, QX_LayerDef* src, const M_Matrix3* matrix,
                                       int flag, int param, QX_LayerDef* dst);
