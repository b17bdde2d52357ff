// SPDX-License-Identifier: Apache-2.0
// The vectors of a pair in the host's cache.
#include <bit>

#include "tests/opticalflow/FrontSupport.h"
#include "tests/platform/CacheKit.h"

namespace qx::test {
namespace {

class FlowCache : public CacheTest {
protected:
    Born born_{7};
};

/// Whether vectors are made, in memory or come from the disk does not show; nor that luminance is not on disk.
TEST_F(FlowCache, PicturesAreTheSameFromEverywhere) {
    for (const int depth : kDepths) {
        for (const int samples : {1, 3}) {
            Shot shot(depth);
            shot.params.samples = samples;
            const Frame made = shot.rendered();
            EXPECT_TRUE(same_bits(made, shot.expected(7)));
            EXPECT_TRUE(same_bits(shot.rendered(), made)) << "from memory, depth " << depth;
            start();
            EXPECT_TRUE(same_bits(shot.rendered(), made)) << "from disk, depth " << depth;
            EXPECT_EQ(standalone::CacheStatistics().hits_on_disk, 1u);
            EXPECT_TRUE(same_bits(shot.rendered(), made)) << "restored, from memory, depth " << depth;
        }
    }
}

TEST_F(FlowCache, TenPositionsMakeVectorsOnce) {
    Shot shot;
    for (int k = 1; k <= 10; ++k) {
        shot.other.position = k * 0.09;
        EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(7))) << k;
    }
    const auto counts = standalone::CacheStatistics();
    EXPECT_EQ(counts.adds, 1u);
    EXPECT_EQ(counts.hits_in_memory, 9u);
}

/// Vectors depend on how many bands there are.
TEST_F(FlowCache, OtherBandsFindNothing) {
    Shot shot(8, 90, 67, 7, 5);
    const Frame made = shot.rendered();
    const Born other(2);
    EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(2)));
    EXPECT_EQ(standalone::CacheStatistics().adds, 2u);
}

/// 54 words and both fields, of which the words are those of whole textures.
TEST_F(FlowCache, ItemsAreWrittenAsStated) {
    Shot shot;
    EXPECT_EQ(shot.render(), 0);
    const auto cached = cached_vectors(shot.identity());
    ASSERT_TRUE(cached.has_value());
    const std::uint32_t w = 20, h = 14, zero = std::bit_cast<std::uint32_t>(0.0f);
    std::vector<std::uint32_t> words{w, h};
    for (const auto& [pixel, mode] : {std::pair{4u, 1u}, {4u, 1u}, {8u, 0u}, {8u, 0u}}) {
        words.push_back(pixel * w);
        for (const std::uint32_t size : {w, h})
            for (const std::uint32_t word : {size, zero, mode, 0u, size - 1, 0u}) words.push_back(word);
    }
    EXPECT_EQ(cached->header, words);
    const auto file = files();
    ASSERT_EQ(file.size(), 1u);
    EXPECT_EQ(fs::file_size(file[0]), 52 + 4 * words.size() + 2 * 8 * w * h);
    EXPECT_EQ(standalone::CacheStatistics().bytes, 24 * w * h + 1024);
}

/// A size that is not that of the pair: whatever says otherwise, the vectors are missed and made.
TEST_F(FlowCache, VectorsOfAnotherSizeAreNotTaken) {
    for (const bool from_disk : {true, false}) {
        Shot large(8, 60, 44), small(8, 30, 22), wide(8, 60, 22);
        for (Shot* shot : {&small, &wide}) {
            large.other.firstFrameId = shot->other.firstFrameId;
            large.other.secondFrameId = shot->other.secondFrameId;
            EXPECT_EQ(large.render(), 0);
            if (from_disk) start();
            EXPECT_TRUE(same_bits(shot->rendered(), shot->expected(7)));
            if (!from_disk) continue;
            EXPECT_EQ(standalone::CacheStatistics().damaged, 1u);
            start();
            EXPECT_TRUE(same_bits(shot->rendered(), shot->expected(7)));
            EXPECT_EQ(standalone::CacheStatistics().hits_on_disk, 1u);
        }
    }
}

/// A frame's identity by which vectors are found has all that they depend on, and no more.
TEST_F(FlowCache, IdentitiesTellPairsApart) {
    Shot shot;
    const auto renders_anew = [&](const char* what) {
        const auto before = standalone::CacheStatistics().adds;
        EXPECT_EQ(shot.render(), 0) << what;
        return standalone::CacheStatistics().adds > before;
    };
    EXPECT_TRUE(renders_anew("first"));
    shot.other.firstTime = {3, 7}, shot.other.secondTime = {5, 7}, shot.other.position = 0.8;
    shot.other.reserved0 = shot.other.reserved1 = 9, shot.other.reserved2 = shot.other.reserved3 = 9;
    EXPECT_FALSE(renders_anew("position, times and what is carried"));
    std::swap(shot.other.firstFrameId, shot.other.secondFrameId);
    EXPECT_TRUE(renders_anew("exchanged"));
    for (float* field : {&shot.params.detail, &shot.params.estimator_smoothness, &shot.params.refine_smoothness,
                         &shot.params.convergence, &shot.params.shutter}) {
        *field *= 0.9f;
        EXPECT_TRUE(renders_anew("a number"));
    }
    for (int* field : {&shot.params.iterations, &shot.params.block, &shot.params.samples}) {
        ++*field;
        EXPECT_TRUE(renders_anew("a count"));
    }
    shot.params.sinc = true;
    EXPECT_TRUE(renders_anew("filter"));
    for (double* field : {&shot.params.red, &shot.params.green, &shot.params.blue}) {
        *field += 0.001;
        EXPECT_TRUE(renders_anew("a weight"));
    }
}

}  // namespace
}  // namespace qx::test
