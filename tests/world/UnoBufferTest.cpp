// SPDX-License-Identifier: Apache-2.0
#include "tests/world/UnoSupport.h"

namespace qx::test {
namespace {

TEST(UnoBuffer, FadesAndInvertsByTheArithmeticOfItsDepth) {
    for (const auto& [level, depth, opacity] : each(
             kLevels, std::array{8, 16}, std::array{0.0f, 0.001f, 0.25f, 0.5f, 0.7f, 0.999f, 1.0f, 7.0f, -1.0f, NAN})) {
        const Born born(3, level);
        const int full = full_of(depth);
        const float shown = std::isnan(opacity) ? 0.0f : std::fmin(std::fmax(opacity, 0.0f), 1.0f);
        const int o = static_cast<int>(std::floor(static_cast<double>(shown * static_cast<float>(full)) + 0.5));
        const Buffer start = counting(257, 129, depth), faded = counting(257, 129, depth),
                     inverted = counting(257, 129, depth);
        const auto fixed = static_cast<std::int32_t>(shown * 65536);
        const int of = static_cast<int>(std::floor(fixed / 65536.0 * full + 0.5));
        ASSERT_EQ(QX_FadeUnoBuffer(nullptr, opacity, faded.get()), 0);
        ASSERT_EQ(QX_InvertAndFadeUnoBuffer(nullptr, opacity > 1 ? 1 << 30 : fixed, inverted.get()), 0);
        const auto before = samples(*start), fade = samples(*faded), inverse = samples(*inverted);
        for (std::size_t i = 0; i < before.size(); ++i) {
            ASSERT_EQ(fade[i], product(static_cast<int>(before[i]), o, depth)) << before[i] << " by " << opacity;
            ASSERT_EQ(inverse[i], product(full - static_cast<int>(before[i]), of, depth))
                << before[i] << " by " << fixed;
        }
    }
}

TEST(UnoBuffer, InvertedTwiceOrFadedByOneIsUnchanged) {
    const Born born(3);
    for (const int depth : {8, 16}) {
        const Buffer start = counting(257, 129, depth), buffer = counting(257, 129, depth);
        EXPECT_EQ(QX_InvertUnoBuffer(nullptr, buffer.get()), 0);
        EXPECT_NE(samples(*buffer), samples(*start));
        EXPECT_EQ(QX_InvertUnoBuffer(nullptr, buffer.get()), 0);
        EXPECT_EQ(QX_FadeUnoBuffer(nullptr, 1, buffer.get()), 0);
        EXPECT_EQ(samples(*buffer), samples(*start));
    }
}

TEST(UnoBuffer, FillsWriteNothingOutsideOfTheRectangle) {
    const Born born(1);
    const std::vector<M_LRect> rects = {{2, 1, 5, 4}, {-7, 2, 90, 3}, {0, -9, 9, 99}, {9, 0, 12, 5}, {5, 3, 2, 1}};
    for (const auto& [r, depth] : each(rects, std::array{8, 16})) {
        const Buffer buffer = counting(9, 6, depth);
        auto expected = samples(*buffer);
        for (int i = 0; i < 54; ++i) {
            if (holds(r, i % 9, i / 9)) expected[static_cast<std::size_t>(i)] = 77;
        }
        ASSERT_EQ(depth == 8 ? QX_FillUnoBuffer(77, &r, buffer.get()) : QX_FillDeepUnoBuffer(77, &r, buffer.get()), 0);
        EXPECT_EQ(samples(*buffer), expected) << depth;
        ASSERT_EQ(
            depth == 8 ? QX_FillUnoBuffer(9, nullptr, buffer.get()) : QX_FillDeepUnoBuffer(9, nullptr, buffer.get()),
            0);
        EXPECT_EQ(samples(*buffer), std::vector<double>(54, 9));
    }
    const QX_UnoBuffer real(3, 2, 32);
    ASSERT_EQ(QX_FillFloatUnoBuffer(0.25f, const_cast<QX_UnoBuffer*>(&real)), 0);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(static_cast<float*>(*real.handle)[i], 0.25f);
}

TEST(UnoBuffer, DamagedOnesAreRefused) {
    const Born born(1);
    const Buffer buffer = counting(3, 3, 8), deep = counting(3, 3, 16);
    QX_UnoBuffer real(3, 3, 32);
    DamagedBuffers damaged;
    std::vector<QX_UnoBuffer*> bad = damaged.all();
    bad.push_back(&real);
    for (QX_UnoBuffer* b : bad) {
        expect_refused(
            "damaged mask buffer",
            {[=] { return QX_FillUnoBuffer(1, nullptr, b); }, [=] { return QX_FillDeepUnoBuffer(1, nullptr, b); },
             [=] { return QX_FadeUnoBuffer(nullptr, 1, b); }, [=] { return QX_InvertUnoBuffer(nullptr, b); }});
        if (b != nullptr && b != &real) expect_refused("damaged mask buffer", {[=] { return QX_DisposeUnoBuffer(b); }});
    }
    expect_refused("damaged mask buffer", {[&] { return QX_FillUnoBuffer(1, nullptr, deep.get()); },
                                           [&] { return QX_FillFloatUnoBuffer(1, buffer.get()); },
                                           [] { return QX_NewUnoBuffer(1, 1, nullptr); }});
    QX_UnoBuffer* out = buffer.get();
    expect_refused(kBadParameter,
                   {[&] { return QX_NewUnoBuffer(0, 4, &out); }, [&] { return QX_NewDeepUnoBuffer(4, -1, &out); },
                    thrown([] { const QX_UnoBuffer odd(2, 2, 24); })});
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(QX_DisposeUnoBuffer(nullptr), 0);
    EXPECT_EQ(QX_UnoBuffer(2, 2, 1).depth, 8);
    EXPECT_EQ(QX_UnoBuffer(2, 2, 0).depth, 16);
}

TEST(UnoBuffer, EachFailedAllocationGivesItsCodeAndLeavesNothing) {
    const Born born(1);
    const std::int64_t blocks = blocks_in_use();
    for (int nth = 1; nth <= 2; ++nth) {
        const Reports reports;
        QX_UnoBuffer* out = nullptr;
        EXPECT_EQ(short_of_memory(nth, [&] { return QX_NewDeepUnoBuffer(30, 30, &out); }), 4);
        EXPECT_EQ(reports.last_text(), "out of memory: memory for mask buffer");
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(blocks_in_use(), blocks);
    }
}

TEST(UnoBuffer, ProgressIsAskedEvery64RowsAndEndsTheWork) {
    const Born born(1);
    for (const bool invert : {false, true}) {
        const Buffer buffer = counting(4, 300, 8);
        Polls polls{.stop_at = 1};
        const QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
        EXPECT_EQ(invert ? QX_InvertUnoBuffer(&info, buffer.get()) : QX_FadeUnoBuffer(&info, 0, buffer.get()), 517);
        EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{63, 300}, {127, 300}}));
        EXPECT_EQ(samples(*buffer)[4 * 128 + 1], (4 * 128 + 1) % 256) << "rows behind are as they were";
        EXPECT_NE(samples(*buffer)[4 * 127 + 1], (4 * 127 + 1) % 256);
    }
}

}  // namespace
}  // namespace qx::test
