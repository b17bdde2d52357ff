// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BoxBlurGroups.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

using qx::BlurLine;
using qx::BlurLines;

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

template <class Pixel>
void box_blur(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, float radius,
              std::uint32_t conv_flags, int iterations, bool copy_lines) {
    const int passes = radius == 0 ? std::min(iterations, 1) : iterations;  // more would change nothing
    QXp_CPUBoxBlur1DInfo info(radius, conv_flags, passes, src, dst, copy_lines);
    const qx::BoxGroups<Pixel> groups(src, dst, info);
    const bool filters = info.GetIterations() > 0;
    const bool grouped = filters && qx::blur_groups() != nullptr && groups.buffer_bytes() > 0;
    if (grouped) {
        info.make_buffers(1, groups.buffer_bytes());
    } else {
        info.make_buffers(info.GetNumberOfBuffers(), static_cast<std::size_t>(info.GetScratchSize()) * sizeof(Pixel));
    }
    const auto work = [&](std::int32_t thread, std::int64_t from, std::int64_t to, std::int64_t count) {
        if (grouped) {
            groups.blur(thread, from, to, count);
        } else if (filters) {
            box_line(info, thread, src.line<Pixel>(from), dst.line<Pixel>(to));
        }
    };
    qx::BlurRun<Pixel, decltype(work)>(progress, src, dst, grouped ? groups.lines() : 1, grouped ? groups.lead() : 0,
                                       work);
}

}  // namespace

void QX_BoxBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius, std::uint32_t conv_flags,
                  int iterations, int src_vertical, GK::AlphaType src_alpha, int dst_vertical, GK::AlphaType dst_alpha,
                  bool copy_lines, QX_World* dst) {
    qx::check_blur(src, dst);
    const auto blur = [&]<class Pixel>() {
        const BlurLines from(*src, src_vertical != 0, src_alpha), to(*dst, dst_vertical != 0, dst_alpha);
        box_blur<Pixel>(progress, from, to, qx::limited_radius(radius), conv_flags, iterations, copy_lines);
    };
    qx::must_have_depth(dst->Depth(), qx::Place::blur, blur, "");
}
