// SPDX-License-Identifier: Apache-2.0
// Tables of profiles, against the formulas of their curves.
#include "QX/color/QX_LinearizationTables.h"

#include <boost/make_shared.hpp>

#include "QX/color/QX_ColorSettings.h"
#include "QX/compositing/QX_InverseTable.h"
#include "QX/sampling/QX_HorizontalSum.h"
#include "platform/standalone/Colour.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

HCL_CMX_ProfilePtr named(const std::string& name) {
    std::string fault;
    auto profile = standalone::NamedProfile(name, &fault);
    EXPECT_TRUE(profile) << fault;
    return profile;
}
/// As a profile's file holds a number.
double in_file(double v) { return std::floor(v * 65536 + 0.5) / 65536; }

double srgb(double x) {
    const double a = in_file(1 / 1.055), b = in_file(0.055 / 1.055), c = in_file(1 / 12.92);
    return x >= in_file(0.04045) ? std::pow(a * x + b, in_file(2.4)) : c * x;
}
double camera(double x) {
    const double a = in_file(1 / 1.099), b = in_file(0.099 / 1.099), c = in_file(1 / 4.5);
    return x >= in_file(0.081) ? std::pow(a * x + b, in_file(1 / 0.45)) : c * x;
}
template <int Tenths> double power(double x) { return std::pow(x, in_file(Tenths / 10.0)); }

TEST(LinearizationTables, AreTheCurvesAtTheRampsValues) {
    const Born born;
    const Cases<Text, double (*)(double), double> cases{// with the exponent that comes near
                                                        {"srgb", srgb, 2.201783},
                                                        {"display-p3", srgb, 2.201783},
                                                        {"rec709", camera, 1.917339},
                                                        {"rec2020", camera, 1.917339},
                                                        {"rec709-2.4", power<24>, in_file(2.4)},
                                                        {"gamma-2.2", power<22>, in_file(2.2)},
                                                        {"gamma-1.8", power<18>, in_file(1.8)},
                                                        {"linear-rec2020", power<10>, 1}};
    for (const auto& [name, curve, exponent] : cases) {
        const auto tables = QX_MakeLinearizationTables(named(name), kHCL_Gamma22);
        for (std::uint32_t i = 0; i < 256; ++i) {
            const double want = curve(ramp_value(i) / 32768.0) * 32768;
            if (std::abs(want - std::floor(want) - 0.5) < 0.002) continue;  // either way
            ASSERT_EQ(tables->to_linear[i], std::floor(want + 0.5)) << name << " " << i;
        }
        EXPECT_NEAR(tables->to_linear_gamma, exponent, 5e-7) << name;
        EXPECT_EQ(tables->from_linear_gamma, 1 / tables->to_linear_gamma);
        QX_LinearBlendingTables inverse = *tables;
        invert_to_linear(inverse);
        EXPECT_EQ(std::memcmp(&inverse, tables.get(), sizeof inverse), 0);
    }
}

TEST(LinearizationTables, OfAPowerAreThoseWithoutAProfile) {
    const Born born;
    for (const char* text : {"1", "1.8", "2.2", "2.4", "2.6"}) {
        const auto by_profile = QX_MakeLinearizationTables(named(std::string("gamma-") + text), kHCL_Gamma22);
        QX_LinearBlendingTables plain;
        QX_BuildGammaBlendingTables(std::strtof(text, nullptr), &plain);
        EXPECT_EQ(std::memcmp(&plain, by_profile.get(), sizeof plain), 0) << text;
    }
}

TEST(LinearizationTables, WithoutAProfileAreThoseOfSrgbWhateverTheGamma) {
    const Born born;
    const auto srgb = QX_MakeLinearizationTables(named("srgb"), kHCL_Gamma22);
    for (const int gamma : {0, 1, 2}) {
        const auto tables = QX_MakeLinearizationTables({}, static_cast<HCL_CMX_WorkingGamma>(gamma));
        EXPECT_EQ(std::memcmp(tables.get(), srgb.get(), sizeof *srgb), 0);
    }
}

TEST(LinearizationTables, EveryFailedAllocationGivesItsCodeAndLeaksNothing) {
    const Born born;
    const auto profile = named("srgb");
    const auto make = [&] { return code_of([&] { QX_MakeLinearizationTables(profile, kHCL_Gamma22); }); };
    EXPECT_EQ(make(), 0);
    const std::int64_t blocks = blocks_in_use();
    int nth = 1;
    for (const Reports reports; short_of_memory(nth, make) != 0; ++nth) {
        EXPECT_EQ(short_of_memory(nth, make), 4) << nth;
        EXPECT_EQ(out_of_memory_from(nth, make), 4) << nth;
        EXPECT_EQ(blocks_in_use(), blocks) << nth;
    }
    EXPECT_GT(nth, 1);
    EXPECT_EQ(make(), 0);
}

TEST(HorizontalSumSettings, SumLinearLightWhereThatIsAskedFor) {
    const Born born;
    TestWorld<QX_PixelFloat> world(9, 4, FillKind::layer, 3);
    const auto settings = boost::make_shared<QX_ColorSettings>(standalone::NewProfilePool(), named("gamma-2.4"),
                                                               kHCL_Gamma22, false, false);
    const auto tables = QX_MakeLinearizationTables(named("gamma-2.4"), kHCL_Gamma22);
    using Sums = QX_HorizontalSumTable<QX_PixelFloat>;
    for (const bool linear : {false, true}) {
        const Sums by_settings(&world.world(), 1, 2, 3, 0.5, 0.6, 0.2, 1, 0, true, settings, linear);
        const Sums by_tables(&world.world(), 1, 2, 3, 0.5, 0.6, 0.2, 1, 0, true, linear ? tables.get() : nullptr);
        const auto cells = static_cast<std::size_t>(by_tables.Width()) * static_cast<std::size_t>(by_tables.Height());
        EXPECT_EQ(std::memcmp(by_settings.Cells(), by_tables.Cells(), cells * sizeof(QX_PixelFloat)), 0) << linear;
    }
}

}  // namespace
}  // namespace qx::test
