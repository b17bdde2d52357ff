// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowBox.h"
#include "opticalflow/src/FlowLanesT.h"

namespace qx::QX_ISA {

/// As many lines as a register has lanes, place by place. Lines beyond the last repeat it.
class BoxGroup {
public:
    QX_INLINE BoxGroup(const BoxLines& lines, std::int32_t first)
        : lines_(lines), count_(lesser(lines.lines - first, lanes_in<Floats>)), first_(first) {
        const Ints lane = lesser(lane_numbers<Ints>(), splat<Ints>(count_ - 1));
        offsets_ = lane * splat<Ints>(static_cast<std::int32_t>(lines.line_step));
    }

    QX_INLINE void load(float* to) const {
        const float* const line = lines_.source + first_ * lines_.line_step;
        const std::int32_t margin = lines_.shape.margin();
        const bool side_by_side = lines_.line_step == 1 && count_ == lanes_in<Floats>;
        for (std::int32_t at = -margin; at < lines_.length + margin; ++at, to += lanes_in<Floats>) {
            const std::int32_t index = lines_.index[at];
            if (index < 0) {
                store_lanes(to, splat<Floats>(lines_.background));
            } else {
                const float* const place = line + index * lines_.place_step;
                store_lanes(to, side_by_side ? load_lanes<Floats>(place) : gather_floats(place, offsets_));
            }
        }
    }

    QX_INLINE void store(std::int32_t pick, Floats v) const {
        float* const to = lines_.out + pick * lines_.out_pick_step + first_ * lines_.out_line_step;
        if (count_ == lanes_in<Floats> && lines_.out_line_step == 1) {
            store_lanes(to, v);
        } else {
            float lane[lanes_in<Floats>];
            store_lanes(lane, v);
            for (std::int32_t i = 0; i < count_; ++i) to[i * lines_.out_line_step] = lane[i];
        }
    }

private:
    const BoxLines& lines_;
    std::int32_t count_, first_;
    Ints offsets_;
};

/// One run over places [first, end) of `in`, whose values give(place, value) takes.
template <bool HasRest, class Give>
QX_INLINE void box_run(const BoxShape& shape, const float* in, std::int32_t first, std::int32_t end, const Give& give) {
    const auto at = [in](std::int32_t place)
                        QX_LAMBDA { return load_lanes<Floats>(in + std::ptrdiff_t{place} * lanes_in<Floats>); };
    const std::int32_t r = shape.radius;
    const Floats norm = splat<Floats>(shape.norm), rest = splat<Floats>(shape.rest);
    Floats sum{};
    for (std::int32_t k = first - r; k <= first + r; ++k) sum += at(k);
    for (std::int32_t k = first; k < end; ++k) {
        const Floats right = at(k + r + 1);
        if constexpr (HasRest) {
            give(k, (sum + rest * (at(k - r - 1) + right)) * norm);
        } else {
            give(k, sum * norm);
        }
        sum += right;
        sum -= at(k - r);
    }
}

template <bool HasRest> QX_INLINE void blur_group(const BoxLines& lines, std::int32_t first) {
    const BoxShape& shape = lines.shape;
    const BoxGroup group(lines, first);
    const std::int32_t margin = shape.margin();
    const std::ptrdiff_t half = (std::ptrdiff_t{lines.length} + 2 * margin) * lanes_in<Floats>;
    const auto place_0 = [&](int which) QX_LAMBDA {
        return lines.scratch + which * half + std::ptrdiff_t{margin} * lanes_in<Floats>;
    };
    group.load(lines.scratch);
    int from = 0;
    for (std::int32_t pass = 1; pass < shape.passes; ++pass, from = 1 - from) {
        const std::int32_t reach = (shape.passes - pass) * shape.extra;
        float* const to = place_0(1 - from);
        box_run<HasRest>(shape, place_0(from), -reach, lines.length + reach, [=](std::int32_t k, Floats v) QX_LAMBDA {
            store_lanes(to + std::ptrdiff_t{k} * lanes_in<Floats>, v);
        });
    }
    std::int32_t pick = 0;
    const std::int32_t end = lines.pick_count == 0 ? 0 : lines.picks[lines.pick_count - 1] + 1;
    box_run<HasRest>(shape, place_0(from), 0, end, [&](std::int32_t k, Floats v) QX_LAMBDA {
        for (; pick < lines.pick_count && lines.picks[pick] == k; ++pick) group.store(pick, v);
    });
}

inline void blur_lines(const BoxLines& lines) {
    for (std::int32_t first = 0; first < lines.lines; first += lanes_in<Floats>) {
        if (lines.shape.rest != 0.0f) {
            blur_group<true>(lines, first);
        } else {
            blur_group<false>(lines, first);
        }
    }
}

extern const FlowBox flow_box;
const FlowBox flow_box{.blur_lines = &blur_lines};

}  // namespace qx::QX_ISA
