// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/TexIndexer.h"

#include <algorithm>
#include <utility>

#include "opticalflow/src/Position.h"

namespace solvan_of {

void TexAxis::set_size(std::int32_t pixels) {
    size = pixels;
    set_range(0, pixels - 1);
}

void TexAxis::set_range(std::int32_t from, std::int32_t to) {
    if (from > to) std::swap(from, to);
    first = std::clamp(from, 0, std::max(size - 1, 0));
    last = std::clamp(to, 0, std::max(size - 1, 0));
    length = last - first + 1;
}

std::int32_t TexAxis::index(std::int32_t index) const {
    if (index >= first && index <= last) return index;
    const auto in_period = [&](std::int64_t period) {
        const std::int64_t rest = (std::int64_t{index} - first) % period;
        return rest < 0 ? rest + period : rest;
    };
    switch (mode) {
        case Addressing::clamp:
            return index < first ? first : last;
        case Addressing::mirror: {
            const std::int64_t at = in_period(2 * std::int64_t{length});
            return first + static_cast<std::int32_t>(at < length ? at : 2 * std::int64_t{length} - 1 - at);
        }
        case Addressing::wrap:
            return first + static_cast<std::int32_t>(in_period(length));
        default:
            return -1;
    }
}

void FnTexIndexer::setRange(std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1) {
    x.set_range(x0, x1);
    y.set_range(y0, y1);
}

void FnTexIndexer::setAddressing(Addressing x_mode, Addressing y_mode) {
    x.mode = x_mode;
    y.mode = y_mode;
}

void FnTexIndexer::setIntegerOffset(std::int32_t dx, std::int32_t dy) {
    x.integer_offset = dx;
    y.integer_offset = dy;
    x.offset = static_cast<float>(dx);
    y.offset = static_cast<float>(dy);
}

void FnTexIndexer::setFloatOffset(float dx, float dy) {
    x.offset = dx;
    y.offset = dy;
    x.integer_offset = place_of(dx + 0.5f).whole;
    y.integer_offset = place_of(dy + 0.5f).whole;
}

}  // namespace solvan_of
