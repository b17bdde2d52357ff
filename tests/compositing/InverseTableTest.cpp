// SPDX-License-Identifier: Apache-2.0
// The inverse of a curve, against its rule in words of its own.
#include "QX/compositing/QX_InverseTable.h"

#include "tests/support/Test.h"

namespace qx::test {
namespace {

/// Value 8 * i of a curve of 256 entries: between two of them on a straight line, rounded to the nearest.
int on_curve(const QX_LinearBlendingTables& t, int i) {
    const int place = 8 * i * 255, entry = place / 32768, way = place % 32768;
    if (way == 0) return t.to_linear[entry];
    return t.to_linear[entry] +
           static_cast<int>(std::floor(((t.to_linear[entry + 1] - t.to_linear[entry]) * double(way) + 16384) / 32768));
}

/// From each target on its own: the segment is the first whose end is not below it, and in the upper half the last one
/// that a run of equal values reaches.
std::vector<int> inverse(const QX_LinearBlendingTables& tables) {
    std::vector<int> g(4097), made;
    for (int i = 0; i <= 4096; ++i) {
        const auto at = static_cast<std::size_t>(i);
        g[at] = std::max(on_curve(tables, i), i > 0 ? g[at - 1] : 0);
    }
    for (int y = 0; y <= 32768; y += 8) {
        std::size_t i = 0;
        while (i < 4095 && g[i + 1] < y) ++i;
        if (i < 4095 && g[i + 1] == y && i >= 2049) {
            while (i < 4095 && g[i + 1] == y) ++i;
        }
        int x = static_cast<int>(8 * i);
        if (i >= 2049 && y >= g[i + 1]) {
            x += 8;
        } else if (g[i + 1] != g[i] && y >= g[i]) {
            x += ((g[i + 1] - g[i]) / 2 + (y - g[i]) * 8) / (g[i + 1] - g[i]);
        }
        made.push_back(x);
    }
    return made;
}

void fill(QX_LinearBlendingTables& tables, const std::function<double(double)>& curve) {
    for (std::uint32_t i = 0; i < 256; ++i)
        tables.to_linear[i] =
            static_cast<std::uint16_t>(std::clamp(curve(ramp_value(i) / 32768.0), 0.0, 1.0) * 32768 + 0.5);
}

void expect_inverse(QX_LinearBlendingTables& tables, const std::string& name) {
    invert_to_linear(tables);
    const auto want = inverse(tables);
    for (std::size_t j = 0; j <= 4096; ++j) {
        ASSERT_EQ(tables.from_linear[j], want[j]) << name << " " << j;
        ASSERT_LE(tables.from_linear[j], 32768);
        ASSERT_GE(tables.from_linear[j], tables.from_linear[j > 0 ? j - 1 : 0]) << name << " " << j;
    }
}

double srgb(double x) { return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4); }
double camera(double x) { return x < 0.081 ? x / 4.5 : std::pow((x + 0.099) / 1.099, 1 / 0.45); }
double power22(double x) { return std::pow(x, 2.2); }
double power24(double x) { return std::pow(x, 2.4); }

TEST(InverseTable, IsItsRule) {
    QX_LinearBlendingTables tables{};
    const Cases<Text, std::function<double(double)>> curves{
        {"srgb", srgb},
        {"camera", camera},
        {"2.2", power22},
        {"2.4", power24},
        {"0.4", [](double x) { return std::pow(x, 0.4); }},
        {"linear", [](double x) { return x; }},
        {"black", [](double) { return 0; }},
        {"full", [](double) { return 1; }},
        {"plateaus", [](double x) { return (x - 0.2) / 0.6; }},
        {"steps", [](double x) { return std::floor(x * 7) / 7; }},
        {"falling", [](double x) { return 1 - x; }},
    };
    for (const auto& [name, curve] : curves) {
        fill(tables, curve);
        expect_inverse(tables, name);
    }
    for (const auto seed : seeds(1000)) {
        Numbers number(static_cast<unsigned>(seed));
        std::vector<int> values(256);
        for (int& v : values) v = number(0, 5) == 0 ? 32768 * number(0, 2) : number(0, 32769);
        if (seed % 2 == 0) std::sort(values.begin(), values.end());
        if (seed % 4 == 0) std::fill_n(values.begin(), number(0, 100), 0);
        std::copy(values.begin(), values.end(), tables.to_linear);
        expect_inverse(tables, std::to_string(seed));
    }
}

TEST(InverseTable, KeepsTheCodesThatCanBeKept) {
    const Cases<Text, double (*)(double), int, int> cases{// codes of 8 bits that change, and the most at 16 bits
                                                          {"srgb", srgb, 0, 12},
                                                          {"camera", camera, 0, 4},
                                                          {"2.2", power22, 5, 239},
                                                          {"2.4", power24, 7, 32768}};
    for (const auto& [name, curve, changed, most] : cases) {
        QX_LinearBlendingTables tables{};
        fill(tables, curve);
        invert_to_linear(tables);
        int off = 0, farthest = 0;
        const auto back = [&](int y) {
            const int f = y & 7, c = tables.from_linear[y >> 3];
            return f == 0 ? c : c + (((tables.from_linear[(y >> 3) + 1] - c) * f + 4) >> 3);
        };
        for (int code = 0; code < 256; ++code) off += (back(tables.to_linear[code]) * 255 + 16384) >> 15 != code;
        for (int v = 0; v <= 32768; ++v) {
            const int t = v * 255, i = t >> 15, f = t & 0x7FFF, lo = tables.to_linear[i];
            const int y = f == 0 ? lo : lo + (((tables.to_linear[i + 1] - lo) * f + 16384) >> 15);
            farthest = std::max(farthest, std::abs(back(y) - v));
        }
        EXPECT_EQ(off, changed) << name;
        EXPECT_LE(farthest, most) << name;
    }
}

}  // namespace
}  // namespace qx::test
