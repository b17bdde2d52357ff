// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_LazyTiles.h"

#include "tests/world/UnoSupport.h"

namespace qx::test {
namespace {

/// Counts how often each place of its target is worked on, and keeps the rectangles of its calls.
class Counting : public QX_LazyOperator {
public:
    static inline int alive = 0;

    Counting(int width, int height) : extent_{static_cast<short>(width), static_cast<short>(height)} { ++alive; }
    ~Counting() override { --alive; }
    M_Vector2T<short> GetExtent() const override { return extent_; }
    void grow_to(int width, int height) { extent_ = {static_cast<short>(width), static_cast<short>(height)}; }

    std::vector<M_LRect> calls{};
    std::map<std::pair<int, int>, int> visits{};
    int fails_with = 0;

protected:
    void DoItImp(const M_Rect& r) override {
        calls.push_back(M_RectToLRect(r));
        for (const auto& [x, y] : places(r.right - r.left, r.bottom - r.top)) ++visits[{r.left + x, r.top + y}];
        if (fails_with != 0) throw fails_with;
    }

private:
    M_Vector2T<short> extent_;
};

/// Tiles over a counting operator.
template <class Tiles = QX_LazyTiles> struct Counted {
    boost::scoped_ptr<QX_LazyOperator> op;
    std::unique_ptr<Tiles> tiles{};

    template <class... More>
    Counted(int width, int height, short size, More... more) : op(new Counting(width, height)) {
        tiles = std::make_unique<Tiles>(size, &op, more...);
        EXPECT_EQ(op.get(), nullptr) << "taken over";
    }
    Counting& counting() { return static_cast<Counting&>(*tiles->GetOperator()); }
    /// The rectangles that the operator is called with for this one.
    template <class Call> std::vector<M_LRect> calls_of(const Call& call) {
        counting().calls.clear();
        call();
        return counting().calls;
    }
    std::vector<M_LRect> operator()(int left, int top, int right, int bottom) {
        return calls_of([&] { tiles->MakeValid(rect(left, top, right, bottom)); });
    }
    static M_Rect rect(int left, int top, int right, int bottom) {
        return {static_cast<short>(top), static_cast<short>(left), static_cast<short>(bottom),
                static_cast<short>(right)};
    }
};
using Rects = std::vector<M_LRect>;

TEST(LazyTiles, ARunOfTilesIsOneCallAndASecondRequestNone) {
    const Born born(1);
    Counted tiles(100, 70, 16);
    EXPECT_EQ(tiles(17, 3, 18, 5), (Rects{{16, 0, 32, 16}}));
    EXPECT_EQ(tiles(0, 0, 48, 16), (Rects{{0, 0, 16, 16}, {32, 0, 48, 16}})) << "around the one that is valid";
    EXPECT_EQ(tiles(0, 0, 48, 16), Rects{});
    EXPECT_EQ(tiles(15, 60, 101, 99), (Rects{{0, 48, 100, 64}, {0, 64, 100, 70}})) << "cut to the target, row by row";
    for (const auto& [l, t, r, b] : Cases<int, int, int, int>{
             {30, 30, 30, 40}, {40, 40, 30, 30}, {-9, 0, 0, 9}, {100, 0, 110, 9}, {0, -9, 9, 0}, {0, 70, 9, 90}}) {
        EXPECT_EQ(tiles(l, t, r, b), Rects{}) << l;
    }
}

TEST(LazyTiles, TheOffsetMovesRequestsButNotConditionalOnes) {
    const Born born(1);
    Counted<QX_LazyTilesCondition> tiles(64, 64, 16, false);
    const auto conditional = [&](int left, int top, int right, int bottom) {
        return tiles.calls_of([&] { tiles.tiles->ConditionalMakeValid(tiles.rect(left, top, right, bottom)); });
    };
    tiles.tiles->SetOffset({-20, 30});
    EXPECT_EQ(tiles(0, 0, 30, 1), (Rects{{0, 16, 16, 32}}));
    EXPECT_EQ(tiles(0, 0, 20, 9), Rects{}) << "left of the target";
    EXPECT_EQ(conditional(0, 0, 64, 64), Rects{}) << "switched off";
    tiles.tiles->SetCondition(true);
    EXPECT_EQ(conditional(-5, -5, 17, 17), (Rects{{0, 0, 32, 16}, {16, 16, 32, 32}}));
    EXPECT_EQ(conditional(40, 40, 30, 30), Rects{});
    EXPECT_EQ(conditional(70, 0, 90, 9), Rects{}) << "outside, whatever the offset";
    tiles.tiles->SetOffset({32767, -32768});
    EXPECT_EQ(tiles(-32768, 32767, -32766, 32767), Rects{});
    EXPECT_EQ(tiles(-32767, 32767, -32700, 32767 - 1), Rects{});
    EXPECT_EQ(tiles(-32720, 32767, 0, 32767), Rects{});
}

TEST(LazyTiles, AThousandRandomRequestsFillEachWantedTileOnce) {
    const Born born(1);
    for (const short size : std::initializer_list<short>{1, 7, 16, 300, 32767}) {
        Numbers random(static_cast<unsigned>(size));
        Counted tiles(211, 97, size);
        std::set<std::pair<int, int>> wanted;
        for (int i = 0; i < 1000; ++i) {
            const int left = random(-60, 220), top = random(-40, 110), right = left + random(-5, size == 1 ? 9 : 60);
            const int bottom = top + random(-5, 30), dx = random(-30, 30), dy = random(-30, 30);
            tiles.tiles->SetOffset({static_cast<short>(dx), static_cast<short>(dy)});
            tiles(left, top, right, bottom);
            for (int y = std::max(0, top + dy); y < std::min(97, bottom + dy); ++y) {
                for (int x = std::max(0, left + dx); x < std::min(211, right + dx); ++x) {
                    wanted.insert({x / size, y / size});
                }
            }
        }
        for (const auto& [x, y] : places(211, 97)) {
            const auto found = tiles.counting().visits.find({x, y});
            ASSERT_EQ(found == tiles.counting().visits.end() ? 0 : found->second, wanted.count({x / size, y / size}))
                << x << ", " << y << " size " << size;
        }
    }
}

TEST(LazyTiles, AFailureIsThrownAndTheRunCountsAsValid) {
    const Born born(1);
    Counted tiles(64, 64, 16);
    tiles.counting().fails_with = 77;
    EXPECT_EQ(code_of([&] { tiles(0, 0, 33, 33); }), 77);
    EXPECT_EQ(tiles.counting().calls.size(), 1u) << "later runs are not begun";
    tiles.counting().fails_with = 0;
    EXPECT_EQ(tiles(0, 0, 33, 33), (Rects{{0, 16, 48, 32}, {0, 32, 48, 48}}));
    tiles.counting().grow_to(200, 200);
    EXPECT_EQ(tiles(0, 0, 200, 16), (Rects{{48, 0, 64, 16}})) << "tiles are those of the first extent";
    EXPECT_EQ(tiles(100, 100, 200, 200), Rects{});
}

TEST(LazyTiles, RefusesSizesAndMissingOperatorsBeforeItTakesOne) {
    const Born born(1);
    boost::scoped_ptr<QX_LazyOperator> op(new Counting(4, 4)), none;
    boost::scoped_ptr<QX_UnoBuffer> no_buffer;
    for (const short size : std::initializer_list<short>{0, -1, -32768}) {
        expect_refused(kBadParameter, {thrown([&] { const QX_LazyTiles t(size, &op); })});
    }
    expect_refused(kBadParameter, {thrown([&] { const QX_LazyTiles t(4, &none); }),
                                   thrown([&] { const QX_LazyTilesCondition t(4, nullptr, true); })});
    EXPECT_NE(op.get(), nullptr);
    expect_refused("damaged mask buffer", {thrown([&] { const QX_LazyFillUnoBufferOperator o(&no_buffer, 1); }),
                                           thrown([&] { const QX_LazyFillUnoBufferOperator o(nullptr, 1); })});
    const int before = Counting::alive;
    for (int nth = 1;; ++nth) {  // until all allocations are made, the operator ends with the tiles
        NewCounter::fail(nth);
        const int code = code_of([&] { const QX_LazyTiles t(1, &op); });
        NewCounter::fail(0);
        EXPECT_EQ(Counting::alive, before - 1);
        if (code == 0) break;
        EXPECT_EQ(code, 4);
        op.reset(new Counting(4, 4));
    }
}

TEST(LazyTiles, FillsMaskBuffersOfAllDepths) {
    const Born born(1);
    for (const int depth : {8, 16, 32}) {
        boost::scoped_ptr<QX_UnoBuffer> buffer(new QX_UnoBuffer(40, 30, depth));
        set_samples(*buffer, [](int, int) { return 3; });
        auto* const fill = new QX_LazyFillUnoBufferOperator(&buffer, 0x1234);
        boost::scoped_ptr<QX_LazyOperator> op(fill);
        QX_LazyTiles tiles(16, &op);
        const Reports reports;
        EXPECT_EQ(code_of([&] { tiles.MakeValid({1, 17, 20, 18}); }), depth == 32 ? 3 : 0);
        const auto made = samples(*fill->GetBuffer());
        for (const auto& [x, y] : places(40, 30)) {
            const bool filled = depth != 32 && holds({16, 0, 32, 30}, x, y);
            ASSERT_EQ(made[static_cast<std::size_t>(y * 40 + x)], !filled ? 3 : depth == 8 ? 0x34 : 0x1234);
        }
    }
}

}  // namespace
}  // namespace qx::test
