// SPDX-License-Identifier: Apache-2.0
#include "QX/QX_C.h"

#include <bit>
#include <cstring>
#include <memory>

#include "QX/QX.h"
#include "QX/indep/QX_Guard.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/suites/QX_SuiteRoutines.h"

namespace {

/// The library's own type of a record.
template <class Record> struct Native;
#define QX_NATIVE(theirs, ours)                               \
    template <> struct Native<theirs> { using Type = ours; }; \
    static_assert(sizeof(theirs) == sizeof(ours));
QX_NATIVE(QXE_World, QX_LayerDef)
QX_NATIVE(QXE_Rect, M_LRect)
QX_NATIVE(QXE_Pixel8, QX_Pixel8)
QX_NATIVE(QXE_Pixel16, QX_Pixel16)
QX_NATIVE(QXE_PixelFloat, QX_PixelFloat)
QX_NATIVE(QXE_CompositeMode, QX_CompositeMode)
QX_NATIVE(QXE_MaskWorld, QX_MaskWorld)
QX_NATIVE(QXE_Matrix3, M_Matrix3)
QX_NATIVE(QXE_SampPB, QX_SampPB)
QX_NATIVE(QXE_ProgressInfo, QX_ProgressInfo)
#undef QX_NATIVE

template <class Record> auto* own(Record* record) { return reinterpret_cast<typename Native<Record>::Type*>(record); }
template <class Record> const auto* own(const Record* record) {
    return reinterpret_cast<const typename Native<Record>::Type*>(record);
}
/// Routines that only read take records that could be written.
QX_LayerDef* unconst(const QXE_World* world) { return const_cast<QX_LayerDef*>(own(world)); }
void* ref_of(const QXE_ProgressInfo* progress) { return const_cast<QXE_ProgressInfo*>(progress); }

using World = std::unique_ptr<QX_World>;
World world_of(const QXE_World* record) {
    if (record == nullptr) throw int{kQX_BadParameter};
    return World(QX_World::NewReference(unconst(record)));
}

int wrap(void* data, int width, int height, int rowbytes, std::uint32_t format, QX_LayerDef* world) {
    int depth = 0;
    if (world == nullptr || data == nullptr) return qx::report_invalid_parameter(qx::Place::callback_routine);
    if (const int code = QXp_PixelFormatToEffectWorldDepth(format, &depth)) return code;
    *world = {};
    world->data = data;
    world->rowbytes = rowbytes;
    world->width = width;
    world->height = height;
    world->extent_hint = {0, 0, width, height};
    return QXp_SetWorldDepth(world, depth);
}

/// Two line blurs, of rows and of columns; the first one multiplies the colours.
void blur(const QX_World& src, float across, float down, QX_World& dst) {
    const World rows(QX_World::NewMatchingWorld(&src, 0));
    QX_GaussianBlur1D(nullptr, &src, across, kQX_Blur_AllChannels, 0, GK::kAlphaType_Straight, 0,
                      GK::kAlphaType_Premultiplied, false, rows.get());
    QX_GaussianBlur1D(nullptr, rows.get(), down, kQX_Blur_AllChannels, 1, GK::kAlphaType_Premultiplied, 1,
                      GK::kAlphaType_Premultiplied, false, &dst);
}

Guid id_of(std::uint64_t number) {
    Guid id{};
    std::memcpy(&id, &number, sizeof number);
    return id;
}

int frame_between(QX_World& first, std::uint64_t first_id, QX_World& second, std::uint64_t second_id, double position,
                  QX_World& out) {
    QX_Solvan_OtherParams other{};
    other.firstFrameId = id_of(first_id);
    other.secondFrameId = id_of(second_id);
    other.position = position;
    return QX_AdvancedFrameBlending(other, {}).Render(&first, &second, &out);
}

}  // namespace

// clang-format off
int QXC_Birth() { return QX_Birth(); }
int QXC_Death() { return QX_Death(); }
const char* QXC_Version() { return QX_VERSION; }

int QXC_NewWorld(int width, int height, int clear, uint32_t format, QXE_World* world) { return qx::new_world_by_format(nullptr, width, height, clear, format, own(world)); }
int QXC_DisposeWorld(QXE_World* world) { return qx::dispose_world_callback(nullptr, own(world)); }
int QXC_WrapPixels(void* data, int width, int height, int rowbytes, uint32_t format, QXE_World* world) { return wrap(data, width, height, rowbytes, format, own(world)); }
int QXC_WorldFormat(const QXE_World* world, uint32_t* format) { return qx::pixel_format_of_world(own(world), format); }

