// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/world/QX_World.h"
#include "platform/GK_Blur.h"

/// `conv_flags` of the line blurs. Other bits do nothing.
inline constexpr std::uint32_t kQX_Blur_Alpha = 1, kQX_Blur_Red = 2, kQX_Blur_Green = 4, kQX_Blur_Blue = 8;
inline constexpr std::uint32_t kQX_Blur_AllChannels = 15;
inline constexpr std::uint32_t kQX_Blur_NormaliseEdges =
    16;  ///< what lies outside a line has no weight; else it is clear

/// Blur every line of `dst` from the line of `src` at the same place, by the origins of both. Lines are rows, or
/// columns of a world whose `vertical` flag is set; where the flags differ the picture is transposed. A blur of a
/// picture is two calls. Lines that lie beside the source become clear in all channels.
///
/// Colours are blurred as premultiplied ones: where `src_alpha` is straight, selected colours are multiplied by alpha
/// as they are read, and stay multiplied. A radius below 0 or NaN is 0, above 32767 it is 32767; R is the radius
/// rounded up.
///
/// They run on all processors, and return nothing: they throw a code as an int. 3 after a report for GPU worlds,
/// missing ones or pixels, unlike or unknown depths, with `dst` as it was; 4 when memory is short; the answer of the
/// abort function of `progress`, which the calling thread asks once a line. `src` and `dst` must not share pixels.
/// @param dst_alpha   not read
/// @param copy_lines  lines are copied before they are filtered; never shows

/// Weights are 255 at the centre and truncate(255 * QXp_GaussianValue(i / (radius + 1))) at distance i up to R. Sums of
/// 8 bits are integers; at 16 bits and float they are floats, in the order centre, one left, one right and on. Channels
/// that are not selected are those of the source as it is.
QX_EXPORT void QX_GaussianBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius,
                                 std::uint32_t conv_flags, int src_vertical, GK::AlphaType src_alpha, int dst_vertical,
                                 GK::AlphaType dst_alpha, bool copy_lines, QX_World* dst);

/// Passes of a box of 2 R + 1 pixels, whose ends count as much less as R is above the radius, in steps of 1/1024. Every
/// pass gives pixels of the worlds' depth, rounded to the nearest (halves to even) and limited to 0..1, floats too.
/// Channels that are not selected keep those of `dst`. Without passes lines that lie beside the source become clear.
QX_EXPORT void QX_BoxBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius,
                            std::uint32_t conv_flags, int iterations, int src_vertical, GK::AlphaType src_alpha,
                            int dst_vertical, GK::AlphaType dst_alpha, bool copy_lines, QX_World* dst);

/// Blurs that are no longer made: whatever they are called with, they do nothing. @return 5
QX_EXPORT int QX_FastBlur_Straight(...);
QX_EXPORT int QX_FastBlur_Premul(...);
