// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>

#include "QX/filters/QX_BlurInfo.h"
#include "QX/filters/QX_BlurKernels.h"
#include "QX/indep/QX_Guard.h"
#include "QX/iterate/QX_Iterate.h"
#include "lanes/Streams.h"
#include "platform/TK_CPU.h"

/// How the line blurs of worlds run: their checks, lines in groups, and groups of lines as entries.
namespace qx {

/// Throws for worlds that are no pair of one depth. Which depth that is, is not looked at.
void check_blur(const QX_World* src, const QX_World* dst);

/// Limited to 0..32767; NaN is 0.
inline float limited_radius(float radius) { return radius > 0 ? std::min(radius, 32767.0f) : 0.0f; }

/// The kernels of groups, and null at the plain level.
const BlurKernels* blur_groups();

/// Calls work(thread, first source line, first destination line, count) for neighbours, at most `lines_in_group`, and
/// clears lines that have no source line.
template <class Pixel, class Work> class BlurRun {
public:
    /// @param lead  lines that the first group has less
    BlurRun(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, std::int64_t lines_in_group,
            std::int64_t lead, const Work& work)
        : progress_(progress), src_(src), dst_(dst), group_(lines_in_group), lead_(lead), work_(work) {
        const std::int64_t lines = dst_.count > 0 ? dst_.count + lead_ : 0;
        const auto groups = static_cast<std::int32_t>((lines + group_ - 1) / group_);
        throw_if(QX_IterateGeneric(groups, this, [](void* run, std::int32_t thread, std::int32_t i, std::int32_t) {
            return guarded([&] { return static_cast<const BlurRun*>(run)->group(thread, i * std::int64_t{1}); });
        }));
    }

private:
    int group(std::int32_t thread, std::int64_t index) const {
        const std::int64_t first = std::max<std::int64_t>(index * group_ - lead_, 0);
        const std::int64_t end = std::min((index + 1) * group_ - lead_, dst_.count);
        for (std::int64_t i = first; i < end; ++i) {
            if (const int code = asked(thread)) return code;
        }
        const std::int64_t to_source = std::int64_t{dst_.across} - src_.across;
        const std::int64_t begin = std::clamp(-to_source, first, end);
        const std::int64_t past = std::clamp(src_.count - to_source, begin, end);
        for (std::int64_t i = first; i < end; ++i) {
            if (i < begin || i >= past) dst_.line<Pixel>(i).clear();
        }
        if (past > begin) work_(thread, begin + to_source, begin, past - begin);
        return 0;
    }
    int asked(std::int32_t thread) const {
        const bool asks = thread == 0 && progress_ != nullptr && progress_->abort_func != nullptr;
        return asks ? progress_->abort_func(progress_->refcon) : 0;
    }

    const QX_ProgressInfo* progress_;
    const BlurLines &src_, &dst_;
    std::int64_t group_, lead_;
    const Work& work_;
};

/// Lines of a source and a destination as entries. Those of columns are as many as a group may have, so that what is
/// read of a row is long.
template <class Pixel> class BlurGroups {
public:
    BlurGroups(const BlurLines& src, const BlurLines& dst)
        : src_(src),
          dst_(dst),
          entry_bytes_(is_columns(src) && is_columns(dst) ? kMostLinesInGroup * sizeof(Pixel) : kRowEntry<Pixel>),
          past_caches_(2 * dst.bytes() >= TK_GetCacheBytes()) {}

    bool are_columns() const { return is_columns(src_) && is_columns(dst_); }
    std::size_t entry_bytes() const { return entry_bytes_; }
    /// Lines that the first group lacks, so that others begin with a line of the caches.
    std::int64_t lead() const {
        const auto before = static_cast<std::int64_t>(bytes_to_line(dst_.first) / sizeof(Pixel));
        return past_caches_ && is_columns(dst_) && before % lines() != 0 ? lines() - before % lines() : 0;
    }
    /// Whether entries of the destination go past the caches.
    bool streams(const BlurEntries& out) const {
        const auto is_whole = [](std::ptrdiff_t step) { return step % static_cast<std::ptrdiff_t>(kLine) == 0; };
        if (!past_caches_) return false;
        return out.are_rows() ? is_whole(out.row_step) && bytes_to_line(out.first) % sizeof(Pixel) == 0
                              : is_whole(out.step) && bytes_to_line(out.first) == 0;
    }
    /// What waits for stores past the caches, on the thread that made them.
    void finish() const {
        if (past_caches_) _mm_sfence();
    }
    std::int64_t lines() const { return static_cast<std::int64_t>(entry_bytes_ / sizeof(Pixel)); }
    BlurEntries entries(std::byte* buffer) const { return {buffer, static_cast<std::ptrdiff_t>(entry_bytes_)}; }
    std::size_t bytes(std::int64_t positions) const { return static_cast<std::size_t>(positions) * entry_bytes_; }

    /// Whether a group lies in a world as entries do, and whether boxes take and make it there.
    bool has_entries(const BlurLines& world, std::int64_t count) const { return is_columns(world) && count == lines(); }
    bool boxes_entries(const BlurLines& world, std::int64_t count) const {
        if (is_columns(world) || !kernels().boxes_rows) return has_entries(world, count);
        return has_rows(world) && count == lines();
    }
    /// Whether boxes multiply the world's colours by alpha as they read it.
    bool boxes_matte(const BlurLines& world) const {
        return !is_columns(world) && kernels().boxes_rows && has_rows(world);
    }
    static BlurEntries entries_of(const BlurLines& world, std::int64_t line, std::int64_t position) {
        return {world.first + line * world.line_step + position * world.pixel_step, world.pixel_step,
                is_columns(world) ? 0 : world.line_step};
    }
    void clear(const BlurEntries& to, std::int64_t positions) const {
        if (to.are_rows()) {
            for (std::int64_t i = 0; i < lines(); ++i)
                std::memset(to.first + i * to.row_step, 0, static_cast<std::size_t>(positions) * sizeof(Pixel));
        } else {
            for (std::int64_t i = 0; i < positions; ++i) std::memset(to.at(i), 0, entry_bytes_);
        }
    }

    bool has_entries_out(std::int64_t count) const { return has_entries(dst_, count); }
    BlurEntries entries_out(std::int64_t line, std::int64_t position) const { return entries_of(dst_, line, position); }

    /// Calls body(position, count) for blocks of positions of the destination. Those of rows end where lines of the
    /// caches do.
    template <class Body> void for_blocks(std::int64_t line, std::int64_t block, const Body& body) const {
        const auto before = static_cast<std::int64_t>(bytes_to_line(entries_of(dst_, line, 0).first) / sizeof(Pixel));
        std::int64_t end = is_columns(dst_) || before == 0 ? block : before;
        for (std::int64_t at = 0; at < dst_.length; at = end, end += block) {
            body(at, std::min(end, dst_.length) - at);
        }
    }

    /// Copies positions of `count` lines to a buffer; those outside the lines are clear.
    void gather(const BlurLines& world, std::int64_t line, std::int64_t count, std::int64_t begin,
                std::int64_t positions, std::byte* buffer, bool asks_ahead = true) const {
        const BlurEntries to = entries(buffer);
        const std::int64_t first = std::clamp<std::int64_t>(-begin, 0, positions);
        const std::int64_t end = std::clamp<std::int64_t>(world.length - begin, first, positions);
        clear(to, first);
        clear({to.at(end), to.step}, positions - end);
        const BlurEntries from = entries_of(world, line, begin + first);
        if (is_columns(world)) {
            for (std::int64_t i = 0; i < end - first; ++i) std::memcpy(to.at(first + i), from.at(i), bytes_of(count));
        } else {
            for_units(count, [&](std::int64_t first_line, std::int64_t lines, std::ptrdiff_t at) {
                kernels().gather(from.first + first_line * world.line_step, world.line_step, lines, end - first,
                                 {to.at(first) + at, to.step}, asks_ahead);
            });
        }
    }
    void scatter(std::byte* buffer, std::int64_t line, std::int64_t count, std::int64_t begin,
                 std::int64_t positions) const {
        const BlurEntries to = entries_of(dst_, line, begin), from = entries(buffer);
        if (is_columns(dst_)) {
            for (std::int64_t i = 0; i < positions; ++i) std::memcpy(to.at(i), from.at(i), bytes_of(count));
        } else {
            for_units(count, [&](std::int64_t first_line, std::int64_t lines, std::ptrdiff_t at) {
                kernels().scatter({buffer + at, from.step}, lines, positions, to.first + first_line * dst_.line_step,
                                  dst_.line_step, past_caches_);
            });
        }
    }
    void matte(std::byte* buffer, std::int64_t positions) const { kernels().matte(buffer, positions * lines()); }

    /// Takes the channels that are not selected from another buffer.
    void keep(std::uint32_t conv_flags, const std::byte* old, std::int64_t positions, std::byte* buffer) const {
        QX_ChannelOf<Pixel> channel[4];
        std::byte selected[sizeof(Pixel)];
        for (unsigned c = 0; c < 4; ++c)
            std::memset(&channel[c], (conv_flags >> c & 1) != 0 ? 0xFF : 0, sizeof *channel);
        std::memcpy(selected, channel, sizeof selected);
        for (std::size_t i = 0; i < bytes(positions); i += sizeof selected) {
            for (std::size_t k = 0; k < sizeof selected; ++k) {
                buffer[i + k] = (buffer[i + k] & selected[k]) | (old[i + k] & ~selected[k]);
            }
        }
    }
    static const BlurGroupKernels<Pixel>& kernels() { return blur_groups()->of<Pixel>(); }

private:
    /// Calls body(first line, lines, bytes in an entry) for the lines that each kEntryUnit of an entry has.
    template <class Body> static void for_units(std::int64_t lines, const Body& body) {
        constexpr auto unit = static_cast<std::int64_t>(kEntryUnit / sizeof(Pixel));
        for (std::int64_t line = 0; line < lines; line += unit) {
            body(line, std::min(unit, lines - line), line * static_cast<std::ptrdiff_t>(sizeof(Pixel)));
        }
    }
    static bool is_columns(const BlurLines& world) {
        return world.line_step == static_cast<std::ptrdiff_t>(sizeof(Pixel));
    }
    static bool has_rows(const BlurLines& world) {
        return world.pixel_step == static_cast<std::ptrdiff_t>(sizeof(Pixel)) && world.line_step != 0;
    }
    static std::size_t bytes_of(std::int64_t lines) { return static_cast<std::size_t>(lines) * sizeof(Pixel); }

    const BlurLines &src_, &dst_;
    std::size_t entry_bytes_;
    bool past_caches_;
};

}  // namespace qx
