// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_LazyWorldCopy.h"

#include "tests/support/Test.h"

namespace qx::test {
namespace {

TEST(LazyWorldCopy, CopiesTheWantedTilesFromTheSourceOfTheMoment) {
    const Born born(1);
    TestWorld<QX_Pixel8> first(50, 40, FillKind::random, 1), second(50, 40, FillKind::random, 2);
    TestWorld<QX_Pixel8> dst(50, 40, FillKind::random, 3), before(50, 40, FillKind::random, 3);
    auto* const copy = new QX_LazyWorldCopyOperator(first.record(), dst.record());
    boost::scoped_ptr<QX_LazyOperator> op(copy);
    QX_LazyTiles tiles(16, &op);
    tiles.MakeValid({20, 40, 21, 60});
    copy->SetSourceWorld(second.record());
    tiles.MakeValid({16, 0, 32, 50});
    for (const auto& [x, y] : places(50, 40)) {
        auto& from = y < 16 || y >= 32 ? before : x >= 32 ? first : second;
        ASSERT_EQ(dst.at(x, y), from.at(x, y)) << x << ", " << y;
    }
}

TEST(LazyWorldCopy, ThrowsWhatTheCopyGives) {
    const Born born(1);
    TestWorld<QX_Pixel8> src(20, 20, FillKind::random, 1);
    boost::scoped_ptr<QX_LazyOperator> op(new QX_LazyWorldCopyOperator(src.record(), nullptr));
    boost::scoped_ptr<QX_LazyOperator> none(new QX_LazyWorldCopyOperator(nullptr, src.record()));
    QX_LazyTiles tiles(16, &op), empty(16, &none);
    expect_refused(kBadParameter, {thrown([&] { tiles.MakeValid({0, 0, 5, 5}); })});
    EXPECT_EQ(code_of([&] { empty.MakeValid({0, 0, 5, 5}); }), 0) << "no source, no extent";
}

}  // namespace
}  // namespace qx::test
