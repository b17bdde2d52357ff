// SPDX-License-Identifier: Apache-2.0
// Vector forms equal the plain form in every pixel.
#include "QX/compositing/QX_SoftLight.h"
#include "lanes/PixelAccess.h"
#include "tests/compositing/Differential.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// Every mode, masked and not, on both other levels: more than ten million pixels a fill. The kernels are taken from
/// the table level by level; then the library is born for the tables that they read.
TEST(Levels, AgreeOnMillionsOfPixels) {
    levels();
    const Born born(1);
    const std::array fills = {FillKind::random, FillKind::opaque, FillKind::clear, FillKind::layer};
    for (const auto& [fill, xfer, masked] : each(fills, modes_from(kQX_FirstMode), std::array{false, true})) {
        if (xfer == xfer_mask_crossfade && !masked) continue;
        Case c{.seed = static_cast<std::uint64_t>(1000 + xfer), .number = xfer, .masked = masked};
        c.opacity = masked ? 0.8 : 1, c.src = fill, c.dst = FillKind::layer, c.count = 65536;
        const auto fault = run_case(c);
        EXPECT_FALSE(fault) << *fault;
    }
}

/// The vector forms compute what the plain one reads from tables: quotients and the soft-light curves.
TEST(Levels, ArithmeticOfLanesIsThatOfTables) {
    using Int4 = Vector<std::int32_t, 16>;
    const Born born(1);
    for (const auto& [quarter, a] : places(64, 256)) {
        const int v = 4 * quarter;
        const Int4 column = {v, v + 1, v + 2, v + 3}, alpha = splat<Int4>(a);
        const Int4 divided = Depth8::div(column, alpha), curve = soft_curve8(alpha, column);
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(divided[i], Depth8::div(v + i, a)) << v + i << " / " << a;
            ASSERT_EQ(curve[i], soft_curve8(a, v + i)) << v + i << " under " << a;
        }
    }
}

}  // namespace
}  // namespace qx::test
