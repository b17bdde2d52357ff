// SPDX-License-Identifier: Apache-2.0
// Area samples against sums that are written down anew, contribution by contribution; the premultiplied routines in
// exact integers.
#include "tests/sampling/SampSupport.h"

namespace {

using namespace qx::test;
using standalone::ProcessorLevel;

/// How much of pixel `i`, which covers [i, i + 1), lies between two edges, all in 16.16.
std::int64_t coverage(std::int64_t i, std::int64_t low, std::int64_t high) {
    return std::max<std::int64_t>(0, std::min(high, (i + 1) * 65536) - std::max(low, i * 65536));
}

/// A footprint in one direction, between two edges: its pixels where it is wide, else one sample in its middle.
struct Part {
    std::int64_t at, covered;
};
std::vector<Part> parts(std::int64_t low, std::int64_t high, bool wide) {
    if (!wide) return {{low - 32768 + (high - low) / 2, high - low}};
    std::vector<Part> all;
    for (auto i = low >> 16; i < (high + 65535) >> 16; ++i) all.push_back({i * 65536, coverage(i, low, high)});
    return all;
}

/// The footprint's mean, before rounding, from sums in double in the order of rows.
template <class Pixel>
std::vector<double> area_model(Source<Pixel>& picture, std::int32_t x, std::int32_t y, QX_PointSampler<Pixel> thin) {
    const std::int64_t rx = picture.params.x_radius, ry = picture.params.y_radius;
    const bool wide = rx > 32768, high = ry > 32768;
    double sum[4] = {};
    for (const Part& row : parts(y - ry + 32768, y + ry + 32768, high)) {
        for (const Part& column : parts(x - rx + 32768, x + rx + 32768, wide)) {
            Pixel sample{};
            if (!wide || !high) thin(nullptr, int(column.at), int(row.at), &picture.params, &sample);
            const auto p = wide && high ? picture.tap(int(column.at >> 16), int(row.at >> 16)) : channels(sample);
            const double share = double(row.covered) * double(column.covered) * 0x1p-32 * p[0];
            sum[0] += share;
            for (std::size_t c = 1; c < 4; ++c) sum[c] += share * p[c];
        }
    }
    const double alpha = std::min(kScale<Pixel>, sum[0] * (0.25 / (double(rx) * 0x1p-16 * (double(ry) * 0x1p-16))));
    if (sum[0] == 0 || alpha == 0) return {0, 0, 0, 0};
    return {alpha, sum[1] * (1 / sum[0]), sum[2] * (1 / sum[0]), sum[3] * (1 / sum[0])};
}

template <class Pixel> class AreaSample : public testing::Test {
protected:
    std::mt19937_64 random{9};
    std::int32_t below(std::int32_t n) { return static_cast<std::int32_t>(random() % static_cast<unsigned>(n)); }
    /// A position from `margin` before the world to as much behind it, often on a whole or half pixel.
    std::int32_t position(int size, int margin) {
        const std::int32_t grid = below(3) == 0 ? 32768 : 1;
        return (below((size + 2 * margin) * 65536) - margin * 65536) / grid * grid;
    }
    /// Radii with all sorts of fractions, thin ones and the edge of thinness among them.
    std::int32_t radius(std::int32_t most) {
        const auto kind = random() % 6;
        if (kind == 0) return 32768 + below(3) - 1;
        if (kind == 1) return below(4) * below(10923);  // 0 in a quarter of them
        return kind == 2 ? (1 + below(most)) * 32768 : below(most * 65536);
    }
    /// Compares `routine` with the model, rounded by `round`, over many footprints.
    void compare(int quality, QX_PointSampler<Pixel> routine, const std::function<double(double)>& round) {
        const auto thin = QXp_GetSamplerSet<Pixel>(quality).clipped;
        for (const FillKind fill : {FillKind::random, FillKind::layer, FillKind::opaque, FillKind::clear}) {
            Source<Pixel> picture(61, 47, fill, 10);
            for (int n = 0; n < 6000; ++n) {
                const std::int32_t x = position(61, 5), y = position(47, 5);
                const int most = n % 50 == 0 ? 40 : 4;
                picture.radii(radius(most), radius(most));
                Pixel out{};
                ASSERT_EQ(routine(nullptr, x, y, &picture.params, &out), 0);
                const auto want = area_model(picture, x, y, thin);
                for (std::size_t c = 0; c < 4; ++c) {
                    const double got = channels(out)[c], exact = round(want[c]);
                    ASSERT_TRUE(got == exact || (std::isnan(got) && std::isnan(exact)))
                        << got << " is not " << exact << " at " << x << ", " << y << " radii "
                        << picture.params.x_radius << ", " << picture.params.y_radius;
                }
            }
        }
    }
};
TYPED_TEST_SUITE(AreaSample, AllDepths);

TYPED_TEST(AreaSample, IsTheSumOfItsContributions) {
    const Born born(1, ProcessorLevel::vector);
    constexpr double full = kScale<TypeParam>;
    const auto round = [=](double v) {
        return sizeof(TypeParam) == 16 ? float(v) : std::floor(std::min(v, full) + 0.5);
    };
    this->compare(1, &QX_AreaSample_CPlusPlus<TypeParam, 1>, round);
    this->compare(2, &QX_AreaSample_CPlusPlus<TypeParam, 2>, round);
    if constexpr (sizeof(TypeParam) != 16) {
        this->compare(1, QXp_GetSamplerSet<TypeParam>(1).area, round);
        {
            const Born faster(1, ProcessorLevel::faster);
            this->compare(1, QXp_GetSamplerSet<TypeParam>(1).area, round);
        }
        const Born plain(1, ProcessorLevel::plain);
        const auto nearest = [=](double v) { return std::round(std::min(v, full)); };
        this->compare(1, QXp_GetSamplerSet<TypeParam>(1).area, nearest);
    }
}

/// Footprints whose far edge passes the numbers: rows count in 16 bits, and none may be read before the world.
TYPED_TEST(AreaSample, EndOfTheNumbers) {
    const Born born;
    for (const bool tall : {true, false}) {
        Source<TypeParam> picture(tall ? 1 : 32800, tall ? 32800 : 1, FillKind::opaque, 1);
        picture.radii(40000, 40000);
        for (const auto routine : {QXp_GetSamplerSet<TypeParam>(1).area, QXp_GetSamplerSet<TypeParam>(2).area}) {
            TypeParam out;
            const std::int32_t end = INT32_MAX - 1000;
            routine(nullptr, tall ? 0 : end, tall ? end : 0, &picture.params, &out);
            EXPECT_EQ(out, TypeParam{});
        }
    }
}

class Premul : public AreaSample<QX_Pixel8> {
protected:
    Born born{1, ProcessorLevel::vector};
};

std::vector<double> premul_point(Source<QX_Pixel8>& picture, std::int64_t x, std::int64_t y) {
    const std::int64_t fx = x & 0xFFFF, fy = y & 0xFFFF, w1 = (65536 - fy) * fx / 65536, w2 = (65536 - fx) * fy / 65536;
    const std::int64_t w3 = fx * fy / 65536, weight[4] = {65536 - w1 - w2 - w3, w1, w2, w3};
    std::vector<double> out;
    for (std::size_t c = 0; c < 4; ++c) {
        std::int64_t sum = 32768;
        for (int i = 0; i < 4; ++i) {
            const auto p = picture.tap(static_cast<int>(x >> 16) + i % 2, static_cast<int>(y >> 16) + i / 2);
            sum += static_cast<std::int64_t>(p[c]) * weight[i];
        }
        out.push_back(static_cast<double>(sum >> 16));
    }
    return out;
}

TEST_F(Premul, PointsAndAreasAreExact) {
    const auto cut = [](std::int32_t v, int size) { return std::clamp(v, 0, size * 65536); };
    Source<QX_Pixel8> mixed(21, 17, FillKind::random, 1), extreme(21, 17, FillKind::extremes, 1);
    for (int i = 0; i < 100; ++i) mixed.at(i % 10, i / 10) = {};
    for (int n = 0; n < 200000; ++n) {
        Source<QX_Pixel8>& picture = n % 2 == 0 ? mixed : extreme;
        const std::int32_t x = position(21, 2), y = position(17, 2), rx = 200 + radius(3), ry = 200 + radius(3);
        QX_Pixel8 out;
        ASSERT_EQ(QX_SubpixelSample_Premul(nullptr, x, y, &picture.params, &out), 0);
        ASSERT_EQ(channels(out), premul_point(picture, x, y)) << x << ", " << y;
        const std::int32_t left = cut(x - rx + 32768, 21), right = cut(x + rx + 32768, 21);
        const std::int32_t top = cut(y - ry + 32768, 17), bottom = cut(y + ry + 32768, 17);
        const bool wide = rx > 32768, high = ry > 32768;
        std::int64_t sum[4] = {};
        for (const Part& row : parts(top, bottom, high)) {
            for (const Part& column : parts(left, right, wide)) {
                const auto p = wide && high   ? picture.tap(int(column.at >> 16), int(row.at >> 16))
                               : wide || high ? premul_point(picture, column.at, row.at)
                                              : premul_point(picture, x, y);  // whatever was cut off
                const std::int64_t covered = row.covered * column.covered / 65536;
                for (std::size_t c = 0; c < 4; ++c) sum[c] += static_cast<std::int64_t>(p[c]) * (covered * 256) / 65536;
            }
        }
        const std::int64_t divisor = (picture.radii(rx, ry).area + 128) / 256;
        std::vector<double> want(4);
        for (std::size_t c = 0; c < 4 && sum[0] > 0 && divisor > 0 && (c == 0 || want[0] > 0); ++c) {
            want[c] = static_cast<double>(std::min<std::int64_t>(255, (sum[c] + divisor / 2) / divisor));
        }
        ASSERT_EQ(QX_AreaSample_Premul(nullptr, x, y, &picture.params, &out), 0);
        ASSERT_EQ(channels(out), want) << x << ", " << y << " radii " << rx << ", " << ry;
    }
}

/// 32 bits hold the squares of 66,051 channels; larger boxes are summed in parts.
TEST(AreaSample8, WhiteBoxesOfAnySizeAreWhite) {
    constexpr std::pair<int, int> kParts[] = {{0, 0}, {0, 4321}, {4321, 0}, {99, 77}};
    Source<QX_Pixel8> picture(520, 520, FillKind::opaque, 1);
    std::fill(picture.pixels.begin(), picture.pixels.end(), QX_Pixel8{255, 255, 255, 255});
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto& [width, height, part] :
             each(std::array{1, 66, 257, 500}, std::array{257, 258, 400, 511}, kParts)) {
            picture.radii(width * 32768 + part.first, height * 32768 + part.second);
            QX_Pixel8 out{};
            ASSERT_EQ(QX_AreaSample_Straight(nullptr, 258 * 65536 + (width % 2 == 0 ? 32768 : 0),
                                             258 * 65536 + (height % 2 == 0 ? 32768 : 0), &picture.params, &out),
                      0);
            ASSERT_EQ(out, (QX_Pixel8{255, 255, 255, 255})) << width << " by " << height;
        }
    }
}

}  // namespace
