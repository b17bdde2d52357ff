// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BlurRun.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

using qx::BlurEntries;
using qx::BlurGroups;
using qx::BlurLine;
using qx::BlurLines;

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

/// Groups of lines, in blocks of positions that caches hold with their taps.
template <class Pixel> class GaussianGroups {
public:
    GaussianGroups(const BlurLines& src, const BlurLines& dst, std::int64_t reach)
        : groups_(src, dst), src_(src), dst_(dst), reach_(reach), block_(std::max<std::int64_t>(256, 2 * reach)) {}

    std::int64_t lines() const { return groups_.lines(); }
    std::int64_t lead() const { return groups_.lead(); }
    /// Entries as they are stored: those that are read, those of the result, and those that keep channels; and wide
    /// ones, with one more on each side for a pair of distances of which one is beyond the reach. Weights come last.
    std::size_t buffer_bytes() const {
        return groups_.bytes(taps() + 2 * block_) + wide_bytes(taps() + 2) +
               static_cast<std::size_t>(reach_ + 3) * sizeof(qx::GaussianWeight<Pixel>);
    }

    void blur(const QXp_CPUBlur1DInfo& info, std::byte* buffer, std::int64_t from, std::int64_t to,
              std::int64_t count) const {
        const qx::GaussianLines lines = info.lines();
        std::byte *const raw = buffer, *const made = raw + groups_.bytes(taps()),
                         *const kept = made + groups_.bytes(block_);
        std::byte* const wide = kept + groups_.bytes(block_);
        auto* const weights = reinterpret_cast<qx::GaussianWeight<Pixel>*>(wide + wide_bytes(taps() + 2));
        info.fill(weights);
        for (std::int64_t at = 0; at < dst_.length; at += block_) {
            const std::int64_t positions = std::min(block_, dst_.length - at), centre = at + lines.offset;
            widen(info, from, count, centre - reach_, positions + 2 * reach_, raw, wide + wide_bytes(1));
            const bool direct = groups_.has_entries(dst_, count) && lines.selects_all();
            const BlurEntries out = direct ? groups_.entries_of(dst_, to, at) : groups_.entries(made);
            groups_.kernels().gaussian({.count = positions,
                                        .reach = reach_,
                                        .entry_bytes = groups_.entry_bytes(),
                                        .taps = wide + wide_bytes(1),
                                        .weights = weights,
                                        .divisors = lines.divisors + at,
                                        .out = out,
                                        .streams = direct && groups_.streams(out)});
            if (direct) continue;
            if (!lines.selects_all()) {
                groups_.gather(src_, from, count, centre, positions, kept);
                groups_.keep(lines.conv_flags, kept, positions, made);
            }
            groups_.scatter(made, to, count, at, positions);
        }
        groups_.finish();
    }

private:
    std::int64_t taps() const { return block_ + 2 * reach_; }
    std::size_t wide_bytes(std::int64_t positions) const {
        return groups_.bytes(positions) / sizeof(QX_ChannelOf<Pixel>) * qx::kWideChannel<Pixel>;
    }
    void widen(const QXp_CPUBlur1DInfo& info, std::int64_t line, std::int64_t count, std::int64_t begin,
               std::int64_t positions, std::byte* raw, std::byte* wide) const {
        const bool inside = begin >= 0 && begin + positions <= src_.length;
        BlurEntries in = groups_.entries_of(src_, line, begin);
        if (!inside || info.mattes() || !groups_.has_entries(src_, count)) {
            groups_.gather(src_, line, count, begin, positions, raw);
            if (info.mattes()) groups_.matte(raw, positions);
            in = groups_.entries(raw);
        }
        groups_.kernels().widen(in, groups_.entry_bytes(), positions, wide);
    }

    BlurGroups<Pixel> groups_;
    const BlurLines &src_, &dst_;
    std::int64_t reach_, block_;
};

template <class Pixel>
void gaussian_blur(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, float radius,
                   std::uint32_t conv_flags, bool copy_lines) {
    const auto reach = static_cast<std::int64_t>(std::ceil(radius));
    const GaussianGroups<Pixel> groups(src, dst, reach);
    const bool grouped = qx::blur_groups() != nullptr && reach <= qx::kLongestGroupedGaussian;
    const QXp_CPUBlur1DInfo info(radius, conv_flags, src, dst, copy_lines, grouped ? groups.buffer_bytes() : 0);
    const auto work = [&](std::int32_t thread, std::int64_t from, std::int64_t to, std::int64_t count) {
        std::byte* const buffer = info.buffers().of(thread);
        if (grouped) return groups.blur(info, buffer, from, to, count);
        gaussian_line(info, buffer, src.line<Pixel>(from), dst.line<Pixel>(to));
    };
    qx::BlurRun<Pixel, decltype(work)>(progress, src, dst, grouped ? groups.lines() : 1, grouped ? groups.lead() : 0,
                                       work);
}

}  // namespace

void QX_GaussianBlur1D(const QX_ProgressInfo* progress, const QX_World* src, float radius, std::uint32_t conv_flags,
                       int src_vertical, GK::AlphaType src_alpha, int dst_vertical, GK::AlphaType dst_alpha,
                       bool copy_lines, QX_World* dst) {
    qx::check_blur(src, dst);
    const auto blur = [&]<class Pixel>() {
        const BlurLines from(*src, src_vertical != 0, src_alpha), to(*dst, dst_vertical != 0, dst_alpha);
        gaussian_blur<Pixel>(progress, from, to, qx::limited_radius(radius), conv_flags, copy_lines);
    };
    qx::must_have_depth(dst->Depth(), qx::Place::blur, blur, "");
}
