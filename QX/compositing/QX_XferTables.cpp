// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_XferTables.h"

#include "QX/compositing/QX_XferPixelT.h"

using qx::xfer_pixel;
using qx::modes::Numbered;

#define QX_ENTRY_0(number, name) &xfer_pixel<Numbered<number>, D>,
#define QX_ENTRY_1(number, name) &xfer_pixel<Numbered<number>, D, D::Channel>,
#define QX_ENTRY_2(number, name) &xfer_pixel<Numbered<number>, D, D::Channel, D::Channel>,

// A depth's tables are the list of modes, three times; the last place is null.
#define D qx::Depth8
const QX_Xfer1<QX_Pixel8> QXp_G_Xfer1_table8[] = {QX_PIXEL_MODES(QX_ENTRY_0) nullptr};
const QX_Xfer1_Opacity<QX_Pixel8> QXp_G_Xfer1_Opacity_table8[] = {QX_PIXEL_MODES(QX_ENTRY_1) nullptr};
const QX_Xfer1_Opacity2<QX_Pixel8> QXp_G_Xfer1_Opacity2_table8[] = {QX_PIXEL_MODES(QX_ENTRY_2) nullptr};
#undef D
#define D qx::Depth16
const QX_Xfer1<QX_Pixel16> QXp_G_Xfer1_table16[] = {QX_PIXEL_MODES(QX_ENTRY_0) nullptr};
const QX_Xfer1_Opacity<QX_Pixel16> QXp_G_Xfer1_Opacity_table16[] = {QX_PIXEL_MODES(QX_ENTRY_1) nullptr};
const QX_Xfer1_Opacity2<QX_Pixel16> QXp_G_Xfer1_Opacity2_table16[] = {QX_PIXEL_MODES(QX_ENTRY_2) nullptr};
#undef D
#define D qx::DepthFloat
const QX_Xfer1<QX_PixelFloat> QXp_G_Xfer1_tableF[] = {QX_PIXEL_MODES(QX_ENTRY_0) nullptr};
const QX_Xfer1_Opacity<QX_PixelFloat> QXp_G_Xfer1_Opacity_tableF[] = {QX_PIXEL_MODES(QX_ENTRY_1) nullptr};
const QX_Xfer1_Opacity2<QX_PixelFloat> QXp_G_Xfer1_Opacity2_tableF[] = {QX_PIXEL_MODES(QX_ENTRY_2) nullptr};
#undef D

#define QX_GETTERS(suffix, Pixel)                                                                    \
    QX_Xfer1<Pixel> QX_Get_Xfer1_table##suffix(int xfer) { return QXp_G_Xfer1_table##suffix[xfer]; } \
    QX_Xfer1_Opacity<Pixel> QX_Get_Xfer1_Opacity_table##suffix(int xfer) {                           \
        return QXp_G_Xfer1_Opacity_table##suffix[xfer];                                              \
    }                                                                                                \
    QX_Xfer1_Opacity2<Pixel> QX_Get_Xfer1_Opacity2_table##suffix(int xfer) {                         \
        return QXp_G_Xfer1_Opacity2_table##suffix[xfer];                                             \
    }
QX_GETTERS(8, QX_Pixel8)
QX_GETTERS(16, QX_Pixel16)
QX_GETTERS(F, QX_PixelFloat)
