// SPDX-License-Identifier: Apache-2.0
// Rows of track mattes, and single channels of rows, against plain models.
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

using model::I;

template <class Pixel> class TrackMatte : public testing::Test {};
using IntegerDepths = testing::Types<QX_Pixel8, QX_Pixel16>;
TYPED_TEST_SUITE(TrackMatte, IntegerDepths);

/// All that a row and a mask can be to each other, cells beside them too.
TYPED_TEST(TrackMatte, IsTheMasksCoverageAndItsOutside) {
    using K = model::DepthModel<TypeParam>;
    std::vector<TypeParam> mask(9), row(14);
    fill_pixels<TypeParam>(mask, FillKind::random, 4);
    for (const auto& [kind, count, offset, width] :
         each(std::array{0u, 1u, 2u, 3u, 4u, 0xFFFFFFFDu}, std::array{-1, 0, 1, 7, 14},
              std::array{INT_MIN, -10, -9, -3, 0, 2, 14, 20, INT_MAX}, std::array{-1, 0, 1, 9})) {
        fill_pixels<TypeParam>(row, FillKind::random, 5);
        auto wanted = row;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::int64_t at = i - offset;
            I value = 0;
            if (at >= 0 && at < width) {
                const TypeParam& p = mask[static_cast<std::size_t>(at)];
                value = kind & 2 ? K::mul(K::luma({p.red, p.green, p.blue}), p.alpha) : p.alpha;
            }
            wanted[static_cast<std::size_t>(i)].alpha =
                static_cast<QX_ChannelOf<TypeParam>>(kind & 1 ? K::full - value : value);
        }
        QX_PrepTrackMatteUniv(count, mask.data(), offset, width, kind, DepthOf<TypeParam>::number == 16 ? 2 : 0,
                              row.data());
        ASSERT_EQ(row, wanted) << "kind " << kind << " count " << count << " offset " << offset << " width " << width;
    }
}

template <class Pixel> class SingleChannel : public testing::Test {};
TYPED_TEST_SUITE(SingleChannel, AllDepths);

/// Towards 0 it is the same as towards full; with no mask nothing, with all of it everything.
TYPED_TEST(SingleChannel, MovesAlphaAlone) {
    using K = model::DepthModel<TypeParam>;
    using N = typename K::N;
    using Channel = QX_ChannelOf<TypeParam>;
    for (const auto& [fill, length] : each(kAllFills, std::views::iota(0, 68))) {
        std::vector<TypeParam> row(static_cast<std::size_t>(length) + 2), masks(row.size());
        fill_pixels<TypeParam>(row, fill, static_cast<std::uint64_t>(length));
        fill_pixels<TypeParam>(masks, FillKind::random, 77);
        PixelSource<TypeParam> source(static_cast<std::uint64_t>(length));
        for (const Channel opacity : {Channel{0}, kFull<TypeParam>, source.channel()}) {
            std::vector<Channel> mask;
            for (const TypeParam& p : masks) mask.push_back(p.red);
            const Channel value = source.channel();
            auto got = row, wanted = row;
            for (std::size_t i = 1; i + 1 < row.size(); ++i) {
                const N c = row[i].alpha, m = K::mul(mask[i], opacity), x = N{value} - c;
                if constexpr (K::real) {
                    wanted[i].alpha = c + x * m;
                } else {  // the nearest of the size, halves of 16 bits up for both signs
                    const N size = m * (x < 0 ? -x : x), by = K::full;
                    const N moved = by == 255 ? (2 * size + 255) / 510 : (size + 16384) / 32768;
                    wanted[i].alpha = static_cast<Channel>(x < 0 ? c - moved : c + moved);
                }
            }
            QX_BlendSingleChannel(length, opacity, value, mask.data() + 1, got.data() + 1);
            ASSERT_EQ(got, wanted) << "length " << length << " opacity " << +opacity << " value " << +value;
        }
    }
}

}  // namespace
}  // namespace qx::test
