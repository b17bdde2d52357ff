// SPDX-License-Identifier: Apache-2.0
// Holds the header for effects to the module's own, by size, offset, number and type, and lets a C file use it.
#include "QX/QX_Effect.h"

#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/suites/QX_Handles.h"
#include "QX/suites/QX_SuiteRoutines.h"
#include "tests/suites/EffectEyes.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

/// The module's record for one of the header.
template <class T> struct Ours { using type = T; };
#define RECORDS(X)                         \
    X(QXE_Pixel8, QX_Pixel8)               \
    X(QXE_Pixel16, QX_Pixel16)             \
    X(QXE_PixelFloat, QX_PixelFloat)       \
    X(QXE_Rect, M_LRect)                   \
    X(QXE_Point, M_LPoint)                 \
    X(QXE_World, QX_LayerDef)              \
    X(QXE_ProgressInfo, QX_ProgressInfo)   \
    X(QXE_InData, QX_InData)               \
    X(QXE_CompositeMode, QX_CompositeMode) \
    X(QXE_MaskWorld, QX_MaskWorld)         \
    X(QXE_Matrix3, M_Matrix3)              \
    X(QXE_SampPB, QX_SampPB)               \
    X(QXE_BasicSuite, QSBasicSuite)        \
    X(QXE_CallbackBlock, QX_CallbackBlock)
#define X(theirs, ours)                                     \
    template <> struct Ours<theirs> { using type = ours; }; \
    static_assert(sizeof(theirs) == sizeof(ours) && alignof(theirs) == alignof(ours));
RECORDS(X)
#undef X
template <class T> using OursT = typename Ours<T>::type;
template <class T> struct Ours<const T> { using type = const OursT<T>; };
template <class T> struct Ours<T*> { using type = OursT<T>*; };
template <class R, class... A> struct Ours<R(A...)> { using type = OursT<R>(OursT<A>...); };
template <class R, class... A> struct Ours<R(A..., ...)> { using type = OursT<R>(OursT<A>..., ...); };

#define FIELD(record, field)                                                   \
    static_assert(offsetof(record, field) == offsetof(OursT<record>, field) && \
                  std::is_same_v<OursT<decltype(record::field)>, decltype(OursT<record>::field)>)
#define PIXEL(record)     \
    FIELD(record, alpha); \
    FIELD(record, red);   \
    FIELD(record, green); \
    FIELD(record, blue)
PIXEL(QXE_Pixel8);
PIXEL(QXE_Pixel16);
PIXEL(QXE_PixelFloat);
FIELD(QXE_Rect, left);
FIELD(QXE_Rect, top);
FIELD(QXE_Rect, right);
FIELD(QXE_Rect, bottom);
FIELD(QXE_Point, x);
FIELD(QXE_Point, y);
FIELD(QXE_World, reserved0);
FIELD(QXE_World, reserved1);
FIELD(QXE_World, world_flags);
FIELD(QXE_World, data);
FIELD(QXE_World, rowbytes);
FIELD(QXE_World, width);
FIELD(QXE_World, height);
FIELD(QXE_World, extent_hint);
FIELD(QXE_World, ownership_mark);
FIELD(QXE_World, pix_aspect_num);
FIELD(QXE_World, pix_aspect_den);
FIELD(QXE_World, reserved2);
FIELD(QXE_World, origin_x);
FIELD(QXE_World, origin_y);
FIELD(QXE_World, reserved3);
FIELD(QXE_World, reserved4);
FIELD(QXE_World, reserved5);
static_assert(offsetof(QXE_World, platform_ref) == offsetof(QX_LayerDef, platform_ref));
static_assert(offsetof(QXE_World, world) == offsetof(QX_LayerDef, world));
FIELD(QXE_ProgressInfo, refcon);
FIELD(QXE_ProgressInfo, abort_func);
FIELD(QXE_ProgressInfo, progress_func);
FIELD(QXE_InData, abort);
FIELD(QXE_InData, progress);
FIELD(QXE_InData, effect_ref);
FIELD(QXE_CompositeMode, xfer);
FIELD(QXE_CompositeMode, rand_seed);
FIELD(QXE_CompositeMode, opacity);
FIELD(QXE_CompositeMode, rgb_only);
FIELD(QXE_CompositeMode, opacity16);
FIELD(QXE_MaskWorld, world);
FIELD(QXE_MaskWorld, x);
FIELD(QXE_MaskWorld, y);
FIELD(QXE_MaskWorld, flags);
static_assert(std::is_same_v<decltype(QXE_Matrix3::m), decltype(M_Matrix3::m)>);
FIELD(QXE_SampPB, x_radius);
FIELD(QXE_SampPB, y_radius);
FIELD(QXE_SampPB, area);
FIELD(QXE_SampPB, src);
FIELD(QXE_SampPB, motion_steps);
FIELD(QXE_SampPB, reserved);

