// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Blur.h"

#include <algorithm>

#include "QX/filters/QX_BlurInfo.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/iterate/QX_Iterate.h"

namespace {

using qx::BlurLine;
using qx::BlurLines;
using qx::Place;

void check(const QX_World* src, const QX_World* dst) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) throw qx::report_gpu_world(Place::blur);
    const auto has_pixels = [](const QX_World* world) { return world != nullptr && world->data != nullptr; };
    if (!has_pixels(src) || !has_pixels(dst)) throw qx::report_bad_parameter(Place::blur);
    if (src->Depth() != dst->Depth()) throw qx::report_failed_verification(Place::blur, "");
}

/// NaN is 0.
float limited_radius(float radius) { return radius > 0 ? std::min(radius, 32767.0f) : 0.0f; }

/// Lines of a blur, done by `Work` as `work(thread, source line or null, destination line)`.
template <class Work> class LineRun {
public:
    LineRun(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, const Work& work)
        : progress_(progress), src_(src), dst_(dst), work_(work) {}

    void run() {
        const auto lines = static_cast<std::int32_t>(std::max<std::int64_t>(dst_.count, 0));
        qx::throw_if(QX_IterateGeneric(lines, this, [](void* run, std::int32_t thread, std::int32_t i, std::int32_t) {
            return qx::guarded([&] { return static_cast<const LineRun*>(run)->line(thread, i); });
        }));
    }

private:
    int line(std::int32_t thread, std::int32_t index) const {
        if (thread == 0 && progress_ != nullptr && progress_->abort_func != nullptr) {
            if (const int code = progress_->abort_func(progress_->refcon)) return code;
        }
        const std::int64_t from = index + std::int64_t{dst_.across} - src_.across;
        work_(thread, from, index);
        return 0;
    }

    const QX_ProgressInfo* progress_;
    const BlurLines &src_, &dst_;
    const Work& work_;
};

template <class Work>
void run_lines(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, const Work& work) {
    LineRun<Work>(progress, src, dst, work).run();
}

bool is_line(const BlurLines& lines, std::int64_t index) { return index >= 0 && index < lines.count; }

template <class Pixel>
void gaussian_line(const QXp_CPUBlur1DInfo& info, std::byte* buffer, const BlurLine<Pixel>& src,
                   const BlurLine<Pixel>& dst) {
    BlurLine<Pixel> taps = src;
    if (info.needs_line()) {
        taps = {buffer, sizeof(Pixel), src.length};
        info.mattes() ? taps.copy_matted(src, 0, info.lines().conv_flags) : taps.copy(src, 0);
    }
    qx::gaussian_blur_line(info.lines(), taps, src, dst);
}

/// All passes of one line. A pass writes neighbouring pixels alone, so that the last one of a column goes by a buffer,
/// which takes the column's pixels first for what is not selected.
template <class Pixel>
void box_line(const QXp_CPUBoxBlur1DInfo& info, std::int32_t thread, const BlurLine<Pixel>& src,
              const BlurLine<Pixel>& dst) {
    const int passes = info.GetIterations();
    const auto in_buffer = [&](int pass, std::int64_t length) {
        return BlurLine<Pixel>{info.buffer(thread, pass & 1), sizeof(Pixel), length};
    };
    BlurLine<Pixel> in{src.first + info.GetSrcOffset() * src.step, src.step, info.GetSrcWidth()};
    if (!info.GetReadInputDirectly()) {
        const BlurLine<Pixel> copy = in_buffer(0, in.length);
        info.GetInputNeedsMatting() ? copy.copy_matted(in, 0, info.GetConvFlags()) : copy.copy(in, 0);
        in = copy;
    }
    for (int pass = 0; pass < passes; ++pass) {
        const bool is_last = pass == passes - 1, by_buffer = !is_last || dst.step != sizeof(Pixel);
        const BlurLine<Pixel> out = by_buffer ? in_buffer(pass + 1, info.GetSpanWidthAtIndex(pass)) : dst;
        if (is_last && by_buffer) out.copy(dst, 0);
        QXp_BoxBlurPass(info.window(), in, info.GetSpanSrcDestOffsetAtIndex(pass), out);
        if (is_last && by_buffer) dst.copy(out, 0);
        in = out;
    }
}

}  // namespace

void QX_GaussianBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius, std::uint32_t conv_flags,
                       int src_vertical, GK::AlphaType src_alpha, int dst_vertical, GK::AlphaType dst_alpha,
                       bool copy_lines, QX_World* dst) {
    check(src, dst);
    const auto blur = [&]<class Pixel>() {
        const BlurLines from(*src, src_vertical != 0, src_alpha), to(*dst, dst_vertical != 0, dst_alpha);
        const QXp_CPUBlur1DInfo info(limited_radius(radius), conv_flags, from, to, copy_lines, 0);
        run_lines(progress, from, to, [&](std::int32_t thread, std::int64_t in, std::int64_t out) {
            if (!is_line(from, in)) return to.line<Pixel>(out).clear();
            gaussian_line(info, info.buffers().of(thread), from.line<Pixel>(in), to.line<Pixel>(out));
        });
    };
    qx::must_have_depth(dst->Depth(), Place::blur, blur, "");
}

void QX_BoxBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius, std::uint32_t conv_flags,
                  int iterations, int src_vertical, GK::AlphaType src_alpha, int dst_vertical, GK::AlphaType dst_alpha,
                  bool copy_lines, QX_World* dst) {
    check(src, dst);
    const auto blur = [&]<class Pixel>() {
        const BlurLines from(*src, src_vertical != 0, src_alpha), to(*dst, dst_vertical != 0, dst_alpha);
        const float limited = limited_radius(radius);
        const int passes = limited == 0 ? std::min(iterations, 1) : iterations;  // more would change nothing
        const QXp_CPUBoxBlur1DInfo info(limited, conv_flags, passes, from, to, copy_lines, 1);
        run_lines(progress, from, to, [&](std::int32_t thread, std::int64_t in, std::int64_t out) {
            if (!is_line(from, in)) return to.line<Pixel>(out).clear();
            if (info.GetIterations() > 0) box_line(info, thread, from.line<Pixel>(in), to.line<Pixel>(out));
        });
    };
    qx::must_have_depth(dst->Depth(), Place::blur, blur, "");
}

int QX_FastBlur_Straight(...) { return kQX_UnimplementedMode; }
int QX_FastBlur_Premul(...) { return kQX_UnimplementedMode; }
