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

/// Groups of lines, in blocks of positions. Taps are made wide once, in a buffer through which they move along.
template <class Pixel> class GaussianGroups {
public:
    GaussianGroups(const BlurLines& src, const BlurLines& dst, std::int64_t reach)
        : groups_(src, dst), src_(src), reach_(reach), margin_(reach + 1) {}

    std::int64_t lines() const { return groups_.lines(); }
    std::int64_t lead() const { return groups_.lead(); }
    /// Entries as they are stored: those that are read, those of the result, and those that keep channels; then wide
    /// ones, and weights.
    std::size_t buffer_bytes() const {
        return groups_.bytes(most_taps() + 2 * kMostInBlock) + wide_bytes() +
               static_cast<std::size_t>(reach_ + 3) * sizeof(qx::GaussianWeight<Pixel>);
    }

    void blur(const QXp_CPUBlur1DInfo& info, std::byte* buffer, std::int64_t from, std::int64_t to,
              std::int64_t count) const {
        const qx::GaussianLines lines = info.lines();
        std::byte* const made = buffer + groups_.bytes(most_taps());
        std::byte* const kept = made + groups_.bytes(kMostInBlock);
        std::byte* const wide = kept + groups_.bytes(kMostInBlock);
        auto* const weights = reinterpret_cast<qx::GaussianWeight<Pixel>*>(wide + wide_bytes());
        info.fill(weights);
        Window window{.begin = lines.offset - margin_, .end = lines.offset - margin_};
        groups_.for_blocks(to, block(), [&](std::int64_t at, std::int64_t positions) {
            const std::int64_t centre = at + lines.offset;
            take(info, window, from, count, centre - margin_, centre + positions + margin_, buffer, wide);
            const bool direct = groups_.has_entries_out(count) && lines.selects_all();
            const BlurEntries out = direct ? groups_.entries_out(to, at) : groups_.entries(made);
            groups_.kernels().gaussian(
                {.count = positions,
                 .reach = reach_,
                 .entry_bytes = groups_.entry_bytes(),
                 .taps = wide + (centre - reach_ - window.begin) * std::ptrdiff_t{qx::kWideUnit<Pixel>},
                 .plane_bytes = plane_bytes(),
                 .weights = weights,
                 .divisors = lines.divisors + at,
                 .out = out,
                 .streams = direct && groups_.streams(out)});
            if (direct) return;
            if (!lines.selects_all()) {
                groups_.gather(src_, from, count, centre, positions, kept);
                groups_.keep(lines.conv_flags, kept, positions, made);
            }
            groups_.scatter(made, to, count, at, positions);
        });
        groups_.finish();
    }

private:
    static constexpr std::int64_t kMostInBlock = 64;
    std::int64_t block() const { return groups_.are_columns() ? kMostInBlock / 2 : kMostInBlock; }
    /// Positions of the source line that are wide.
    struct Window {
        std::int64_t begin, end;
    };
    /// With one more on each side of the reach, for a pair of distances of which one lies beyond it.
    std::int64_t most_taps() const { return kMostInBlock + 2 * margin_; }
    std::int64_t most_wide() const { return 4 * most_taps(); }
    std::ptrdiff_t plane_bytes() const { return most_wide() * std::ptrdiff_t{qx::kWideUnit<Pixel>}; }
    std::size_t wide_bytes() const {
        return groups_.entry_bytes() / qx::kEntryUnit * static_cast<std::size_t>(plane_bytes());
    }

    /// Makes wide what a block needs and the window does not have yet.
    void take(const QXp_CPUBlur1DInfo& info, Window& window, std::int64_t line, std::int64_t count, std::int64_t begin,
              std::int64_t end, std::byte* raw, std::byte* wide) const {
        constexpr std::ptrdiff_t unit = qx::kWideUnit<Pixel>;
        if (end - window.begin > most_wide()) {
            for (std::size_t at = 0; at < wide_bytes(); at += static_cast<std::size_t>(plane_bytes())) {
                std::memmove(wide + at, wide + at + static_cast<std::size_t>((begin - window.begin) * unit),
                             static_cast<std::size_t>((window.end - begin) * unit));
            }
            window.begin = begin;
        }
        const std::int64_t positions = end - window.end;
        const bool inside = window.end >= 0 && end <= src_.length;
        BlurEntries in = groups_.entries_of(src_, line, window.end);
        if (!inside || info.mattes() || !groups_.has_entries(src_, count)) {
            groups_.gather(src_, line, count, window.end, positions, raw);
            if (info.mattes()) groups_.matte(raw, positions);
            in = groups_.entries(raw);
        }
        groups_.kernels().widen(in, groups_.entry_bytes(), positions, wide + (window.end - window.begin) * unit,
                                plane_bytes());
        window.end = end;
    }

    BlurGroups<Pixel> groups_;
    const BlurLines& src_;
    std::int64_t reach_, margin_;
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
