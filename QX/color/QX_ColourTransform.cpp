// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColourTransform.h"

#include <optional>

#include "QX/color/QX_ColourEngine.h"
#include "QX/color/QX_ColourFormat.h"
#include "QX/color/QX_EngineProfile.h"
#include "QX/indep/QX_Progress.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_ImagePlanes.h"
#include "platform/TK_Memory.h"

namespace {

using qx::Place;

bool has_depth(const QX_World& world) {
    return qx::for_depth(
        world.Depth(), []<class Pixel>() { return true; }, [] { return false; });
}

void refuse(const char* why) { throw qx::report_failed_verification(Place::colour_apply, why); }

/// @param cmyk  what the source's channels are
void check(const QX_World* src, const QX_World* dst, bool copy_alpha, bool cmyk) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) throw qx::report_gpu_world(Place::colour_apply);
    const auto has_pixels = [](const QX_World* world) { return world != nullptr && world->data != nullptr; };
    if (!has_pixels(src) || !has_pixels(dst)) throw qx::report_bad_parameter(Place::colour_apply);
    if (!has_depth(*src) || !has_depth(*dst)) refuse(qx::kUnknownDepth);
    if (cmyk && src->Depth() == 32) refuse("QXp_CMXApplyTransform only works on 8 and 16 bit CMYK data");
    if (copy_alpha && src->Depth() != dst->Depth()) refuse("Can't copy alpha if src and dst have different depth.");
    if (dst->width < src->width || dst->height < src->height) refuse("the destination is smaller than the source");
}

/// The first channel of pixels that lie without gaps, kept while the engine writes over it.
template <class Channel> class AlphaPlane {
public:
    explicit AlphaPlane(std::int64_t pixels)
        : samples_(
              static_cast<Channel*>(TK_AllocatePtr(qx::site(Place::colour_apply), qx::text_of(qx::Text::plane_buffer),
                                                   static_cast<std::size_t>(pixels) * sizeof(Channel)))) {
        if (samples_ == nullptr) throw int{kQX_OutOfMemory};
    }
    ~AlphaPlane() { TK_FreePtr(samples_); }
    AlphaPlane(const AlphaPlane&) = delete;
    AlphaPlane& operator=(const AlphaPlane&) = delete;

    void take(const void* pixels, std::int32_t width, std::int32_t height) {
        QX_Deinterleave1(static_cast<const Channel*>(pixels), 4, 4 * width, width, {width, height}, {0, 0}, {0, 0},
                         samples_);
    }
    void give(void* pixels, std::int32_t width, std::int32_t height) const {
        QX_Interleave1to4(samples_, width, 4 * width, {width, height}, {0, 0}, {0, 0}, static_cast<Channel*>(pixels));
    }

private:
    Channel* samples_;
};

struct Formats {
    std::uint32_t src, dst;
};

/// Runs of pixels without gaps through a transform.
template <class Pixel> class Apply {
public:
    using Channel = QX_ChannelOf<Pixel>;

    Apply(const HCL_CMX_Transform& transform, const Formats& formats, const t_CMX_Options& options)
        : transform_(transform), formats_(formats), options_(options) {}

    void run(const std::byte* src, std::byte* dst, std::int32_t width, std::int32_t height,
             AlphaPlane<Channel>* alpha) const {
        if (alpha != nullptr) alpha->take(src, width, height);
        qx::must_call_colour_engine(&qx::ColourEngine::ApplyTransform, transform_.GetTransform(), qx::kPixelLayout, src,
                                    formats_.src, dst, formats_.dst, std::int64_t{width} * height, &options_);
        if (alpha != nullptr) alpha->give(dst, width, height);
    }

private:
    const HCL_CMX_Transform& transform_;
    const Formats formats_;
    const t_CMX_Options& options_;
};

bool has_gaps(const QX_World& world, std::int32_t width) {
    const auto pixel = static_cast<std::int64_t>(world.Depth() >> 3) * 4;
    return world.rowbytes != width * pixel;
}

template <class Pixel>
void apply_to(const QX_World& src, QX_World& dst, bool copy_alpha, const Apply<Pixel>& apply,
              const QX_ProgressInfo* progress) {
    const std::int32_t width = src.width, height = src.height;
    const bool by_rows = has_gaps(src, width) || has_gaps(dst, width);
    std::optional<AlphaPlane<QX_ChannelOf<Pixel>>> alpha;
    if (copy_alpha) alpha.emplace(std::int64_t{width} * (by_rows ? 1 : height));
    auto* const plane = alpha ? &*alpha : nullptr;
    const auto* from = static_cast<const std::byte*>(src.data);
    auto* to = static_cast<std::byte*>(dst.data);
    if (!by_rows) return apply.run(from, to, width, height, plane);
    for (std::int32_t row = 0; row < height; ++row, from += src.rowbytes, to += dst.rowbytes) {
        apply.run(from, to, width, 1, plane);
        qx::poll_row(progress, row, height);
    }
}

void apply_transform(const HCL_CMX_Transform& transform, const QX_World* src, QX_World* dst, bool copy_alpha, bool cmyk,
                     const QX_ProgressInfo* progress, bool* out_flag) {
    check(src, dst, copy_alpha, cmyk);
    const t_CMX_Options options = HCL_GetDefaultCMXOptions(out_flag);
    if (src->width <= 0 || src->height <= 0) return;
    const Formats formats{cmyk ? qx::cmyk_format(src->Depth()) : qx::colour_format(src->Depth()),
                          qx::colour_format(dst->Depth())};
    qx::must_have_depth(
        src->Depth(), Place::colour_apply,
        [&]<class Pixel>() { apply_to(*src, *dst, copy_alpha, Apply<Pixel>(transform, formats, options), progress); },
        qx::kUnknownDepth);
}

/// A transform that goes back by the engine's own procedure.
class MadeTransform {
public:
    MadeTransform(const HCL_CMX_Profile& from, const HCL_CMX_Profile& to)
        : transform_(qx::new_transform(from, to, qx::kRelativeColorimetric, HCL_GetDefaultCMXOptions(nullptr))) {}
    ~MadeTransform() {
        CMX_Transform* const made = transform_.Release();
        const auto give_back = &qx::ColourEngine::UnReferenceTransform;
        if (qx::call_colour_engine(give_back, made) == kCMX_NotLoaded) made->UnReference();
    }
    MadeTransform(const MadeTransform&) = delete;
    MadeTransform& operator=(const MadeTransform&) = delete;
    const HCL_CMX_Transform& get() const { return transform_; }

private:
    HCL_CMX_Transform transform_;
};

}  // namespace

void QX_CMXApplyTransform(const HCL_CMX_Transform& transform, const QX_World* src, QX_World* dst, bool copy_alpha,
                          const QX_ProgressInfo* progress, bool* out_flag) {
    apply_transform(transform, src, dst, copy_alpha, false, progress, out_flag);
}

void QX_CMXApplyTransformSrcCMYK(const HCL_CMX_Transform& transform, const QX_World* src, QX_World* dst,
                                 bool copy_alpha, const QX_ProgressInfo* progress) {
    apply_transform(transform, src, dst, copy_alpha, true, progress, nullptr);
}

void QX_ConvertProfileToProfile(CMX_ProfileCode from_code, CMX_ProfileCode to_code, const QX_World* src, QX_World* dst,
                                bool copy_alpha, const QX_ProgressInfo* progress) {
    const HCL_CMX_Profile from = qx::profile_from_code(from_code), to = qx::profile_from_code(to_code);
    const MadeTransform made(from, to);
    QX_CMXApplyTransform(made.get(), src, dst, copy_alpha, progress, nullptr);
}
