// SPDX-License-Identifier: Apache-2.0
// Blurs of lines against sums of whole windows.
#include "QX/filters/QX_UnoScan.h"

#include "QX/filters/QX_GaussianKernel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

template <class Sample> constexpr std::int64_t kScale = sizeof(Sample) == 1 ? 255 : 32768;

/// A blur of a line: what is asked for, and the call.
template <class Sample> struct Scan {
    using Line = std::vector<Sample>;
    bool box;
    int kind, start, end, radius;

    int operator()(Line& line, int scratch_behind = 0) const {
        Line scratch(line.size() + static_cast<std::size_t>(scratch_behind), Sample{77});
        const auto len = static_cast<std::int32_t>(line.size());
        const int code = call(len, scratch.data(), line.data());
        const auto behind = scratch.begin() + len;
        EXPECT_TRUE(std::all_of(behind, scratch.end(), [](Sample s) { return s == 77; }));
        return code;
    }
    int call(std::int32_t len, Sample* scratch, Sample* line) const {
        if constexpr (sizeof(Sample) == 1) {
            return (box ? QX_BoxBlurUnoScan : QX_GBlurUnoScan)(kind, len, start, end, radius, scratch, line);
        } else {
            return (box ? QX_BoxBlurDeepUnoScan : QX_GBlurDeepUnoScan)(kind, len, start, end, radius, scratch, line);
        }
    }
};

template <class Sample> std::int64_t at(const std::vector<Sample>& line, std::int64_t i) {
    return line[static_cast<std::size_t>(std::clamp<std::int64_t>(i, 0, static_cast<std::int64_t>(line.size()) - 1))];
}

/// One pass over a span, each window summed anew.
template <class Sample> void pass(std::vector<Sample>& line, int from, int to, int w, std::int64_t f) {
    constexpr std::int64_t full = kScale<Sample>;
    const std::vector<Sample> before = line;
    for (int x = from; x < to; ++x) {
        std::int64_t sum = 0;
        for (int i = x - w + 1; i < x + w; ++i) sum += at(before, i);
        const bool left = x >= w;
        const std::int64_t ends = at(before, x + w) + (left ? at(before, x - w) : 0);
        line[static_cast<std::size_t>(x)] =
            static_cast<Sample>((full * sum + f * ends + (full + 1) / 2) / (2 * full * w - full + f * (left ? 2 : 1)));
    }
}

/// By the weights of a kernel, the ends repeated.
template <class Sample> void bell(std::vector<Sample>& line, int from, int to, double radius) {
    std::vector<std::uint32_t> weights(2 * static_cast<std::size_t>(std::ceil(radius)) + 1);
    std::int32_t width = 0;
    ASSERT_EQ(QX_GaussianKernel(nullptr, radius, 3, 1, &width, weights.data()), 0);
    const std::vector<Sample> before = line;
    for (int x = from; x < to; ++x) {
        std::int64_t sum = 0, total = 0;
        for (int i = 0; i < width; ++i) {
            sum += weights[static_cast<std::size_t>(i)] * at(before, x + i - width / 2);
            total += weights[static_cast<std::size_t>(i)];
        }
        line[static_cast<std::size_t>(x)] = static_cast<Sample>((sum + total / 2) / total);
    }
}

template <class Sample> std::vector<Sample> expected(const Scan<Sample>& s, std::vector<Sample> line) {
    const int len = static_cast<int>(line.size()), start = std::max(s.start, 0), end = std::min(s.end, len);
    if (start >= end) return line;
    const double length = s.radius / 65536.0, r = length * (s.kind != 0 ? 1.0 : 1.4) / 2.71;
    if (!s.box || r <= 1) {
        const int k = std::max(0, static_cast<int>(std::floor((std::floor(s.radius / 2.0) + 32768) / 65536)));
        s.kind == 1 ? bell(line, start, end, length) : pass(line, start, end, k + 1, 0);
        return line;
    }
    const int margin = 3 + static_cast<int>(length * (s.kind != 0 ? 0.9 : 0.6)), w = static_cast<int>(r) + 1;
    const auto share = static_cast<std::int64_t>((r - (w - 1)) * static_cast<double>(kScale<Sample>));
    for (int i = 0; i < (s.kind != 0 ? 3 : 1); ++i) {
        pass(line, std::max(0, start - margin), std::min(len, end + margin), w, share);
    }
    return line;
}

template <class Sample> class UnoScanOf : public testing::Test {
protected:
    static Sample sample(Numbers& random) {
        constexpr int full = static_cast<int>(kScale<Sample>);
        return static_cast<Sample>(random(0, 4) == 0 ? full : random(0, full + 1));
    }
};
using SampleTypes = testing::Types<std::uint8_t, std::uint16_t>;
TYPED_TEST_SUITE(UnoScanOf, SampleTypes);

