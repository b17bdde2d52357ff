// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/TweenChoices.h"

#include <algorithm>
#include <numeric>

#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/PixelChoices.h"

namespace solvan_of {
namespace {

constexpr std::int32_t kRoom = 16 * 1024;  // vectors that are sampled together
constexpr float kWorst = 1.7014117e38f;    // a choice costs less
constexpr float kOverflow = 128.0f;        // what stands for a sample where the displacement overflows
constexpr float kOutside = 16711425.0f;    // and where it leads outside

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
                to = kOverflow;
            } else if (px < 0.0f || px > width || py < 0.0f || py > height) {
                to = kOutside;
            } else {
                to = found[count];
            }
        }
    }
}

/// In which order the entries of both lists are looked at.
struct TweenChoices::Orders {
    std::int32_t a[kMost], b[kMost];

    explicit Orders(const Pixel& pixel) {
        std::iota(a, a + pixel.a.count, 0);
        std::iota(b, b + pixel.b.count, 0);
    }
    /// Borrowed entries keep the order that they have been shuffled to.
    void shuffle(const Pixel& pixel) {
        RandomSequence random(pixel.random);
        if (!pixel.borrows_a) shuffle_fully(a, pixel.a.count, random);
        if (!pixel.borrows_b) shuffle_fully(b, pixel.b.count, random);
        if (pixel.borrows_a) std::copy_n(b, pixel.b.count, a);
        if (pixel.borrows_b) std::copy_n(a, pixel.a.count, b);
    }
};

void TweenChoices::choose(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b, HvVec2& a, HvVec2& b) const {
    const HvVec2 *const list_a = vectors_.get() + pixel.a.first, *const list_b = vectors_.get() + pixel.b.first;
    const bool borrows = pixel.borrows_a || pixel.borrows_b;
    if (pixel.a.count == 1 && pixel.b.count == 1 && !borrows) {
        a = list_a[0];
        b = list_b[0];
        return;
    }
    Orders orders(pixel);
    if (pixel.state == kSeenInBoth) {
        const auto turned = [](bool borrowed, const HvVec2& own, const HvVec2& other) {
            return borrowed ? HvVec2{-other.x, -other.y} : own;
        };
        const HvVec2 ma = turned(pixel.borrows_a, mean_a, mean_b), mb = turned(pixel.borrows_b, mean_b, mean_a);
        Pair best = cheapest_pair(pixel, ma, mb, orders);
        if (best.is_tied) {  // a shuffle shows among equally cheap pairs alone
            orders.shuffle(pixel);
            best = cheapest_pair(pixel, ma, mb, orders);
        }
        if (best.a < 0) return;
        a = list_a[best.a];
        b = list_b[best.b];
    } else if (pixel.state == kFirstAlone || pixel.state == kSecondAlone) {
        orders.shuffle(pixel);
        const bool first_alone = pixel.state == kFirstAlone;
        const std::int32_t best = first_alone ? nearest(pixel.a, mean_a, orders.a) : nearest(pixel.b, mean_b, orders.b);
        if (best < 0) return;
        (first_alone ? a : b) = (first_alone ? list_a : list_b)[best];
    }
}

TweenChoices::Pair TweenChoices::cheapest_pair(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b,
                                               const Orders& orders) const {
    const auto& p = parameters_;
    const bool is_masked = p.mask != nullptr && p.mask->at(pixel.x, pixel.y) > 0.5f;
    const float data = is_masked ? 0.0f : p.data_weight * 65535.0f;
    const HvVec2 *const list_a = vectors_.get() + pixel.a.first, *const list_b = vectors_.get() + pixel.b.first;
    const float *const shown_a = samples_.get() + pixel.a.first, *const shown_b = samples_.get() + pixel.b.first;
    float apart_b[kMost];
    for (std::int32_t k = 0; k < pixel.b.count; ++k) apart_b[k] = 8.0f * distance(mean_b, list_b[k]);
    Pair best;
    float lowest = kWorst;
    for (std::int32_t i = 0; i < pixel.a.count; ++i) {
        const HvVec2 a = list_a[orders.a[i]];
        const float shown = shown_a[orders.a[i]], apart_a = 8.0f * distance(mean_a, a);
        for (std::int32_t j = 0; j < pixel.b.count; ++j) {
            const std::int32_t k = orders.b[j];
            const HvVec2 b = list_b[k];
            const float cost = (std::fabs(a.x + b.x) + std::fabs(a.y + b.y)) * p.symmetry_weight +
                               std::fabs(shown_b[k] - shown) * data + (apart_b[k] + apart_a) * p.smoothness_weight;
            if (cost < lowest) {
                lowest = cost;
                best = {orders.a[i], k, false};
            } else if (cost == lowest) {
                best.is_tied = true;
            }
        }
    }
    if (best.a < 0) best.is_tied = false;
    return best;
}

/// The entry nearest to a mean, the first of equals; -1 where none is near at all.
std::int32_t TweenChoices::nearest(const Side& side, const HvVec2& mean, const std::int32_t* order) const {
    std::int32_t best = -1;
    float lowest = kWorst;
    for (std::int32_t i = 0; i < side.count; ++i) {
        const float cost = distance(mean, vectors_[side.first + order[i]]) * 8.0f * parameters_.smoothness_weight;
        if (cost >= lowest || cost != cost) continue;
        lowest = cost;
        best = order[i];
    }
    return best;
}

}  // namespace solvan_of
