// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <bit>

#include "QX/filters/QX_BlurRun.h"

/// Boxes over groups of lines. All passes move along the lines together: what one makes the next one reads soon after,
/// so that between them a window of entries is kept and no whole line.
namespace qx {

/// Positions of a line that are kept, in a buffer through which they move; those of a world are all there.
struct BlurBelt {
    BlurEntries entries{};  ///< from `begin` on
    std::int64_t begin = 0, end = 0, length = 0;
    std::int64_t room = 0;  ///< 0 of a world

    bool has(std::int64_t at) const { return at >= 0 && at < length; }
    /// From a position on; entries of nothing where that lies outside.
    BlurEntries from(std::int64_t at) const {
        if (!has(at)) return {const_cast<std::byte*>(kClearEntry), 0};
        return entries.from(at - begin);
    }
    /// Makes room for more positions by giving up those before `keep`.
    void reserve(std::int64_t more, std::int64_t keep) {
        if (end - begin + more <= room) return;
        keep = std::clamp(keep, begin, end);
        std::memmove(entries.first, entries.at(keep - begin), static_cast<std::size_t>((end - keep) * entries.step));
        begin = keep;
    }
};

/// One pass over a group, a block of positions after the other, in stretches within which the same parts of the window
/// lie in the line. Windows that lie beside it give nothing.
template <class Pixel> class BoxGroupPass {
public:
    /// The pass begins at position `offset` of the line that it reads.
    void begin(const BoxWindow& window, std::int64_t length, std::int64_t offset) {
        window_ = &window, length_ = length, offset_ = at_ = offset;
    }
    /// What the next positions read of the line lies between these.
    std::int64_t reads_from() const { return at_ - window_->reach - 1; }
    std::int64_t reads_to(std::int64_t positions) const { return at_ + positions + window_->reach; }

    void run(const BlurGroups<Pixel>& groups, const BlurBelt& in, std::int64_t positions, const BlurEntries& out,
             bool streams, const RowsAhead& ahead = {}) {
        const std::int64_t end = at_ + positions, begin = at_;
        const std::int64_t past = length_ > 0 ? length_ + window_->reach : at_;
        while (at_ < end) {
            const BlurEntries to = out.from(at_ - begin);
            std::int64_t next = end;
            if (at_ < -window_->reach || at_ >= past) {
                if (at_ < -window_->reach) next = std::min(end, -window_->reach);
                groups.clear(to, next - at_);
            } else {
                next = end_of_stretch(std::min(end, past));
                if (!started_) sum_up(groups, in);
                BoxStretch part = stretch(groups, in, next - at_, to, streams);
                if (next - at_ == positions) part.ahead = ahead;
                groups.kernels().box(part, sums_);
                started_ = true;
            }
            at_ = next;
        }
    }

private:
    std::int64_t end_of_stretch(std::int64_t end) const {
        if (!started_) return at_ + 1;  // nothing leaves the first window
        for (const std::int64_t turn : {window_->reach, window_->reach + 1, length_ - window_->reach}) {
            if (turn > at_) end = std::min(end, turn);
        }
        return end;
    }
    /// The first window but for the pixel that enters last.
    void sum_up(const BlurGroups<Pixel>& groups, const BlurBelt& in) {
        const std::int64_t left = std::max<std::int64_t>(at_ - window_->reach, 0);
        const std::int64_t inside = std::max<std::int64_t>(std::min(at_ + window_->reach, length_) - left, 0);
        std::memset(sums_, 0, sizeof sums_);
        groups.kernels().box_sums(in.from(left), groups.entry_bytes(), inside, sums_);
    }
    BoxStretch stretch(const BlurGroups<Pixel>& groups, const BlurBelt& in, std::int64_t count, const BlurEntries& out,
                       bool streams) const {
        return {.count = count,
                .entry_bytes = groups.entry_bytes(),
                .enter = in.from(at_ + window_->reach),
                .leave = in.from(started_ ? reads_from() : -1),
                .left = in.from(at_ - window_->reach),
                .out = out,
                .divisor = divisor(at_),
                .divisor_step = count > 1 ? divisor(at_ + 1) - divisor(at_) : 0,
                .end_short = window_->end_short,
                .streams = streams};
    }
    std::int64_t divisor(std::int64_t at) const {
        if (!window_->normalises_edges()) return window_->full();
        const std::int64_t left = at - window_->reach, right = at + window_->reach;
        const std::int64_t inside = std::min(right, length_ - 1) - std::max<std::int64_t>(left, 0) + 1;
        return 1024 * inside - window_->end_short * ((left >= 0 && left < length_) + (right >= 0 && right < length_));
    }

    const BoxWindow* window_ = nullptr;
    std::int64_t length_ = 0, offset_ = 0, at_ = 0;
    bool started_ = false;
    alignas(64) std::byte sums_[4 * 4 * kMostLinesInGroup];
};

template <class Pixel> class BoxGroups {
public:
    BoxGroups(const BlurLines& src, const BlurLines& dst, const QXp_CPUBoxBlur1DInfo& info)
        : groups_(src, dst), src_(src), dst_(dst), info_(info) {}

    std::int64_t lines() const { return groups_.lines(); }
    std::int64_t lead() const { return groups_.lead(); }
    /// Belts, and a block of what is made and of what is kept. 0 where that would be too much, or passes too many.
    std::size_t buffer_bytes() const {
        if (info_.GetIterations() > kMostPasses) return 0;
        const std::size_t bytes = groups_.bytes(info_.GetIterations() * room() + 2 * block());
        return bytes <= kMostBytes ? bytes : 0;
    }

    void blur(std::int32_t thread, std::int64_t from, std::int64_t to, std::int64_t count) const {
        Group group{.line = from, .count = count};
        begin(group, info_.buffer(thread, 0));
        std::byte* const made = info_.buffer(thread, 0) + groups_.bytes(info_.GetIterations() * room());
        const bool direct = groups_.boxes_entries(dst_, count) && selects_all();
        const auto last = static_cast<std::size_t>(info_.GetIterations() - 1);
        const bool by_world = direct && last == 0 && group.belts[0].room == 0;
        groups_.for_blocks(to, by_world ? dst_.length : block(), [&](std::int64_t at, std::int64_t positions) {
            BoxGroupPass<Pixel>& pass = group.passes[last];
            fill(group, last, pass.reads_to(positions));
            const BlurEntries out = direct ? groups_.entries_out(to, at) : groups_.entries(made);
            pass.run(groups_, group.belts[last], positions, out, direct && groups_.streams(out), ahead(group));
            if (!direct) store(made, to, count, at, positions);
        });
        groups_.finish();
    }

private:
    static constexpr int kMostPasses = 8;
    static constexpr std::size_t kMostBytes = std::size_t{1} << 25;

    /// Pass i reads belt i.
    struct Group {
        std::int64_t line, count;
        std::array<BlurBelt, kMostPasses> belts{};
        std::array<BoxGroupPass<Pixel>, kMostPasses> passes{};
    };

    bool selects_all() const { return (info_.GetConvFlags() & 15) == 15; }
    /// Rows that need not be gathered lose least where a pass runs far.
    std::int64_t block() const { return groups_.are_columns() ? 32 : groups_.kernels().boxes_rows ? 256 : 64; }
    /// Several times what a pass reads for a block, so that positions are seldom moved.
    std::int64_t room() const { return 4 * (2 * info_.window().reach + 2 + block()); }

    void begin(Group& group, std::byte* buffer) const {
        const bool mattes = info_.GetInputNeedsMatting() && groups_.boxes_matte(src_);
        const bool reads_world = (info_.GetReadInputDirectly() || mattes) && groups_.boxes_entries(src_, group.count);
        for (int i = 0; i < info_.GetIterations(); ++i) {
            BlurBelt& belt = group.belts[static_cast<std::size_t>(i)];
            belt.length = i == 0 ? info_.GetSrcWidth() : info_.GetSpanWidthAtIndex(i - 1);
            if (i == 0 && reads_world) {
                belt.entries = groups_.entries_of(src_, group.line, info_.GetSrcOffset());
                belt.entries.mattes = mattes;
                belt.end = belt.length;
            } else {
                belt.entries = groups_.entries(buffer + groups_.bytes(i * room()));
                belt.room = room();
            }
            group.passes[static_cast<std::size_t>(i)].begin(info_.window(), belt.length,
                                                            info_.GetSpanSrcDestOffsetAtIndex(i));
        }
    }
    /// Whether the last pass asks for what will be gathered next: of whole groups of rows.
    bool asks_ahead(const Group& group) const {
        return group.count == lines() && !groups_.are_columns() && !groups_.kernels().boxes_rows;
    }
    RowsAhead ahead(const Group& group) const {
        const BlurBelt& belt = group.belts[0];
        constexpr std::int64_t line = 64;
        if (belt.room == 0 || !asks_ahead(group) || belt.end + block() > belt.length) return {};
        return {src_.first + group.line * src_.line_step + (info_.GetSrcOffset() + belt.end) * src_.pixel_step,
                src_.line_step, std::countr_zero(static_cast<std::uint64_t>(lines())),
                static_cast<int>(std::max<std::int64_t>(lines() * static_cast<std::int64_t>(sizeof(Pixel)) / line, 1))};
    }
    /// Has the positions of a belt before `until` made.
    void fill(Group& group, std::size_t which, std::int64_t until) const {
        BlurBelt& belt = group.belts[which];
        until = std::min(until, belt.length);
        while (belt.end < until) {
            const std::int64_t positions = std::min(until - belt.end, block());
            belt.reserve(positions, group.passes[which].reads_from());
            const BlurEntries out = belt.entries.from(belt.end - belt.begin);
            if (which == 0) {
                groups_.gather(src_, group.line, group.count, info_.GetSrcOffset() + belt.end, positions, out.first,
                               !asks_ahead(group));
                if (info_.GetInputNeedsMatting()) groups_.matte(out.first, positions);
            } else {
                auto& before = group.passes[which - 1];
                fill(group, which - 1, before.reads_to(positions));
                before.run(groups_, group.belts[which - 1], positions, out, false);
            }
            belt.end += positions;
        }
    }
    void store(std::byte* made, std::int64_t to, std::int64_t count, std::int64_t at, std::int64_t positions) const {
        if (!selects_all()) {
            std::byte* const kept = made + groups_.bytes(block());
            groups_.gather(dst_, to, count, at, positions, kept);
            groups_.keep(info_.GetConvFlags(), kept, positions, made);
        }
        groups_.scatter(made, to, count, at, positions);
    }

    BlurGroups<Pixel> groups_;
    const BlurLines &src_, &dst_;
    const QXp_CPUBoxBlur1DInfo& info_;
};

}  // namespace qx