TYPED_TEST(UnoScanOf, GivesTheQuotientsOfWholeWindowsAtEveryLevel) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto seed : seeds(20000)) {
            Numbers random(static_cast<unsigned>(seed));
            std::vector<TypeParam> line(static_cast<std::size_t>(random(1, seed % 20 == 0 ? 2000 : 68)));
            for (TypeParam& s : line) s = this->sample(random);
            const int len = static_cast<int>(line.size()), most = random(0, 2) == 0 ? 7 : 200;
            const Scan<TypeParam> scan{random(0, 2) == 0, random(0, 3), random(-9, len), random(0, len + 9),
                                       random(0, 9) == 0 ? random(0, most) << 16 : random(0, most << 16)};
            const auto want = expected(scan, line);
            ASSERT_EQ(scan(line, 9), 0);
            ASSERT_EQ(line, want) << "seed " << seed << " box " << scan.box << " kind " << scan.kind << " span "
                                  << scan.start << " to " << scan.end << " radius " << scan.radius;
        }
    }
}

TYPED_TEST(UnoScanOf, AnEvenLineStaysEvenAtAnyRadius) {
    const Born born(1);
    const int radii[] = {INT_MIN, -1, 0, 1, 70000, 177602, 1 << 20, 12345678, 0x7FFF0000};
    const int full = static_cast<int>(kScale<TypeParam>);
    for (const auto& [box, kind, radius, value] :
         each(std::array{false, true}, std::array{0, 1, 2}, radii, std::array{0, 1, full / 2, full})) {
        if (kind == 1 && radius < 0) continue;
        std::vector<TypeParam> line(300, static_cast<TypeParam>(value));
        const auto before = line;
        EXPECT_EQ((Scan<TypeParam>{box, kind, 5, 290, radius}(line)), 0);
        EXPECT_EQ(line, before) << box << " " << kind << " radius " << radius;
    }
}

/// The largest sums and divisors that there are.
TYPED_TEST(UnoScanOf, LargestRadiiDoNotWrap) {
    const Born born(1);
    for (const auto& [box, kind] : each(std::array{false, true}, std::array{0, 2})) {
        std::vector<TypeParam> line(300, static_cast<TypeParam>(kScale<TypeParam>));
        line[20] = line[299] = static_cast<TypeParam>(kScale<TypeParam> - 1);
        const Scan<TypeParam> scan{box, kind, 0, INT_MAX, INT_MAX};
        const auto want = expected(scan, line);
        ASSERT_EQ(scan(line), 0);
        EXPECT_EQ(line, want) << box << " " << kind;
    }
}

TYPED_TEST(UnoScanOf, RefusesAndFailsWithTheLineAsItWas) {
    const Born born(1);
    const std::vector<TypeParam> before = {1, 2, 3, 4, 5, 6};
    std::vector<TypeParam> line = before, scratch(6);
    const auto call = [&](bool box, int kind, int start, int end, int radius, TypeParam* s, TypeParam* l) {
        return [=] { return Scan<TypeParam>{box, kind, start, end, radius}.call(6, s, l); };
    };
    for (const bool box : {false, true}) {
        expect_refused(kBadParameter, {call(box, 1, 0, 6, -1, scratch.data(), line.data()),
                                       call(box, 0, 0, 6, 1 << 20, nullptr, line.data()),
                                       call(box, 0, 0, 6, 1 << 20, scratch.data(), nullptr)});
        for (const auto& [start, end] : {std::pair(3, 3), {5, 2}, {-9, 0}, {6, 9}}) {
            EXPECT_EQ(call(box, 1, start, end, 40 << 16, nullptr, nullptr)(), 0) << "nothing wanted";
        }
        const Reports reports;
        const auto blocks = blocks_in_use();
        EXPECT_EQ(short_of_memory(1, call(box, 1, 0, 6, 2 << 16, scratch.data(), line.data())), 4);
        EXPECT_EQ(reports.last_text(), "out of memory: gaussian weight array");
        EXPECT_EQ(blocks_in_use(), blocks);
        EXPECT_EQ(line, before);
        EXPECT_EQ(call(box, 1, 0, 6, 2 << 16, scratch.data(), line.data())(), 0);
        EXPECT_EQ(blocks_in_use(), blocks) << "weights are given back";
        std::copy(before.begin(), before.end(), line.begin());
    }
    expect_refused(kBadParameter, {call(false, 1, 0, 6, INT_MAX, scratch.data(), line.data())});
    EXPECT_EQ(line, before);
}

}  // namespace
}  // namespace qx::test