#define SAME_NUMBER(theirs, ours) static_assert(static_cast<long long>(theirs) == static_cast<long long>(ours))
#define CODE(name) SAME_NUMBER(QXE_##name, kQX_##name)
CODE(NoError);
CODE(OutOfMemory);
CODE(UnimplementedMode);
CODE(ParameterOutOfRange);
CODE(UnknownSelector);
CODE(BadParameter);
CODE(Interrupted);
CODE(MaskAlpha);
CODE(MaskInverseAlpha);
CODE(MaskLuma);
CODE(MaskInverseLuma);
CODE(Convolve_OneDimension);
CODE(Convolve_Normalise);
CODE(Convolve_Unclamped);
CODE(Convolve_DownColumn);
CODE(Convolve_HonourOrigin);
CODE(GaussianKernel_OneRow);
CODE(GaussianKernel_Normalise);
SAME_NUMBER(QXE_Failed, kQX_FailedVerification);
SAME_NUMBER(QXE_FORMAT_8, kQX_PixelFormat_ARGB8);
SAME_NUMBER(QXE_FORMAT_16, kQX_PixelFormat_ARGB16);
SAME_NUMBER(QXE_FORMAT_FLOAT, kQX_PixelFormat_ARGBFloat);
#define X(number, name) SAME_NUMBER(QXE_xfer_##name, number);
QX_TRANSFER_MODES(X)
#undef X

/// A field of a record of routines: where it stands, counted in pointers, and the module's type.
#define ROUTINE(record, field, place, ...)                             \
    static_assert(offsetof(record, field) == (place) * sizeof(void*)); \
    static_assert(std::is_same_v<std::remove_pointer_t<OursT<decltype(record::field)>>, __VA_ARGS__>)
template <qx::Slot S> using InSlot = typename qx::SlotType<S>::Fn;
using qx::Slot;

