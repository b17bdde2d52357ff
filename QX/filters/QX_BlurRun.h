// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>

#include "QX/filters/QX_BlurInfo.h"
#include "QX/filters/QX_BlurKernels.h"
#include "QX/indep/QX_Guard.h"
#include "QX/iterate/QX_Iterate.h"

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
    BlurRun(const QX_ProgressInfo* progress, const BlurLines& src, const BlurLines& dst, std::int64_t lines_in_group,
            const Work& work)
        : progress_(progress), src_(src), dst_(dst), group_(lines_in_group), work_(work) {
        const auto groups = static_cast<std::int32_t>((std::max<std::int64_t>(dst_.count, 0) + group_ - 1) / group_);
        throw_if(QX_IterateGeneric(groups, this, [](void* run, std::int32_t thread, std::int32_t i, std::int32_t) {
            return guarded([&] { return static_cast<const BlurRun*>(run)->group(thread, i * std::int64_t{1}); });
        }));
    }

private:
    int group(std::int32_t thread, std::int64_t index) const {
        const std::int64_t first = index * group_, end = std::min(first + group_, dst_.count);
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
    std::int64_t group_;
    const Work& work_;
};

/// Lines of a source and a destination as entries. Entries of columns are twice as long as those of rows, which caches
/// hold whole lines of.
template <class Pixel> class BlurGroups {
public:
    BlurGroups(const BlurLines& src, const BlurLines& dst)
        : src_(src), dst_(dst), entry_bytes_(is_columns(src) && is_columns(dst) ? 2 * kEntryUnit : kEntryUnit) {}

    std::size_t entry_bytes() const { return entry_bytes_; }
    std::int64_t lines() const { return static_cast<std::int64_t>(entry_bytes_ / sizeof(Pixel)); }
    BlurEntries entries(std::byte* buffer) const { return {buffer, static_cast<std::ptrdiff_t>(entry_bytes_)}; }
    std::size_t bytes(std::int64_t positions) const { return static_cast<std::size_t>(positions) * entry_bytes_; }

    /// Whether a group lies in a world as entries do.
    bool has_entries(const BlurLines& world, std::int64_t count) const { return is_columns(world) && count == lines(); }
    static BlurEntries entries_of(const BlurLines& world, std::int64_t line, std::int64_t position) {
        return {world.first + line * world.line_step + position * world.pixel_step, world.pixel_step};
    }
    void clear(const BlurEntries& to, std::int64_t positions) const {
        for (std::int64_t i = 0; i < positions; ++i) std::memset(to.at(i), 0, entry_bytes_);
    }

    /// Copies positions of `count` lines to a buffer; those outside the lines are clear.
    void gather(const BlurLines& world, std::int64_t line, std::int64_t count, std::int64_t begin,
                std::int64_t positions, std::byte* buffer) const {
        const BlurEntries to = entries(buffer);
        const std::int64_t first = std::clamp<std::int64_t>(-begin, 0, positions);
        const std::int64_t end = std::clamp<std::int64_t>(world.length - begin, first, positions);
        clear(to, first);
        clear({to.at(end), to.step}, positions - end);
        const BlurEntries from = entries_of(world, line, begin + first);
        if (is_columns(world)) {
            for (std::int64_t i = 0; i < end - first; ++i) std::memcpy(to.at(first + i), from.at(i), bytes_of(count));
        } else {
            kernels().gather(from.first, world.line_step, count, end - first, to.at(first));
        }
    }
    void scatter(std::byte* buffer, std::int64_t line, std::int64_t count, std::int64_t begin,
                 std::int64_t positions) const {
        const BlurEntries to = entries_of(dst_, line, begin), from = entries(buffer);
        if (is_columns(dst_)) {
            for (std::int64_t i = 0; i < positions; ++i) std::memcpy(to.at(i), from.at(i), bytes_of(count));
        } else {
            kernels().scatter(buffer, count, positions, to.first, dst_.line_step);
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
    static bool is_columns(const BlurLines& world) {
        return world.line_step == static_cast<std::ptrdiff_t>(sizeof(Pixel));
    }
    static std::size_t bytes_of(std::int64_t lines) { return static_cast<std::size_t>(lines) * sizeof(Pixel); }

    const BlurLines &src_, &dst_;
    std::size_t entry_bytes_;
};

}  // namespace qx
