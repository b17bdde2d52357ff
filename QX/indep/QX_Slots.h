// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_RoutineTypes.h"

/// The table of routines. Forwarders, the callback block and the acceleration layer read a slot at the moment of
/// the call, so a change takes effect at once. Filled by QX_Birth; a slot without a routine is null.
inline constexpr int kQX_SlotCount = 118;
QX_EXPORT extern void* QXp_G_OverFuncs[kQX_SlotCount];

/// Replaces a slot; null is stored as it stands. @return 0, or 3 for an index outside 1 to 117
QX_EXPORT int QX_SetOverrideFunc(int index, void* routine);

namespace qx {

/// Slots that the library's own code reads, as X(number, name, type).
#define QX_SLOTS(X)                                            \
    X(2, NNSample, PointSamplerFn<QX_Pixel8>)                  \
    X(3, SubpixelSample, PointSamplerFn<QX_Pixel8>)            \
    X(4, SubpixelSamplePremul, PointSamplerFn<QX_Pixel8>)      \
    X(5, AreaSample, PointSamplerFn<QX_Pixel8>)                \
    X(6, AreaSamplePremul, PointSamplerFn<QX_Pixel8>)          \
    X(23, CopyBitsDraft, CopyBitsFn)                           \
    X(24, CopyBitsHQ, CopyBitsFn)                              \
    X(25, CopyBitsHQPremul, CopyBitsFn)                        \
    X(31, TransferRect, TransferRectFn)                        \
    X(32, TransformWorld, TransformWorldFn)                    \
    X(35, BlackForward8, FilterFn<QX_Pixel8>)                  \
    X(36, BlackReverse8, FilterFn<QX_Pixel8>)                  \
    X(37, WhiteForward8, FilterFn<QX_Pixel8>)                  \
    X(38, WhiteReverse8, FilterFn<QX_Pixel8>)                  \
    X(39, GreyForward8, FilterFn<QX_Pixel8>)                   \
    X(40, GreyReverse8, FilterFn<QX_Pixel8>)                   \
    X(41, AlphaMerge8, MergeFn<QX_Pixel8>)                     \
    X(42, Iterate, IterateFn)                                  \
    X(43, IterateOrigin, IterateOriginFn)                      \
    X(44, IterateLUT, IterateLUTFn)                            \
    X(47, TransferRectPlus, TransferRectPlusFn)                \
    X(48, TransformWorldPlus, TransformWorldPlusFn)            \
    X(51, IterateOriginNoClip, IterateOriginFn)                \
    X(52, PremulRect, PremulRectFn)                            \
    X(53, IterateGeneric, IterateGenericFn)                    \
    X(57, SampleWeight, SampleWeightFn)                        \
    X(58, SubpixelTranslate, TranslateSamplerFn<QX_Pixel8>)    \
    X(60, SubpixelPlus, PlusSamplerFn<QX_Pixel8>)              \
    X(61, SubpixelNoClip, PointSamplerFn<QX_Pixel8>)           \
    X(63, NNSample16, PointSamplerFn<QX_Pixel16>)              \
    X(64, SubpixelSample16, PointSamplerFn<QX_Pixel16>)        \
    X(65, AreaSample16, PointSamplerFn<QX_Pixel16>)            \
    X(68, SubpixelTranslate16, TranslateSamplerFn<QX_Pixel16>) \
    X(70, SubpixelPlus16, PlusSamplerFn<QX_Pixel16>)           \
    X(71, SubpixelNoClip16, PointSamplerFn<QX_Pixel16>)        \
    X(72, BlackForward16, FilterFn<QX_Pixel16>)                \
    X(73, BlackReverse16, FilterFn<QX_Pixel16>)                \
    X(74, WhiteForward16, FilterFn<QX_Pixel16>)                \
    X(75, WhiteReverse16, FilterFn<QX_Pixel16>)                \
    X(76, GreyForward16, FilterFn<QX_Pixel16>)                 \
    X(77, GreyReverse16, FilterFn<QX_Pixel16>)                 \
    X(78, AlphaMerge16, MergeFn<QX_Pixel16>)                   \
    X(83, SubpixelNoClip4, FourSamplesFn)                      \
    X(84, SubpixelTranslate4, FourTranslateSamplesFn)          \
    X(86, SubpixelSpan, SpanSamplerFn<QX_Pixel8>)              \
    X(87, SubpixelSpan16, SpanSamplerFn<QX_Pixel16>)           \
    X(94, Rows8, RowLookupFn<QX_Pixel8>)                       \
    X(95, Rows8Linear, RowLookupFn<QX_Pixel8>)                 \
    X(96, Rows8Masked, RowLookupFn<QX_Pixel8>)                 \
    X(97, Rows8MaskedLinear, RowLookupFn<QX_Pixel8>)           \
    X(98, Rows16, RowLookupFn<QX_Pixel16>)                     \
    X(99, Rows16Linear, RowLookupFn<QX_Pixel16>)               \
    X(100, Rows16Masked, RowLookupFn<QX_Pixel16>)              \
    X(101, Rows16MaskedLinear, RowLookupFn<QX_Pixel16>)        \
    X(102, RowsFloat, RowLookupFn<QX_PixelFloat>)              \
    X(103, RowsFloatLinear, RowLookupFn<QX_PixelFloat>)        \
    X(104, RowsFloatMasked, RowLookupFn<QX_PixelFloat>)        \
    X(105, RowsFloatMaskedLinear, RowLookupFn<QX_PixelFloat>)  \
    X(106, BlackForwardFloat, FilterFn<QX_PixelFloat>)         \
    X(107, BlackReverseFloat, FilterFn<QX_PixelFloat>)         \
    X(108, WhiteForwardFloat, FilterFn<QX_PixelFloat>)         \
    X(109, WhiteReverseFloat, FilterFn<QX_PixelFloat>)         \
    X(110, GreyForwardFloat, FilterFn<QX_PixelFloat>)          \
    X(111, GreyReverseFloat, FilterFn<QX_PixelFloat>)          \
    X(112, AlphaMergeFloat, MergeFn<QX_PixelFloat>)            \
    X(115, RowDriver8, RowDriverFn<QX_Pixel8>)                 \
    X(116, RowDriver16, RowDriverFn<QX_Pixel16>)               \
    X(117, RowDriverFloat, RowDriverFn<QX_PixelFloat>)

enum class Slot : int {
#define X(number, name, type) name = number,
    QX_SLOTS(X)
#undef X
};

template <Slot S> struct SlotType;
#define X(number, name, type) \
    template <> struct SlotType<Slot::name> { using Fn = type; };
QX_SLOTS(X)
#undef X

/// A slot's routine as it stands in a table of slots now.
template <Slot S> typename SlotType<S>::Fn* slot(void* const* table = QXp_G_OverFuncs) {
    return reinterpret_cast<typename SlotType<S>::Fn*>(table[static_cast<int>(S)]);
}

/// Writes a slot; the compiler checks the routine's type.
template <Slot S> void set_slot(typename SlotType<S>::Fn* routine, void** table = QXp_G_OverFuncs) {
    table[static_cast<int>(S)] = reinterpret_cast<void*>(routine);
}

/// A run-time slot number read as a type, for the families that stand in a row of slots, depth by depth.
template <class Fn> Fn* slot_at(int number) { return reinterpret_cast<Fn*>(QXp_G_OverFuncs[number]); }

}  // namespace qx
