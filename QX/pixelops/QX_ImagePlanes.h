// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"
#include "platform/TK_Memory.h"

/// Channels of 8-bit worlds as rows of their own.
enum QX_PlaneMask : std::uint32_t { kQX_PlaneAlpha = 1, kQX_PlaneRed = 2, kQX_PlaneGreen = 4, kQX_PlaneBlue = 8 };

/// Puts the channels of a mask, pixel by pixel in the order alpha, red, green, blue, into a new handle, which is the
/// caller's. Rows have room for eight pixels more.
/// @return 0; 3 after a report; 4 when memory is short
QX_EXPORT int QX_ExtractPlanes(void* effect_ref, const QX_LayerDef* world, std::uint32_t plane_mask, TK_Handle* handle,
                               std::int32_t* rowbytes);
/// The way back: the other channels stay. @return 0, or 3 after a report
QX_EXPORT int QX_InsertPlanes(void* effect_ref, TK_Handle handle, std::int32_t rowbytes, std::uint32_t plane_mask,
                              QX_LayerDef* world);

/// One channel of interleaved samples, every `step` elements, into consecutive ones. Strides are in elements, positions
/// in pixels. Exist for unsigned 8 and 16 bits and float.
template <class T>
QX_EXPORT void QX_Deinterleave1(const T* src, int step, int src_row, int dst_row, M_Vector2T<int> size,
                                M_Vector2T<int> src_pos, M_Vector2T<int> dst_pos, T* dst);
/// Consecutive samples into every fourth element; what lies between stays.
template <class T>
QX_EXPORT void QX_Interleave1to4(const T* src, int src_row, int dst_row, M_Vector2T<int> size, M_Vector2T<int> src_pos,
                                 M_Vector2T<int> dst_pos, T* dst);

#define QX_PLANE_ROUTINES(T)                                                                                         \
    extern template void QX_Deinterleave1<T>(const T*, int, int, int, M_Vector2T<int>, M_Vector2T<int>,              \
                                             M_Vector2T<int>, T*);                                                   \
    extern template void QX_Interleave1to4<T>(const T*, int, int, M_Vector2T<int>, M_Vector2T<int>, M_Vector2T<int>, \
                                              T*);
QX_PLANE_ROUTINES(std::uint8_t)
QX_PLANE_ROUTINES(std::uint16_t)
QX_PLANE_ROUTINES(float)
#undef QX_PLANE_ROUTINES
