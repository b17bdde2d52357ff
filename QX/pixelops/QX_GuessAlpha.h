// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// What alpha means in footage.
enum QX_AlphaKind : std::int32_t {
    kQX_AlphaStraight = 0,
    kQX_AlphaPremultiplied = 1,  ///< mixed with the colour of a matte
    kQX_AlphaUnknown = 2         ///< nothing in the frame tells it
};

/// Bytes that a message takes at most, with its zero.
inline constexpr int kQX_GuessMessageBytes = 256;

/// Guesses that from the pixels of an 8-bit world, whose depth is not asked. Runs on the calling thread, in one pass,
/// allocates nothing.
/// @param effect_ref  not read
/// @param out_kind    a QX_AlphaKind; unknown too for a world without pixels
/// @param out_matte   written for premultiplied pixels alone: the matte's colour, opaque
/// @return 0
QX_EXPORT int QX_GuessAlpha(void* effect_ref, const QX_LayerDef* world, std::int32_t* out_kind, QX_Pixel8* out_matte);
/// The same, with a message.
/// @param out_message  may be null; kQX_GuessMessageBytes, empty unless the guess failed
QX_EXPORT int QX_GuessAlphaMessage(void* effect_ref, const QX_LayerDef* world, std::int32_t* out_kind,
                                   QX_Pixel8* out_matte, char* out_message);
