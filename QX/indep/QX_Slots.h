// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Places.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "platform/TK_Report.h"

/// The table of routines. Forwarders, the callback block and the acceleration layer read a slot at the moment of
/// the call, so a change takes effect at once. Filled by QX_Birth; a slot without a routine is null.
inline constexpr int kQX_SlotCount = 118;
QX_EXPORT extern void* QXp_G_OverFuncs[kQX_SlotCount];

/// Replaces a slot; null is stored as it stands. @return 0, or 3 for an index outside 1 to 117
QX_EXPORT int QX_SetOverrideFunc(int index, void* routine);

namespace qx {

/// What a slot holds that is null for good, and is kept for the others' positions: numbers that never had a routine
/// (None...), and rows of batch sampling, which nothing calls any more (OldBatch...). Besides these, null for good are
/// in the callback block its fields of slots 0 and 1, the 20th of mathematics, the last, and 16-bit sampling of
/// premultiplied pixels at best quality, which there is none of; and in the suites the four entries of batch sampling.
using NoRoutine = void();

/// All slots, as X(number, name, type): the one place where their numbers stand.
// clang-format off
#define QX_SLOTS(X)                                            \
    X(0, None0, NoRoutine)                                     \
    X(1, None1, NoRoutine)                                     \
    X(2, NNSample, PointSamplerFn<QX_Pixel8>)                  \
    X(3, SubpixelSample, PointSamplerFn<QX_Pixel8>)            \
    X(4, SubpixelSamplePremul, PointSamplerFn<QX_Pixel8>)      \
    X(5, AreaSample, PointSamplerFn<QX_Pixel8>)                \
    X(6, AreaSamplePremul, PointSamplerFn<QX_Pixel8>)          \
    X(7, CompositeRectDraft, CompositeRectFn)                  \
    X(8, CompositeRectDraftPremul, CompositeRectFn)            \
    X(9, CompositeRectBest, CompositeRectFn)                   \
    X(10, CompositeRectBestPremul, CompositeRectFn)            \
    X(11, None11, NoRoutine)                                   \
    X(12, None12, NoRoutine)                                   \
    X(13, None13, NoRoutine)                                   \
    X(14, None14, NoRoutine)                                   \
    X(15, None15, NoRoutine)                                   \
    X(16, None16, NoRoutine)                                   \
    X(17, OldBatch17, NoRoutine)                               \
    X(18, OldBatch18, NoRoutine)                               \
    X(19, OldBatch19, NoRoutine)                               \
    X(20, OldBatch20, NoRoutine)                               \
    X(21, OldBatch21, NoRoutine)                               \
    X(22, OldBatch22, NoRoutine)                               \
    X(23, CopyBitsDraft, CopyBitsFn)                           \
    X(24, CopyBitsHQ, CopyBitsFn)                              \
    X(25, CopyBitsHQPremul, CopyBitsFn)                        \
    X(26, FastBlur, FastBlurFn)                                \
    X(27, FastBlurPremul, FastBlurFn)                          \
    X(28, Convolve, ConvolveFn)                                \
    X(29, None29, NoRoutine)                                   \
    X(30, None30, NoRoutine)                                   \
    X(31, TransferRect, TransferRectFn)                        \
    X(32, TransformWorld, TransformWorldFn)                    \
    X(33, None33, NoRoutine)                                   \
    X(34, None34, NoRoutine)                                   \
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
    X(45, OpenDestination, OpenDestinationFn)                  \
    X(46, CloseDestination, CloseDestinationFn)                \
    X(47, TransferRectPlus, TransferRectPlusFn)                \
    X(48, TransformWorldPlus, TransformWorldPlusFn)            \
    X(49, None49, NoRoutine)                                   \
    X(50, None50, NoRoutine)                                   \
    X(51, IterateOriginNoClip, IterateOriginFn)                \
    X(52, PremulRect, PremulRectFn)                            \
    X(53, IterateGeneric, IterateGenericFn)                    \
    X(54, BoxBlurUnoScan, UnoScanFn<std::uint8_t>)             \
    X(55, GBlurUnoScan, UnoScanFn<std::uint8_t>)               \
    X(56, None56, NoRoutine)                                   \
    X(57, SampleWeight, SampleWeightFn)                        \
    X(58, SubpixelTranslate, TranslateSamplerFn<QX_Pixel8>)    \
    X(59, None59, NoRoutine)                                   \
    X(60, SubpixelPlus, PlusSamplerFn<QX_Pixel8>)              \
    X(61, SubpixelNoClip, PointSamplerFn<QX_Pixel8>)           \
    X(62, None62, NoRoutine)                                   \
    X(63, NNSample16, PointSamplerFn<QX_Pixel16>)              \
    X(64, SubpixelSample16, PointSamplerFn<QX_Pixel16>)        \
    X(65, AreaSample16, PointSamplerFn<QX_Pixel16>)            \
    X(66, None66, NoRoutine)                                   \
    X(67, None67, NoRoutine)                                   \
    X(68, SubpixelTranslate16, TranslateSamplerFn<QX_Pixel16>) \
    X(69, None69, NoRoutine)                                   \
    X(70, SubpixelPlus16, PlusSamplerFn<QX_Pixel16>)           \
    X(71, SubpixelNoClip16, PointSamplerFn<QX_Pixel16>)        \
    X(72, BlackForward16, FilterFn<QX_Pixel16>)                \
    X(73, BlackReverse16, FilterFn<QX_Pixel16>)                \
    X(74, WhiteForward16, FilterFn<QX_Pixel16>)                \
    X(75, WhiteReverse16, FilterFn<QX_Pixel16>)                \
    X(76, GreyForward16, FilterFn<QX_Pixel16>)                 \
    X(77, GreyReverse16, FilterFn<QX_Pixel16>)                 \
    X(78, AlphaMerge16, MergeFn<QX_Pixel16>)                   \
    X(79, None79, NoRoutine)                                   \
    X(80, None80, NoRoutine)                                   \
    X(81, None81, NoRoutine)                                   \
    X(82, None82, NoRoutine)                                   \
    X(83, SubpixelNoClip4, FourSamplesFn)                      \
    X(84, SubpixelTranslate4, FourTranslateSamplesFn)          \
    X(85, None85, NoRoutine)                                   \
    X(86, SubpixelSpan, SpanSamplerFn<QX_Pixel8>)              \
    X(87, SubpixelSpan16, SpanSamplerFn<QX_Pixel16>)           \
    X(88, None88, NoRoutine)                                   \
    X(89, None89, NoRoutine)                                   \
    X(90, None90, NoRoutine)                                   \
    X(91, None91, NoRoutine)                                   \
    X(92, BoxBlurDeepUnoScan, UnoScanFn<std::uint16_t>)        \
    X(93, GBlurDeepUnoScan, UnoScanFn<std::uint16_t>)          \
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
    X(113, None113, NoRoutine)                                 \
    X(114, None114, NoRoutine)                                 \
    X(115, RowDriver8, RowDriverFn<QX_Pixel8>)                 \
    X(116, RowDriver16, RowDriverFn<QX_Pixel16>)               \
    X(117, RowDriverFloat, RowDriverFn<QX_PixelFloat>)
// clang-format on

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

/// The slot `n` places behind another.
constexpr Slot operator+(Slot slot, int n) { return static_cast<Slot>(static_cast<int>(slot) + n); }

/// What stands in a slot now; null where nothing does.
inline void*& slot_address(Slot slot, void** table = QXp_G_OverFuncs) { return table[static_cast<int>(slot)]; }

/// Stands in for a routine that is not there: a host has put null into its slot, or has not called QX_Birth.
template <class Fn> struct EmptySlot;
template <class... Arguments> struct EmptySlot<int(Arguments...)> {
    static int call(Arguments...) {
        constexpr int place = static_cast<int>(Place::empty_slot);
        TK_ReportFailedVerification(site(place), place, 0,
                                    "No routine stands in this slot of QXp_G_OverFuncs; QX_Birth fills it");
        return kQX_FailedVerification;
    }
};

/// The routine of a slot as it stands in a table of slots now; one that reports and returns 3 where none stands there.
template <class Fn> Fn* routine_at(Slot slot, void* const* table = QXp_G_OverFuncs) {
    void* const routine = table[static_cast<int>(slot)];
    return routine != nullptr ? reinterpret_cast<Fn*>(routine) : &EmptySlot<Fn>::call;
}
template <Slot S> typename SlotType<S>::Fn* slot(void* const* table = QXp_G_OverFuncs) {
    return routine_at<typename SlotType<S>::Fn>(S, table);
}

/// Writes a slot; the compiler checks the routine's type.
template <Slot S> void set_slot(typename SlotType<S>::Fn* routine, void** table = QXp_G_OverFuncs) {
    slot_address(S, table) = reinterpret_cast<void*>(routine);
}

}  // namespace qx
