// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_UnoBuffer.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <numeric>

#include "tests/support/Refusals.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

struct Dispose {
    void operator()(QX_UnoBuffer* buffer) const { EXPECT_EQ(QX_DisposeUnoBuffer(buffer), 0); }
};
using Buffer = std::unique_ptr<QX_UnoBuffer, Dispose>;

/// Whose samples count up from 0 and start over behind the last value of the depth.
Buffer counting(int width, int height, int depth) {
    QX_UnoBuffer* made = nullptr;
    EXPECT_EQ((depth == 8 ? QX_NewUnoBuffer : QX_NewDeepUnoBuffer)(width, height, &made), 0);
    for (int i = 0; i < width * height; ++i) {
        if (depth == 8) {
            static_cast<std::uint8_t*>(*made->handle)[i] = static_cast<std::uint8_t>(i);
        } else {
            static_cast<std::uint16_t*>(*made->handle)[i] = static_cast<std::uint16_t>(i % 32769);
        }
    }
    return Buffer(made);
}

std::vector<int> samples(const QX_UnoBuffer& b) {
    std::vector<int> all;
    for (int i = 0; i < b.width * b.height; ++i) {
        all.push_back(b.depth == 8 ? static_cast<std::uint8_t*>(*b.handle)[i]
                                   : static_cast<std::uint16_t*>(*b.handle)[i]);
    }
    return all;
}

/// The nearest to a product of shares of full; at 16 bits half a step goes down.
int product(std::int64_t a, std::int64_t b, int depth) {
    return static_cast<int>(depth == 8 ? (a * b + 127) / 255 : (a * b + 16383) / 32768);
}

TEST(UnoBuffer, FadesAndInvertsByTheArithmeticOfItsDepth) {
    const Born born(3);
    for (const auto& [depth, opacity] :
         each(std::array{8, 16}, std::array{0.0f, 0.001f, 0.25f, 0.5f, 0.7f, 0.999f, 1.0f, 7.0f, -1.0f, NAN})) {
        const int full = depth == 8 ? 255 : 32768;
        const float shown = std::isnan(opacity) ? 0.0f : std::fmin(std::fmax(opacity, 0.0f), 1.0f);
        const int o = static_cast<int>(std::floor(static_cast<double>(shown * static_cast<float>(full)) + 0.5));
        const Buffer start = counting(256, 129, depth), faded = counting(256, 129, depth),
                     inverted = counting(256, 129, depth);
        const auto fixed = static_cast<std::int32_t>(shown * 65536);
        const int of = static_cast<int>(std::floor(fixed / 65536.0 * full + 0.5));
        ASSERT_EQ(QX_FadeUnoBuffer(nullptr, opacity, faded.get()), 0);
        ASSERT_EQ(QX_InvertAndFadeUnoBuffer(nullptr, opacity > 1 ? 1 << 30 : fixed, inverted.get()), 0);
        const auto before = samples(*start), fade = samples(*faded), inverse = samples(*inverted);
        for (std::size_t i = 0; i < before.size(); ++i) {
            ASSERT_EQ(fade[i], product(before[i], o, depth)) << before[i] << " by " << opacity;
            ASSERT_EQ(inverse[i], product(full - before[i], of, depth)) << before[i] << " by " << fixed;
        }
    }
}

TEST(UnoBuffer, InvertedTwiceOrFadedByOneIsUnchanged) {
    const Born born(3);
    for (const int depth : {8, 16}) {
        const Buffer start = counting(256, 129, depth), buffer = counting(256, 129, depth);
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
        EXPECT_EQ(samples(*buffer), std::vector<int>(54, 9));
    }
    const QX_UnoBuffer real(3, 2, 32);
    ASSERT_EQ(QX_FillFloatUnoBuffer(0.25f, const_cast<QX_UnoBuffer*>(&real)), 0);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(static_cast<float*>(*real.handle)[i], 0.25f);
}

TEST(UnoBuffer, DamagedOnesAreRefused) {
    const Born born(1);
    const Buffer buffer = counting(3, 3, 8), deep = counting(3, 3, 16);
    QX_UnoBuffer real(3, 3, 32);
    alignas(QX_UnoBuffer) std::byte memory[2][sizeof(QX_UnoBuffer)];
    std::memcpy(memory[0], buffer.get(), sizeof memory[0]);
    std::memcpy(memory[1], buffer.get(), sizeof memory[1]);
    auto& stranger = reinterpret_cast<QX_UnoBuffer&>(memory[0]);
    auto& empty = reinterpret_cast<QX_UnoBuffer&>(memory[1]);
    stranger.magic ^= 1;
    empty.handle = nullptr;
    for (QX_UnoBuffer* b : {static_cast<QX_UnoBuffer*>(nullptr), &stranger, &empty, &real}) {
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