#define BLOCK(field, ...) ROUTINE(QXE_CallbackBlock, field, kQX_CB_##field, __VA_ARGS__)
BLOCK(subpixel_sample, InSlot<Slot::SubpixelSample>);
BLOCK(area_sample, InSlot<Slot::AreaSample>);
BLOCK(composite_rect, InSlot<Slot::CompositeRectBest>);
BLOCK(blend, decltype(QX_Blend_Straight));
BLOCK(convolve, InSlot<Slot::Convolve>);
BLOCK(copy, InSlot<Slot::CopyBitsHQ>);
BLOCK(fill, decltype(QX_Fill));
BLOCK(gaussian_kernel, decltype(QX_GaussianKernel));
BLOCK(iterate, InSlot<Slot::Iterate>);
BLOCK(premultiply, decltype(QX_Premul));
BLOCK(premultiply_color, decltype(QX_PremulColor));
BLOCK(new_world, decltype(qx::new_world_callback));
BLOCK(dispose_world, decltype(qx::dispose_world_callback));
BLOCK(iterate_origin, InSlot<Slot::IterateOrigin>);
BLOCK(iterate_lut, InSlot<Slot::IterateLUT>);
BLOCK(transfer_rect, decltype(qx::transfer_rect_callback));
BLOCK(transform_world, decltype(qx::transform_world_callback));
BLOCK(host_new_handle, decltype(qx::new_handle));
BLOCK(host_lock_handle, decltype(qx::lock_handle));
BLOCK(host_unlock_handle, decltype(qx::unlock_handle));
BLOCK(host_dispose_handle, decltype(qx::dispose_handle));
BLOCK(get_callback_addr, decltype(QX_GetCallbackAddr));
BLOCK(app, decltype(QX_AppCallback));
BLOCK(get_platform_data, decltype(qx::platform_data_callback));
BLOCK(host_get_handle_size, decltype(qx::handle_size));
BLOCK(iterate_origin_non_clip_src, InSlot<Slot::IterateOriginNoClip>);
BLOCK(iterate_generic, InSlot<Slot::IterateGeneric>);
BLOCK(host_resize_handle, decltype(qx::resize_handle));
BLOCK(subpixel_sample16, InSlot<Slot::SubpixelSample16>);
BLOCK(area_sample16, InSlot<Slot::AreaSample16>);
BLOCK(fill16, decltype(QX_Fill16));
BLOCK(premultiply_color16, decltype(QX_PremulColor16));
BLOCK(iterate16, InSlot<Slot::Iterate>);
BLOCK(iterate_origin16, InSlot<Slot::IterateOrigin>);
BLOCK(iterate_origin_non_clip_src16, InSlot<Slot::IterateOriginNoClip>);
BLOCK(get_pixel_data8, decltype(QX_GetPixelData8));
BLOCK(get_pixel_data16, decltype(QX_GetPixelData16));
static_assert(offsetof(QXE_CallbackBlock, batch_sample) == kQX_CB_batch_sample * sizeof(void*));
static_assert(offsetof(QXE_CallbackBlock, ansi) == kQX_CB_ansi * sizeof(void*));
static_assert(offsetof(QXE_CallbackBlock, colour) == kQX_CB_colorCB * sizeof(void*));
static_assert(offsetof(QXE_CallbackBlock, reserved2) == kQX_CB_reserved2 * sizeof(void*));

