// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/PixelChoices.h"

#include <numeric>

#include "opticalflow/src/Kernels.h"

namespace solvan_of {
namespace {

int first_lowest(const float* costs, const int* order, int count) {
    int best = order[0];
    for (int i = 1; i < count; ++i)
        if (costs[order[i]] < costs[best]) best = order[i];
    return best;
}

}  // namespace

// A shuffle shows among equal costs alone, so it is only made for these.
int lowest_after_shuffle(const float* costs, int count, std::uint32_t state) {
    int best = 0;
    bool is_clear = costs[0] == costs[0];
    for (int i = 1; i < count; ++i) {
        if (costs[i] < costs[best]) {
            best = i;
            is_clear = true;
        } else {
            is_clear &= costs[i] > costs[best];
        }
    }
    for (int i = 0; i < best; ++i) is_clear &= costs[i] == costs[i];
    if (is_clear) return best;
    int order[PixelChoices::kMost];
    std::iota(order, order + count, 0);
    RandomSequence random(state);
    shuffle(order, count, random);
    return first_lowest(costs, order, count);
}

PixelChoices::PixelChoices(std::int32_t width)
    : pixels_(engineBlock<Pixel>(static_cast<std::size_t>(width))),
      vectors_(engineBlock<HvVec2>(static_cast<std::size_t>(width) * kMost)),
      x_(engineBlock<float>(static_cast<std::size_t>(width) * kMost)),
      y_(engineBlock<float>(static_cast<std::size_t>(width) * kMost)),
      samples_(engineBlock<float>(static_cast<std::size_t>(width) * kMost)) {
    if (pixels_ == nullptr || vectors_ == nullptr || x_ == nullptr || y_ == nullptr || samples_ == nullptr) throw 4;
}

void PixelChoices::add(std::int32_t x, std::int32_t y, const List& list, std::uint32_t state) {
    pixels_[pixel_count_++] = {x, vector_count_, list.count(), state};
    const float px = static_cast<float>(x) + 0.5f, py = static_cast<float>(y) + 0.5f;
    for (const HvVec2& v : list) {
        vectors_[vector_count_] = v;
        x_[vector_count_] = px - v.x;
        y_[vector_count_] = py + v.y;
        ++vector_count_;
    }
}

void PixelChoices::sample(const FloatTexture& image) {
    kernels().ring->samples({image.row(0), image.width(), image.height()}, vector_count_, x_.get(), y_.get(),
                            samples_.get());
}

}  // namespace solvan_of
