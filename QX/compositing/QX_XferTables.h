// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeMode.h"

/// The transfer modes as functions of one pixel: `dst` is changed in place. Alpha is the source's, times one or two
/// opacities on the scale of the depth. With tables the blend happens in linear light.
template <class Pixel> using QX_Xfer1 = void (*)(const Pixel* src, const QX_LinearBlendingTables* tables, Pixel* dst);
template <class Pixel>
using QX_Xfer1_Opacity = void (*)(const Pixel* src, const QX_LinearBlendingTables* tables, QX_ChannelOf<Pixel> opacity,
                                  Pixel* dst);
template <class Pixel>
using QX_Xfer1_Opacity2 = void (*)(const Pixel* src, const QX_LinearBlendingTables* tables, QX_ChannelOf<Pixel> opacity,
                                   QX_ChannelOf<Pixel> opacity2, Pixel* dst);

/// Modes 0 to 40 in their places; the last is null.
inline constexpr int kQX_XferTableSize = 42;
#define QX_XFER_TABLE(suffix, Pixel)                                                                       \
    QX_EXPORT extern const QX_Xfer1<Pixel> QXp_G_Xfer1_table##suffix[kQX_XferTableSize];                   \
    QX_EXPORT extern const QX_Xfer1_Opacity<Pixel> QXp_G_Xfer1_Opacity_table##suffix[kQX_XferTableSize];   \
    QX_EXPORT extern const QX_Xfer1_Opacity2<Pixel> QXp_G_Xfer1_Opacity2_table##suffix[kQX_XferTableSize]; \
    QX_EXPORT QX_Xfer1<Pixel> QX_Get_Xfer1_table##suffix(int xfer);                                        \
    QX_EXPORT QX_Xfer1_Opacity<Pixel> QX_Get_Xfer1_Opacity_table##suffix(int xfer);                        \
    QX_EXPORT QX_Xfer1_Opacity2<Pixel> QX_Get_Xfer1_Opacity2_table##suffix(int xfer);
/// The getters read the table without a range check: `xfer` is 0 to 41.
QX_XFER_TABLE(8, QX_Pixel8)
QX_XFER_TABLE(16, QX_Pixel16)
QX_XFER_TABLE(F, QX_PixelFloat)
#undef QX_XFER_TABLE
