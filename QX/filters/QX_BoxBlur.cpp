// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BlurRun.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

using qx::BlurEntries;
using qx::BlurGroups;
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

/// Positions of one pass: a line of entries, and where the pass begins in it.
struct Pass {
    BlurEntries in;
    std::int64_t length, offset, width;
    BlurEntries out;
    bool streams;

    bool has(std::int64_t at) const { return at >= 0 && at < length; }
    /// From a position on; entries of nothing where that lies outside.
    BlurEntries from(std::int64_t at) const {
        return has(at) ? BlurEntries{in.at(at), in.step} : BlurEntries{const_cast<std::byte*>(qx::kClearEntry), 0};
    }
};

/// One pass over a group, in stretches within which the same parts of the window lie in the line. Windows that lie
/// beside it give nothing.
template <class Pixel> class BoxGroupPass {
public:
    BoxGroupPass(const BlurGroups<Pixel>& groups, const qx::BoxWindow& window, const Pass& pass)
        : groups_(groups), window_(window), pass_(pass) {
        const std::int64_t reach = window.reach, end = pass.offset + pass.width;
        const std::int64_t first = pass.length > 0 ? std::clamp(-reach, pass.offset, end) : end;
        const std::int64_t past = std::clamp(pass.length + reach, first, end);
        groups.clear(pass.out, first - pass.offset);
        groups.clear({pass.out.at(past - pass.offset), pass.out.step}, end - past);
        if (past > first) run(first, past);
    }

private:
    void run(std::int64_t first, std::int64_t past) {
        alignas(64) std::byte sums[4 * 4 * qx::kMostLinesInGroup];
        const std::int64_t reach = window_.reach, left = std::max<std::int64_t>(first - reach, 0);
        const std::int64_t inside = std::max<std::int64_t>(std::min(first + reach, pass_.length) - left, 0);
        groups_.kernels().box_sums(pass_.from(left), groups_.entry_bytes(), inside, sums);
        for (std::int64_t at = first; at < past;) {
            std::int64_t next = at == first ? first + 1 : past;
            for (const std::int64_t turn : {reach, reach + 1, pass_.length - reach}) {
                if (turn > at) next = std::min(next, turn);
            }
            groups_.kernels().box(stretch(at, next - at, at > first), sums);
            at = next;
        }
    }
    qx::BoxStretch stretch(std::int64_t at, std::int64_t count, bool leaves) const {
        const std::int64_t reach = window_.reach;
        return {.count = count,
                .entry_bytes = groups_.entry_bytes(),
                .enter = pass_.from(at + reach),
                .leave = pass_.from(leaves ? at - reach - 1 : -1),
                .left = pass_.from(at - reach),
                .out = {pass_.out.at(at - pass_.offset), pass_.out.step},
                .divisor = divisor(at),
                .divisor_step = count > 1 ? divisor(at + 1) - divisor(at) : 0,
                .end_short = window_.end_short,
                .streams = pass_.streams};
    }
    std::int64_t divisor(std::int64_t at) const {
        if (!window_.normalises_edges()) return window_.full();
        const std::int64_t left = at - window_.reach, right = at + window_.reach;
        const std::int64_t inside = std::min(right, pass_.length - 1) - std::max<std::int64_t>(left, 0) + 1;
        return 1024 * inside - window_.end_short * (pass_.has(left) + pass_.has(right));
    }

    const BlurGroups<Pixel>& groups_;
    const qx::BoxWindow& window_;
    const Pass& pass_;
};

/// Groups of lines. Each thread has two buffers of entries, and a third where channels are to be kept.
template <class Pixel> class BoxGroups {
public:
    BoxGroups(const BlurLines& src, const BlurLines& dst, const QXp_CPUBoxBlur1DInfo& info)
        : groups_(src, dst), src_(src), dst_(dst), info_(info) {}

    std::int64_t lines() const { return groups_.lines(); }
    std::int64_t lead() const { return groups_.lead(); }
    /// 0 where that would be too much for a thread.
    std::size_t buffer_bytes() const {
        const std::int64_t longest = std::max({info_.GetScratchSize(), info_.GetSrcWidth(), dst_.length});
        return longest <= kMostEntries ? groups_.bytes(longest) : 0;
    }
    int buffers() const { return selects_all() ? 2 : 3; }

    void blur(std::int32_t thread, std::int64_t from, std::int64_t to, std::int64_t count) const {
        const int passes = info_.GetIterations();
        const auto buffer = [&](int pass) { return groups_.entries(info_.buffer(thread, pass & 1)); };
        Pass pass{.in = groups_.entries_of(src_, from, info_.GetSrcOffset()),
                  .length = info_.GetSrcWidth(),
                  .offset = 0,
                  .width = 0,
                  .out = {},
                  .streams = false};
        if (!info_.GetReadInputDirectly() || !groups_.has_entries(src_, count)) {
            pass.in = buffer(0);
            groups_.gather(src_, from, count, info_.GetSrcOffset(), pass.length, pass.in.first);
            if (info_.GetInputNeedsMatting()) groups_.matte(pass.in.first, pass.length);
        }
        const bool direct = groups_.has_entries(dst_, count) && selects_all();
        for (int i = 0; i < passes; ++i) {
            pass.offset = info_.GetSpanSrcDestOffsetAtIndex(i);
            pass.width = info_.GetSpanWidthAtIndex(i);
            const bool to_world = i == passes - 1 && direct;
            pass.out = to_world ? groups_.entries_of(dst_, to, 0) : buffer(i + 1);
            pass.streams = to_world && groups_.streams(pass.out);
            BoxGroupPass<Pixel>(groups_, info_.window(), pass);
            pass.in = pass.out;
            pass.length = pass.width;
        }
        if (!direct) store(info_.buffer(thread, passes & 1), info_.buffer(thread, 2), to, count);
        groups_.finish();
    }

private:
    static constexpr std::int64_t kMostEntries = 1 << 17;

    bool selects_all() const { return (info_.GetConvFlags() & 15) == 15; }
    void store(std::byte* made, std::byte* kept, std::int64_t to, std::int64_t count) const {
        if (!selects_all()) {
            groups_.gather(dst_, to, count, 0, dst_.length, kept);
            groups_.keep(info_.GetConvFlags(), kept, dst_.length, made);
        }
        groups_.scatter(made, to, count, 0, dst_.length);
    }

    BlurGroups<Pixel> groups_;
    const BlurLines &src_, &dst_;
    const QXp_CPUBoxBlur1DInfo& info_;
};

template <class Pixel>
void box_blur(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, float radius,
              std::uint32_t conv_flags, int iterations, bool copy_lines) {
    const int passes = radius == 0 ? std::min(iterations, 1) : iterations;  // more would change nothing
    QXp_CPUBoxBlur1DInfo info(radius, conv_flags, passes, src, dst, copy_lines);
    const BoxGroups<Pixel> groups(src, dst, info);
    const bool filters = info.GetIterations() > 0;
    const bool grouped = filters && qx::blur_groups() != nullptr && groups.buffer_bytes() > 0;
    if (grouped) {
        info.make_buffers(groups.buffers(), groups.buffer_bytes());
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
