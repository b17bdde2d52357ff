// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/Texture.h"

namespace solvan_of {

/// What a difference of luminance costs.
inline float data_cost(float difference, float weight) { return std::fabs(difference) * weight / 123.0f * 65535.0f; }

/// The number of the lowest cost; of equal ones that which a shuffle of all, begun at `state`, puts first. A first
/// entry that is no number stays: none is lower.
int lowest_after_shuffle(const float* costs, int count, std::uint32_t state);

/// The pixels of a row that have several vectors to choose from, and the samples to which their vectors lead.
class PixelChoices {
public:
    static constexpr int kMost = 9;  ///< vectors a pixel
    using List = Candidates<kMost>;

    struct Pixel {
        std::int32_t x;
        std::int32_t first, count;  ///< its vectors
        std::uint32_t state;        ///< of the random sequence before its shuffle
    };

    /// Want of memory is thrown as a code.
    explicit PixelChoices(std::int32_t width);

    void clear() { pixel_count_ = vector_count_ = 0; }
    void add(std::int32_t x, std::int32_t y, const List& list, std::uint32_t state);
    /// Samples where all vectors lead in `image`.
    void sample(const FloatTexture& image);

    const Pixel* begin() const { return pixels_.get(); }
    const Pixel* end() const { return pixels_.get() + pixel_count_; }
    const HvVec2* vectors(const Pixel& pixel) const { return vectors_.get() + pixel.first; }
    const float* samples(const Pixel& pixel) const { return samples_.get() + pixel.first; }

private:
    EngineBlock<Pixel> pixels_;
    EngineBlock<HvVec2> vectors_;
    EngineBlock<float> x_, y_, samples_;
    std::int32_t pixel_count_ = 0, vector_count_ = 0;
};

}  // namespace solvan_of
