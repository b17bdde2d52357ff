// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Pixel.h"
#include "platform/M_Geometry.h"

class QX_EXPORT QX_World;
struct VPix;

/// The plain image record that crosses the boundary, also called QX_EffectWorld.
/// It belongs to whoever filled it; wrapping it in a world object never changes it.
struct QX_LayerDef {
    void* reserved0;
    void* reserved1;
    std::uint32_t world_flags;  ///< high byte: format code 0, 1, 2 for depth 8, 16, 32; bit 0: 16-bit
    void* data;                 ///< pixel (0, 0); null in a GPU world
    std::int32_t rowbytes;      ///< distance in bytes from one row to the next
    std::int32_t width, height;
    M_LRect extent_hint;           ///< the part that holds content, in the world's own coordinates
    VPix** platform_ref;           ///< the host's frame behind a GPU world, else null
    std::uint32_t ownership_mark;  ///< kQX_OwnedMark, kQX_DeadMark or 0
    QX_World* world;               ///< the object that owns the pixels, or null
    std::uint32_t pix_aspect_num, pix_aspect_den;
    void* reserved2;
    std::int32_t origin_x, origin_y;
    std::uint16_t reserved3, reserved4;  ///< carried, never interpreted
    std::uint32_t reserved5;
};
using QX_EffectWorld = QX_LayerDef;

inline constexpr std::uint32_t kQX_OwnedMark = 0xAAAABBBB;  ///< filled by QX_NewEffectWorld
inline constexpr std::uint32_t kQX_DeadMark = 0xDEAD;       ///< the world object is gone

static_assert(sizeof(QX_LayerDef) == 120);
static_assert(offsetof(QX_LayerDef, world_flags) == 16 && offsetof(QX_LayerDef, data) == 24);
static_assert(offsetof(QX_LayerDef, rowbytes) == 32 && offsetof(QX_LayerDef, width) == 36);
static_assert(offsetof(QX_LayerDef, height) == 40 && offsetof(QX_LayerDef, extent_hint) == 44);
static_assert(offsetof(QX_LayerDef, platform_ref) == 64 && offsetof(QX_LayerDef, ownership_mark) == 72);
static_assert(offsetof(QX_LayerDef, world) == 80 && offsetof(QX_LayerDef, pix_aspect_num) == 88);
static_assert(offsetof(QX_LayerDef, reserved2) == 96 && offsetof(QX_LayerDef, origin_x) == 104);
static_assert(offsetof(QX_LayerDef, reserved3) == 112 && offsetof(QX_LayerDef, reserved5) == 116);

using QX_AbortFunc = int (*)(void* refcon);
using QX_ProgressFunc = int (*)(void* refcon, std::int32_t count, std::int32_t total);

/// Who listens to a routine's progress. A null record, or null callbacks, mean that nobody does.
/// A non-zero answer of a callback ends the work and becomes its result.
struct QX_ProgressInfo {
    void* refcon;
    QX_AbortFunc abort_func;
    QX_ProgressFunc progress_func;
};
static_assert(sizeof(QX_ProgressInfo) == 24 && offsetof(QX_ProgressInfo, abort_func) == 8);

/// The effect-call context that the host owns. The library reads the three named fields and copies the
/// record whole when it runs on several threads; the first three fields behind `effect_ref` have the
/// form of a QX_ProgressInfo.
struct QX_InData {
    QX_AbortFunc abort;        ///< called with `effect_ref`
    QX_ProgressFunc progress;  ///< called with `effect_ref`
    void* host_leading[10];
    void* effect_ref;
    void* host_trailing[19];
};
static_assert(offsetof(QX_InData, abort) < offsetof(QX_InData, progress) && offsetof(QX_InData, effect_ref) == 96);

/// The mask of a transfer: the mask's world, and where its left top corner lies in the destination.
struct QX_MaskWorld {
    QX_LayerDef world;
    std::int32_t x, y;
    std::uint32_t flags;  ///< QX_MaskKind
};
static_assert(offsetof(QX_MaskWorld, x) == 120 && offsetof(QX_MaskWorld, flags) == 128);

/// Rows of the destination that a transfer or transform changes.
enum QX_Field : std::int32_t { kQX_AllRows = 0, kQX_EvenRows = 1, kQX_OddRows = 2 };
/// How a layer is sampled; from bilinear on, one that shrinks is averaged.
enum QX_Quality : std::int32_t { kQX_QualityDraft = 0, kQX_QualityBilinear = 1, kQX_QualityBicubic = 2 };
inline constexpr std::int32_t kQX_NoFlags = 0;
inline constexpr char kQX_Reserved = 0;     ///< what an argument is to be that means nothing yet
inline constexpr char kQX_ClearPixels = 1;  ///< of a new world: all of it transparent black

enum QX_MaskKind : std::uint32_t {
    kQX_MaskAlpha = 0,         ///< the mask's alpha; clips
    kQX_MaskInverseAlpha = 1,  ///< its complement; outside the mask coverage is full
    kQX_MaskLuma = 2,          ///< luma times alpha; clips
    kQX_MaskInverseLuma = 3    ///< its complement; outside the mask coverage is full
};
