// SPDX-License-Identifier: Apache-2.0
// Vector forms equal the plain form in every pixel.
#include "QX/compositing/QX_PixelAccess.h"
#include "QX/compositing/QX_SoftLight.h"
#include "tests/compositing/Differential.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// The kernels are taken from the table level by level; then the library is born for the tables that they read.
class Levels : public testing::Test {
protected:
    std::size_t count_ = levels().size();
    Born born_{1};
};

class LevelsOnFill : public Levels, public testing::WithParamInterface<FillKind> {};

/// Every mode, masked and not, on both other levels: more than ten million pixels a fill.
TEST_P(LevelsOnFill, AgreeOnMillionsOfPixels) {
    std::int64_t pixels = 0;
    for (const auto& [xfer, masked] : each(modes_from(kQX_FirstMode), std::array{false, true})) {
        if (xfer == xfer_mask_crossfade && !masked) continue;
        const Case c{.seed = static_cast<std::uint64_t>(1000 + xfer),
                     .number = xfer,
                     .masked = masked,
                     .opacity = masked ? 0.8 : 1,
                     .src = GetParam(),
                     .dst = FillKind::layer,
                     .count = 65536};
        const auto fault = run_case(c);
        ASSERT_FALSE(fault) << *fault;
        pixels += c.count * static_cast<std::int64_t>(count_ - 1);
    }
    EXPECT_TRUE(count_ != 3 || pixels >= 10'000'000);
}
INSTANTIATE_TEST_SUITE_P(Fills, LevelsOnFill,
                         testing::Values(FillKind::random, FillKind::opaque, FillKind::clear, FillKind::layer));

/// The vector forms compute what the plain one reads from tables: quotients and the soft-light curves.
TEST_F(Levels, ArithmeticOfLanesIsThatOfTables) {
    for (int a = 0; a < 256; ++a) {
        for (int v = 0; v < 256; v += 4) {
            const Int4 columns = {v, v + 1, v + 2, v + 3};
            const Int4 divided = Depth8::div(columns, Int4{a, a, a, a});
            const Int4 half = splat<Int4>(a);
            const Int4 curve = soft_curve8(half, columns);
            for (int i = 0; i < 4; ++i) {
                ASSERT_EQ(divided[i], Depth8::div(v + i, a)) << v + i << " / " << a;
                ASSERT_EQ(curve[i], soft_curve8(a, v + i)) << v + i << " under " << a;
            }
        }
    }
}

}  // namespace
}  // namespace qx::test
