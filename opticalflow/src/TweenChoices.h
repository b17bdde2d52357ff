// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/PairChoice.h"
#include "opticalflow/src/TweeningParameters.h"

namespace solvan_of {

/// The pixels of a stretch of a row that have pairs of vectors to choose from, and what both frames show where these
/// lead. Frames do not change, so that all are sampled at once; then pixel after pixel chooses.
class TweenChoices {
public:
    static constexpr int kMost = PairChoice::kMost;
    using List = Candidates<kMost>;

    struct Side {
        std::int32_t first, count;  ///< of vectors and samples
    };
    struct Pixel {
        std::int32_t x, y;
        std::int32_t state;         ///< an OcclusionState
        Side a, b;                  ///< vectors to frame 1, to frame 0
        bool borrows_a, borrows_b;  ///< these are the other's, negated
        std::uint32_t random;       ///< state of the random sequence before its shuffles

        bool has_one_pair() const { return a.count == 1 && b.count == 1 && !borrows_a && !borrows_b; }
    };

    /// Want of memory is thrown as a code.
    explicit TweenChoices(const FnMotionEstimateGradientTweeningParameters& parameters);

    /// The lists of the next pixel, to be emptied and filled: vectors to frame 1, to frame 0.
    List list_a, list_b;
    /// Takes the lists for a pixel, filtered, and draws what their shuffles take.
    void add(std::int32_t x, std::int32_t y, std::int32_t state, RandomSequence& random);
    bool is_full() const;
    void clear() { pixel_count_ = vector_count_ = 0; }
    void sample();

    const Pixel* begin() const { return pixels_.get(); }
    const Pixel* end() const { return pixels_.get() + pixel_count_; }
    /// What the pixel chooses, by the means of its neighbours; what it does not choose anew stays as it is.
    void choose(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b, HvVec2& a, HvVec2& b) const;

private:
    Side take(const List& list, bool negated);
    void sample_frame(const FloatTexture& frame, float k, Side Pixel::*side);
    PairChoice choice_of(const Pixel& pixel, const HvVec2& mean_a, const HvVec2& mean_b) const;
    void choose_nearest(const Pixel& pixel, const Side& side, const HvVec2& mean, HvVec2& to) const;

    const FnMotionEstimateGradientTweeningParameters& parameters_;
    EngineBlock<Pixel> pixels_;
    EngineBlock<HvVec2> vectors_;
    EngineBlock<float> x_, y_, found_, samples_;
    std::int32_t pixel_count_ = 0, vector_count_ = 0;
};

}  // namespace solvan_of