int QXC_Fill(const QXE_PixelFloat* colour, const QXE_Rect* rect, QXE_World* world) { return QX_FillFloat(nullptr, own(colour), own(rect), own(world)); }
int QXC_Premultiply(const QXE_PixelFloat* colour, int forward, QXE_World* src, QXE_World* dst) { return QX_PremulColorFloat(nullptr, own(src), own(colour), forward != 0, own(dst)); }
int QXC_GuessAlpha(const QXE_World* world, int32_t* kind, QXE_Pixel8* matte) { return QX_GuessAlpha(nullptr, own(world), kind, own(matte)); }

int QXC_CopyDraft(QXE_World* src, QXE_World* dst, const QXE_Rect* src_rect, const QXE_Rect* dst_rect) { return QX_CopyBits_Draft(nullptr, own(src), own(dst), own(src_rect), own(dst_rect)); }
int QXC_Copy(QXE_World* src, QXE_World* dst, const QXE_Rect* src_rect, const QXE_Rect* dst_rect) { return QX_CopyBits_HQ_Straight(nullptr, own(src), own(dst), own(src_rect), own(dst_rect)); }

int QXC_TransferRect(const QXE_ProgressInfo* progress, const QXE_Rect* src_rect, QXE_World* src, const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, int dest_x, int dest_y, QXE_World* dst) { return qx::transfer_rect_callback(ref_of(progress), 0, 0, 0, own(src_rect), own(src), own(mode), own(mask), dest_x, dest_y, own(dst)); }
int QXC_TransformWorld(const QXE_ProgressInfo* progress, int quality, QXE_World* src, const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, const QXE_Matrix3* matrices, int num_matrices, const QXE_Rect* dest_rect, QXE_World* dst) { return qx::transform_world_callback(ref_of(progress), quality, 0, 0, own(src), own(mode), own(mask), own(matrices), num_matrices, true, own(dest_rect), own(dst)); }
int QXC_Blend(const QXE_World* src1, const QXE_World* src2, int32_t ratio, QXE_World* dst) { return QX_Blend_Straight(nullptr, own(src1), own(src2), ratio, own(dst)); }

int QXC_Convolve(const QXE_World* src, uint32_t flags, int32_t size, const int32_t* kernel, QXE_World* dst) { return QX_Convolve(nullptr, own(src), nullptr, flags, size, kernel, kernel, kernel, kernel, own(dst)); }
int QXC_GaussianBlur(const QXE_World* src, float across, float down, QXE_World* dst) { return qx::guarded([&] { blur(*world_of(src), across, down, *world_of(dst)); }); }

int QXC_SampleNearest8(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel8* out) { return QX_NNSample(ref, x, y, own(samp), own(out)); }
int QXC_SampleBilinear8(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel8* out) { return QX_SubpixelSample_Straight(ref, x, y, own(samp), own(out)); }
int QXC_SampleBicubic8(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel8* out) { return QX_SubpixelBicubic8(ref, x, y, own(samp), own(out)); }
int QXC_SampleArea8(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel8* out) { return QX_AreaSample_Straight(ref, x, y, own(samp), own(out)); }
int QXC_SampleNearest16(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel16* out) { return QX_NNSample16(ref, x, y, own(samp), own(out)); }
int QXC_SampleBilinear16(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel16* out) { return QX_SubpixelSample_Straight16(ref, x, y, own(samp), own(out)); }
int QXC_SampleBicubic16(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel16* out) { return QX_SubpixelBicubic16(ref, x, y, own(samp), own(out)); }
int QXC_SampleArea16(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel16* out) { return QX_AreaSample_Straight16(ref, x, y, own(samp), own(out)); }
int QXC_SampleNearestFloat(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_PixelFloat* out) { return QX_NNSampleFloat(ref, x, y, own(samp), own(out)); }
int QXC_SampleBilinearFloat(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_PixelFloat* out) { return QX_SubpixelBilinearFloat(ref, x, y, own(samp), own(out)); }
int QXC_SampleBicubicFloat(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_PixelFloat* out) { return QX_SubpixelBicubicFloat(ref, x, y, own(samp), own(out)); }
int QXC_SampleAreaFloat(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_PixelFloat* out) { return QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>(ref, x, y, own(samp), own(out)); }

int QXC_FrameBetween(const QXE_World* first, uint64_t first_id, const QXE_World* second, uint64_t second_id, double position, QXE_World* out) { return qx::guarded([&] { qx::throw_if(frame_between(*world_of(first), first_id, *world_of(second), second_id, position, *world_of(out))); }); }
// clang-format on
