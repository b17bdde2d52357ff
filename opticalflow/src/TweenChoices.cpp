// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/TweenChoices.h"

#include <algorithm>

#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/PixelChoices.h"

namespace solvan_of {
namespace {

constexpr std::int32_t kRoom = 16 * 1024;  // vectors that are sampled together

}  // namespace

TweenChoices::TweenChoices(const FnMotionEstimateGradientTweeningParameters& parameters)
    : parameters_(parameters),
      pixels_(engineBlock<Pixel>(kRoom)),
      vectors_(engineBlock<HvVec2>(kRoom)),
      x_(engineBlock<float>(kRoom)),
      y_(engineBlock<float>(kRoom)),
      found_(engineBlock<float>(kRoom)),
      samples_(engineBlock<float>(kRoom)) {
    if (pixels_ == nullptr || vectors_ == nullptr || x_ == nullptr || y_ == nullptr || found_ == nullptr ||
        samples_ == nullptr)
        throw 4;
}

bool TweenChoices::is_full() const { return vector_count_ + 2 * kMost > kRoom || pixel_count_ == kRoom; }

void TweenChoices::add(std::int32_t x, std::int32_t y, std::int32_t state, RandomSequence& random) {
    list_a.filter();
    list_b.filter();
    const bool lacks_one = list_a.count() == 0 || list_b.count() == 0, borrows = parameters_.has(kBorrowsCandidates);
    if (state == kSeenInBoth && lacks_one && !borrows) return;
    Pixel& pixel = pixels_[pixel_count_++];
    pixel = {x, y, state, {}, {}, borrows && list_a.count() == 0, borrows && list_b.count() == 0, random.state()};
    if (list_a.count() != 1 || list_b.count() != 1) random.skip(list_a.count() + list_b.count());
    pixel.a = take(pixel.borrows_a ? list_b : list_a, pixel.borrows_a);
    pixel.b = take(pixel.borrows_b ? list_a : list_b, pixel.borrows_b);
}

TweenChoices::Side TweenChoices::take(const List& list, bool negated) {
    const Side side{vector_count_, list.count()};
    for (const HvVec2& v : list) vectors_[vector_count_++] = negated ? HvVec2{-v.x, -v.y} : v;
    return side;
}

void TweenChoices::sample() {
    sample_frame(*parameters_.second_frame, 1.0f - parameters_.position, &Pixel::a);
    sample_frame(*parameters_.first_frame, parameters_.position, &Pixel::b);
}

/// What a frame shows where the vectors of one side, scaled by k, lead.
void TweenChoices::sample_frame(const FloatTexture& frame, float k, Side Pixel::*side) {
    std::int32_t count = 0;
    for (const Pixel& pixel : *this) {
        const float px = static_cast<float>(pixel.x) + 0.5f, py = static_cast<float>(pixel.y) + 0.5f;
        const HvVec2* const v = vectors_.get() + (pixel.*side).first;
        for (std::int32_t i = 0; i < (pixel.*side).count; ++i, ++count) {
            x_[count] = px - k * v[i].x;
            y_[count] = py + k * v[i].y;
        }
    }
    float* const found = found_.get();
    kernels().ring->samples({frame.row(0), frame.width(), frame.height()}, count, x_.get(), y_.get(), found);
    const auto width = static_cast<float>(parameters_.width), height = static_cast<float>(parameters_.height);
    count = 0;
    for (const Pixel& pixel : *this) {
        const Side& s = pixel.*side;
        const HvVec2* const v = vectors_.get() + s.first;
        for (std::int32_t i = 0; i < s.count; ++i, ++count) {
            const float dx = k * v[i].x, dy = k * v[i].y, px = x_[count], py = y_[count];
            float& to = samples_[s.first + i];
            if (dx == 0.0f && dy == 0.0f) {
                to = frame.at(pixel.x, pixel.y);
            } else if (dx == INVALID_VECTOR) {
                to = qx::kOverflowShows;
            } else if (px < 0.0f || px > width || py < 0.0f || py > height) {
                to = qx::kOutsideShows;
            } else {
                to = found[count];
            }
        }
    }
}

void TweenChoices::choose(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b, HvVec2& a, HvVec2& b) const {
    const HvVec2 *const list_a = vectors_.get() + pixel.a.first, *const list_b = vectors_.get() + pixel.b.first;
    if (pixel.has_one_pair()) {
        a = list_a[0];
        b = list_b[0];
    } else if (pixel.state == kSeenInBoth) {
        const PairChoice choice = choice_of(pixel, mean_a, mean_b);
        ChosenPair best = cheapest_pair(choice);
        if (best.is_tied) best = cheapest_shuffled_pair(choice);  // a shuffle shows among equally cheap pairs alone
        if (best.a < 0) return;
        a = list_a[best.a];
        b = list_b[best.b];
    } else if (pixel.state == kFirstAlone) {
        choose_nearest(pixel, pixel.a, choice_of(pixel, mean_a, mean_b).mean_a, a);
    } else if (pixel.state == kSecondAlone) {
        choose_nearest(pixel, pixel.b, choice_of(pixel, mean_a, mean_b).mean_b, b);
    }
}

PairChoice TweenChoices::choice_of(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b) const {
    const auto& p = parameters_;
    const bool is_masked = p.mask != nullptr && p.mask->at(pixel.x, pixel.y) > 0.5f;
    const auto negated = [](const HvVec2& v) { return HvVec2{-v.x, -v.y}; };
    return {.a = vectors_.get() + pixel.a.first,
            .b = vectors_.get() + pixel.b.first,
            .shown_a = samples_.get() + pixel.a.first,
            .shown_b = samples_.get() + pixel.b.first,
            .count_a = pixel.a.count,
            .count_b = pixel.b.count,
            .mean_a = pixel.borrows_a ? negated(mean_b) : mean_a,
            .mean_b = pixel.borrows_b ? negated(mean_a) : mean_b,
            .symmetry = p.symmetry_weight,
            .data = is_masked ? 0.0f : p.data_weight * 65535.0f,
            .smoothness = p.smoothness_weight,
            .random = pixel.random,
            .borrows_a = pixel.borrows_a,
            .borrows_b = pixel.borrows_b};
}

/// The entry nearest to a mean, the first of equals after the shuffles; none where none is near at all.
void TweenChoices::choose_nearest(const Pixel& pixel, const Side& side, const HvVec2& mean, HvVec2& to) const {
    HvVec2 shuffled[kMost];
    std::copy_n(vectors_.get() + side.first, side.count, shuffled);
    RandomSequence random(pixel.random);
    const bool is_behind = &side == &pixel.b && !pixel.borrows_a && !pixel.borrows_b;
    if (is_behind) random.skip(pixel.a.count);  // borrowed vectors are shuffled as the others are
    shuffle_fully(shuffled, side.count, random);
    float lowest = kMostPairCost;
    for (std::int32_t i = 0; i < side.count; ++i) {
        const float cost = distance(mean, shuffled[i]) * 8.0f * parameters_.smoothness_weight;
        if (!(cost < lowest)) continue;
        lowest = cost;
        to = shuffled[i];
    }
}

}  // namespace solvan_of