#define UNARY(place, name) ROUTINE(QXE_AnsiSuite1, name, place, double(double))
#define BINARY(place, name) ROUTINE(QXE_AnsiSuite1, name, place, double(double, double))
UNARY(0, atan);
BINARY(1, atan2);
UNARY(2, ceil);
UNARY(3, cos);
UNARY(4, exp);
UNARY(5, fabs);
UNARY(6, floor);
BINARY(7, fmod);
BINARY(8, hypot);
UNARY(9, log);
UNARY(10, log10);
BINARY(11, pow);
UNARY(12, sin);
UNARY(13, sqrt);
UNARY(14, tan);
UNARY(17, asin);
UNARY(18, acos);
ROUTINE(QXE_AnsiSuite1, sprintf, 15, int(char*, const char*, ...));
ROUTINE(QXE_AnsiSuite1, strcpy, 16, char*(char*, const char*));
#define COLOURS(record, Form)                                     \
    ROUTINE(record, rgb_to_hls, 0, decltype(QX_RGBtoHLS_##Form)); \
    ROUTINE(record, hls_to_rgb, 1, decltype(QX_HLStoRGB_##Form)); \
    ROUTINE(record, rgb_to_yiq, 2, decltype(QX_RGBtoYIQ_##Form)); \
    ROUTINE(record, yiq_to_rgb, 3, decltype(QX_YIQtoRGB_##Form)); \
    ROUTINE(record, luminance, 4, decltype(QX_Luminance_##Form)); \
    ROUTINE(record, hue, 5, decltype(QX_Hue_##Form));             \
    ROUTINE(record, lightness, 6, decltype(QX_Lightness_##Form)); \
    ROUTINE(record, saturation, 7, decltype(QX_Saturation_##Form))
COLOURS(QXE_Colour8Suite1, Straight);
COLOURS(QXE_Colour16Suite1, Straight16);
COLOURS(QXE_ColourFloatSuite1, StraightFloat);

ROUTINE(QXE_ProcessorSuite1, flag0, 0, decltype(qx::processor_flag0));
ROUTINE(QXE_ProcessorSuite1, flag1, 1, decltype(qx::processor_flag1));
ROUTINE(QXE_ProcessorSuite1, flag2, 2, decltype(qx::processor_flag2));
ROUTINE(QXE_ProcessorSuite1, flag3, 3, decltype(qx::processor_flag3));
ROUTINE(QXE_HandleSuite2, new_handle, 0, decltype(qx::new_handle));
ROUTINE(QXE_HandleSuite2, lock, 1, decltype(qx::lock_handle));
ROUTINE(QXE_HandleSuite2, unlock, 2, decltype(qx::unlock_handle));
ROUTINE(QXE_HandleSuite2, dispose, 3, decltype(qx::dispose_handle));
ROUTINE(QXE_HandleSuite2, size, 4, decltype(qx::handle_size));
ROUTINE(QXE_HandleSuite2, resize, 5, decltype(qx::resize_handle));
#define SAMPLERS(record, Pixel)                              \
    ROUTINE(record, nearest, 0, qx::PointSamplerFn<Pixel>);  \
    ROUTINE(record, subpixel, 1, qx::PointSamplerFn<Pixel>); \
    ROUTINE(record, area, 2, qx::PointSamplerFn<Pixel>)
SAMPLERS(QXE_Sampling8Suite1, QX_Pixel8);
SAMPLERS(QXE_Sampling16Suite1, QX_Pixel16);
SAMPLERS(QXE_SamplingFloatSuite1, QX_PixelFloat);
ROUTINE(QXE_WorldSuite1, new_world, 0, decltype(qx::new_world_callback));
ROUTINE(QXE_WorldSuite1, dispose, 1, decltype(qx::dispose_world_callback));
ROUTINE(QXE_WorldSuite2, new_world, 0, decltype(qx::new_world_by_format));
ROUTINE(QXE_WorldSuite2, dispose, 1, decltype(qx::dispose_world_callback));
ROUTINE(QXE_WorldSuite2, format, 2, decltype(qx::pixel_format_of_world));
ROUTINE(QXE_Iterate8Suite1, iterate, 0, InSlot<Slot::Iterate>);
ROUTINE(QXE_Iterate8Suite1, iterate_origin, 1, InSlot<Slot::IterateOrigin>);
ROUTINE(QXE_Iterate8Suite1, iterate_lut, 2, InSlot<Slot::IterateLUT>);
ROUTINE(QXE_Iterate8Suite1, iterate_origin_non_clip_src, 3, InSlot<Slot::IterateOriginNoClip>);
ROUTINE(QXE_Iterate8Suite1, iterate_generic, 4, InSlot<Slot::IterateGeneric>);
ROUTINE(QXE_IterateDeepSuite1, iterate, 0, InSlot<Slot::Iterate>);
ROUTINE(QXE_IterateDeepSuite1, iterate_origin, 1, InSlot<Slot::IterateOrigin>);
ROUTINE(QXE_IterateDeepSuite1, iterate_origin_non_clip_src, 2, InSlot<Slot::IterateOriginNoClip>);
ROUTINE(QXE_WorldTransformSuite1, composite_rect, 0, InSlot<Slot::CompositeRectBest>);
ROUTINE(QXE_WorldTransformSuite1, blend, 1, decltype(QX_Blend_Straight));
ROUTINE(QXE_WorldTransformSuite1, convolve, 2, InSlot<Slot::Convolve>);
ROUTINE(QXE_WorldTransformSuite1, copy, 3, InSlot<Slot::CopyBitsDraft>);
ROUTINE(QXE_WorldTransformSuite1, copy_hq, 4, InSlot<Slot::CopyBitsHQ>);
ROUTINE(QXE_WorldTransformSuite1, transfer_rect, 5, decltype(qx::transfer_rect_callback));
ROUTINE(QXE_WorldTransformSuite1, transform_world, 6, decltype(qx::transform_world_callback));
ROUTINE(QXE_FillMatteSuite2, fill, 0, decltype(QX_Fill));
ROUTINE(QXE_FillMatteSuite2, fill16, 1, decltype(QX_Fill16));
ROUTINE(QXE_FillMatteSuite2, fill_float, 2, decltype(QX_FillFloat));
ROUTINE(QXE_FillMatteSuite2, premultiply, 3, decltype(QX_Premul));
ROUTINE(QXE_FillMatteSuite2, premultiply_color, 4, decltype(QX_PremulColor));
ROUTINE(QXE_FillMatteSuite2, premultiply_color16, 5, decltype(QX_PremulColor16));
ROUTINE(QXE_FillMatteSuite2, premultiply_color_float, 6, decltype(QX_PremulColorFloat));
ROUTINE(QXE_PixelDataSuite1, get_pixel_data_float, 2, decltype(QX_GetPixelDataFloat));
ROUTINE(QXE_PixelDataSuite2, get_pixel_data8, 0, decltype(QX_GetPixelData8));
ROUTINE(QXE_PixelDataSuite2, get_pixel_data16, 1, decltype(QX_GetPixelData16));
ROUTINE(QXE_PixelDataSuite2, get_pixel_data_float, 2, decltype(QX_GetPixelDataFloat));
ROUTINE(QXE_PixelDataSuite2, get_pixel_data_float_gpu, 3, decltype(QX_GetPixelDataFloatGPU));

ROUTINE(QXE_BasicSuite, acquire, 0, int(const char*, int, const void**));
ROUTINE(QXE_BasicSuite, release, 1, int(const char*, int));
ROUTINE(QXE_BasicSuite, is_equal, 2, int(const char*, const char*));
ROUTINE(QXE_BasicSuite, allocate, 3, int(std::size_t, void**));
ROUTINE(QXE_BasicSuite, free, 4, int(void*));
ROUTINE(QXE_BasicSuite, reallocate, 5, int(void*, std::size_t, void**));
ROUTINE(QXE_BasicSuite, undefined, 6, int());

class EffectEyes : public testing::TestWithParam<int> {
protected:
    EffectEyes() : born(GetParam()) {
        standalone::ForgetSuites();
        EXPECT_EQ(QX_InstallSuites(), 0);
    }
    ~EffectEyes() override { standalone::ForgetSuites(); }
    Born born;
};

/// Every suite has as many entries as its record, and every entry does its work when it is called from C.
TEST_P(EffectEyes, EveryEntryDoesItsWorkFromC) {
    const std::size_t sizes[] = {
        sizeof(QXE_ProcessorSuite1),     sizeof(QXE_AnsiSuite1),        sizeof(QXE_HandleSuite2),
        sizeof(QXE_Colour8Suite1),       sizeof(QXE_Colour16Suite1),    sizeof(QXE_ColourFloatSuite1),
        sizeof(QXE_BatchSamplingSuite1), sizeof(QXE_Sampling8Suite1),   sizeof(QXE_Sampling16Suite1),
        sizeof(QXE_SamplingFloatSuite1), sizeof(QXE_WorldSuite1),       sizeof(QXE_Iterate8Suite1),
        sizeof(QXE_IterateDeepSuite1),   sizeof(QXE_IterateDeepSuite1), sizeof(QXE_WorldTransformSuite1),
        sizeof(QXE_FillMatteSuite2),     sizeof(QXE_PixelDataSuite2),   sizeof(QXE_PixelDataSuite1),
        sizeof(QXE_WorldSuite2)};
    const auto all = standalone::RegisteredSuites();
    ASSERT_EQ(all.size(), std::size(sizes));
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(all[i].entries) * sizeof(void*), sizes[i]) << all[i].name;
    }

    const auto blocks = blocks_in_use();
    const QSBasicSuite* basic = nullptr;
    ASSERT_EQ(TK_QS_GetQSBasicSuite(&basic), 0);
    QX_CallbackBlock block;
    QX_GetCallbackBlock(1, 1, &block);
    const Reports reports;
    const char* const failed = look_through_c_eyes(reinterpret_cast<const QXE_BasicSuite*>(basic),
                                                   reinterpret_cast<const QXE_CallbackBlock*>(&block));
    EXPECT_STREQ(failed, nullptr);
    EXPECT_EQ(standalone::SuitesOut(), 0);
    EXPECT_EQ(blocks_in_use(), blocks);
    for (const auto& report : reports.all()) ADD_FAILURE() << report.text;
}

INSTANTIATE_TEST_SUITE_P(Bands, EffectEyes, testing::Values(1, 32));

}  // namespace
