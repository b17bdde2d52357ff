// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>

#include "tests/platform/ColourKit.h"

namespace {

using namespace qx::test;
using standalone::NewProfilePool;
using standalone::ProfileFacts;
using standalone::ToneCurve;

t_CMX_ID id_of(const HCL_CMX_ProfilePtr& profile) { return profile->GetProfile()->ID(); }
bool same_id(const HCL_CMX_ProfilePtr& a, const HCL_CMX_ProfilePtr& b) { return HCL_EqualCMXIDs(id_of(a), id_of(b)); }

std::int32_t number_at(const ICC& file, std::size_t at) {
    return file[at] << 24 | file[at + 1] << 16 | file[at + 2] << 8 | file[at + 3];
}
/// Where a tag's data stand in a file.
std::size_t tag_at(const ICC& file, std::uint32_t code) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(number_at(file, 128)); ++i) {
        if (number_at(file, 132 + 12 * i) == static_cast<std::int32_t>(code)) {
            return static_cast<std::size_t>(number_at(file, 136 + 12 * i));
        }
    }
    ADD_FAILURE() << "no such tag";
    return 0;
}
constexpr std::uint32_t kColorants[] = {CMX_Code("rXYZ"), CMX_Code("gXYZ"), CMX_Code("bXYZ")};

/// Exponents by numerical integration of the published formulas, to six digits.
TEST(ColourProfile, NamesTellTheirPrimariesAndGammas) {
    const Cases<Text, double, double, double, bool> kNames{
        // name, x of red, y of green, gamma, over range
        {"srgb", 0.64, 0.60, 2.201783, false},      {"rec709", 0.64, 0.60, 1.917339, false},
        {"rec709-2.4", 0.64, 0.60, 2.4, false},     {"display-p3", 0.68, 0.69, 2.201783, false},
        {"rec2020", 0.708, 0.797, 1.917339, false}, {"linear", 0.64, 0.60, 1, true},
        {"linear-rec2020", 0.708, 0.797, 1, true},  {"gamma-2.2", 0.64, 0.60, 2.2, false},
        {"linear-gamma-1.8", 0.64, 0.60, 1, true},  {"gamma-1", 0.64, 0.60, 1, true},
        {"linear-rec709-2.4", 0.64, 0.60, 1, true}, {"gamma-0.1", 0.64, 0.60, 0.1, false},
        {"linear-display-p3", 0.68, 0.69, 1, true},
    };
    for (const auto& [name, red_x, green_y, gamma, over] : kNames) {
        SCOPED_TRACE(name);
        const auto profile = named(name);
        const ProfileFacts facts = FactsOf(*profile);
        ASSERT_TRUE(facts.has_matrix && facts.primaries && facts.gammas);
        EXPECT_NEAR(facts.primaries->red.x, red_x, 2e-4);
        EXPECT_NEAR(facts.primaries->green.y, green_y, 2e-4);
        EXPECT_NEAR(facts.primaries->white.x, 0.3127, 2e-4);
        EXPECT_NEAR(facts.primaries->white.y, 0.3290, 2e-4);
        for (const double g : *facts.gammas) EXPECT_NEAR(g, gamma, 2e-5);
        EXPECT_EQ(facts.over_range, over);
        EXPECT_EQ(profile->IsOverRange(), over);
        EXPECT_TRUE(facts.kind == standalone::ProfileClass::display && facts.space == standalone::ProfileSpace::rgb);
        double rgb[3];
        ASSERT_EQ(QX_ENGINE(ExtractCalRGB)(profile->GetProfile(), rgb, rgb + 1, rgb + 2), 0);
        EXPECT_TRUE(std::equal(rgb, rgb + 3, facts.gammas->begin()));
    }
    for (const std::string& name : standalone::ProfileNames()) EXPECT_NE(named(name), nullptr);
    for (const Text name : {"", "sRGB", "linear-", "linear-linear", "linear-linear-srgb", "gamma-", "gamma-2,2",
                            "gamma--1", "gamma-0", "gamma-0.05", "gamma-11", "gamma-1e1", "gamma-1.2.3", "gamma-nan"}) {
        std::string fault;
        EXPECT_EQ(NamedProfile(name, &fault), nullptr) << name;
        EXPECT_FALSE(fault.empty()) << name;
    }
}

TEST(ColourProfile, GammasFollowThePublishedFormulas) {
    const auto mean = [](const std::function<double(double)>& light) {
        double sum = 0;
        int count = 0;
        for (int i = 1; i < 4096; ++i) {
            const double x = i / 4096.0, y = light(x);
            if (x > 0.07 && y > 0 && y < 1) sum += std::log(y) / std::log(x), ++count;
        }
        return sum / count;
    };
    const auto srgb = [](double x) { return x < 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4); };
    const auto camera = [](double x) { return x < 0.081 ? x / 4.5 : std::pow((x + 0.099) / 1.099, 1 / 0.45); };
    EXPECT_NEAR(FactsOf(*named("srgb")).gammas->at(1), mean(srgb), 5e-5);
    EXPECT_NEAR(FactsOf(*named("rec709")).gammas->at(1), mean(camera), 5e-5);
    EXPECT_NEAR(FactsOf(*must_read(curve_profile(tabulated(1024, 2.2), 2.1))).gammas->at(1), 2.2, 1e-3);
    EXPECT_NEAR(FactsOf(*must_read(grey_profile(1.8))).gammas->at(1), 1.8, 1e-5);
}

TEST(ColourProfile, MadeOnesAreOneWithTheirFiles) {
    for (const std::string& name : standalone::ProfileNames()) {
        SCOPED_TRACE(name);
        const auto profile = named(name);
        const ICC file = ICCOf(*profile);
        const auto again = must_read(file);
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(ICCOf(*again), file);
        EXPECT_EQ(ICCOf(*named(name)), file) << "made twice";
        EXPECT_TRUE(same_id(profile, again));
        EXPECT_EQ(profile->GetName(), again->GetName());
        EXPECT_EQ(number_at(file, 0), static_cast<std::int32_t>(file.size()));
        EXPECT_EQ(number_at(file, 24), 2000 << 16 | 1) << "made at the same time always";
        constexpr std::int32_t kWhite[] = {63190, 65536, 54061};
        for (std::size_t i = 0; i < 3; ++i) {
            std::int32_t sum = 0;
            for (const auto code : kColorants) sum += number_at(file, tag_at(file, code) + 8 + 4 * i);
            EXPECT_EQ(sum, kWhite[i]);
        }
    }
}

/// The library's own MD5 of a file is that of the ICC; with the date zeroed it is ours.
TEST(ColourProfile, IdIsTheMD5OfTheContentWithoutItsDate) {
    for (ICC file : {ICCOf(*named("srgb")), table_profile(4, 2.1), table_profile(3, 4.3)}) {
        const auto id = id_of(must_read(file));
        ICC other = file;
        std::fill_n(other.begin() + 24, 12, std::uint8_t{3});   // date
        std::fill_n(other.begin() + 84, 16, std::uint8_t{77});  // an id that lies
        other[47] = 1, other[67] = 2;                           // flags, intent
        EXPECT_TRUE(HCL_EqualCMXIDs(id_of(must_read(other)), id));
        for (const std::size_t place : {std::size_t{50}, std::size_t{71}, file.size() - 5}) {
            other = file;
            other[place] ^= 1;
            const auto changed = read(other);
            EXPECT_TRUE(changed == nullptr || !HCL_EqualCMXIDs(id_of(changed), id)) << place;
        }
        std::fill_n(file.begin() + 24, 12, std::uint8_t{0});
        const auto opened = open(file);  // which its own writer wrote, so that it stays the same for the sum
        ASSERT_TRUE(cmsMD5computeID(opened.get()));
        t_CMX_ID standard;
        cmsGetHeaderProfileID(opened.get(), standard.bytes);
        EXPECT_TRUE(HCL_EqualCMXIDs(id, standard));
    }
}

TEST(ColourProfile, LinearVersionsKeepColorantsAndWhite) {
    const ICC sources[] = {ICCOf(*named("display-p3")), curve_profile(tabulated(4096, 2.2), 2.1)};
    for (const ICC& file : sources) {
        const auto profile = must_read(file);
        const auto linear = HCL_CMX_GetLinearRGBProfile(profile);
        const ICC made = ICCOf(*linear);
        EXPECT_EQ(linear->GetName(), profile->GetName() + L" (linear)");
        EXPECT_TRUE(linear->IsOverRange() && !profile->IsOverRange());
        const std::array<float, 4> one{0, 0.5F, 0, 1};  // no colour gets light of another one
        std::array<float, 4> light{};
        ASSERT_EQ(apply(link(profile, linear).get(), &one, kFloats, &light, kFloats, 1), 0);
        EXPECT_NEAR(light[1], std::pow(0.5, FactsOf(*profile).gammas->at(0)), 0.01);
        EXPECT_NEAR(light[2], 0, 1e-7);
        EXPECT_NEAR(light[3], 1, 1e-6);
        for (const auto code : {kColorants[0], kColorants[1], kColorants[2], CMX_Code("wtpt")}) {
            for (std::size_t i = 8; i < 20; i += 4) {
                EXPECT_EQ(number_at(made, tag_at(made, code) + i), number_at(file, tag_at(file, code) + i));
            }
        }
    }
    const auto tables = must_read(table_profile(3, 4.3));
    EXPECT_THROW(HCL_CMX_GetLinearRGBProfile(tables), int);
    double g;
    EXPECT_NE(QX_ENGINE(ExtractCalRGB)(tables->GetProfile(), &g, &g, &g), 0);
    EXPECT_FALSE(FactsOf(*tables).primaries || FactsOf(*tables).gammas || FactsOf(*tables).has_matrix);
}

TEST(ColourProfile, HostHasProfilesForItsGammasAndCodes) {
    const Cases<int, Text, float> kGammas{
        {0, "gamma-1.8", 1.8F}, {1, "srgb", 2.2F}, {2, "gamma-2.4", 2.4F}, {7, "srgb", 2.2F}, {-1, "srgb", 2.2F}};
    for (const auto& [number, name, value] : kGammas) {
        const auto gamma = static_cast<HCL_CMX_WorkingGamma>(number);
        EXPECT_EQ(HCL_CMX_GetWorkingGammaAsFloat(gamma), value);
        EXPECT_TRUE(same_id(HCL_CMX_GetDefaultProfile(gamma), named(name))) << name;
    }
    for (const auto& [code, name] :
         Cases<std::uint32_t, Text>{{CMX_Code("sRGB"), "srgb"}, {CMX_Code("r7hf"), "rec709"}}) {
        CMX_Profile* made = nullptr;
        ASSERT_EQ(QX_ENGINE(ProfileFromCode)(code, &made), 0);
        EXPECT_TRUE(HCL_EqualCMXIDs(made->ID(), id_of(named(name))));
        made->UnReference();
    }
    CMX_Profile* none = nullptr;
    EXPECT_NE(QX_ENGINE(ProfileFromCode)(CMX_Code("aRGB"), &none), 0);
    EXPECT_EQ(none, nullptr);
    EXPECT_TRUE(same_id(HCL_CMX_GetRec709Gamma24ReferenceProfile(nullptr), named("rec709-2.4")));
}

TEST(ColourPool, KeepsTheFirstObjectOfAnId) {
    const auto pool = NewProfilePool();
    const auto first = named("srgb"), second = named("srgb"), other = named("rec709");
    EXPECT_TRUE(HCL_EqualCMXIDs(pool->AddProfile(nullptr), CMX_EmptyProfile_ID));
    EXPECT_EQ(pool->GetProfile(CMX_EmptyProfile_ID), nullptr);
    EXPECT_EQ(pool->GetProfile(id_of(first)), nullptr);
    const t_CMX_ID id = pool->AddProfile(first);
    EXPECT_TRUE(HCL_EqualCMXIDs(id, id_of(first)) && !HCL_EqualCMXIDs(id, CMX_EmptyProfile_ID));
    EXPECT_TRUE(HCL_EqualCMXIDs(pool->AddProfile(second), id));
    EXPECT_EQ(pool->GetProfile(id), first);
    EXPECT_FALSE(HCL_EqualCMXIDs(pool->AddProfile(other), id));
    const auto reference = HCL_CMX_GetRec709Gamma24ReferenceProfile(pool);
    EXPECT_EQ(HCL_CMX_GetRec709Gamma24ReferenceProfile(pool), reference);
    in_threads(8, [&](int i) {
        const auto own = named(i % 2 == 0 ? "srgb" : "display-p3");
        EXPECT_EQ(pool->GetProfile(pool->AddProfile(own))->GetName(), own->GetName());
    });
    EXPECT_EQ(pool->GetProfile(id), first);
}

t_CMX_ID display_id(CMX_Error wanted = 0) {
    CMX_Profile *main = nullptr, *of_handle = nullptr;
    int display = 0;
    EXPECT_EQ(QX_ENGINE(MainMonitorProfile)(&main) != 0, wanted != 0);
    EXPECT_EQ(QX_ENGINE(MonitorProfileN)(&display, &of_handle) != 0, wanted != 0);
    if (main == nullptr || of_handle == nullptr) return CMX_EmptyProfile_ID;
    const t_CMX_ID id = main->ID();
    EXPECT_TRUE(HCL_EqualCMXIDs(of_handle->ID(), id));
    main->UnReference(), of_handle->UnReference();
    return id;
}

TEST(ColourProfile, DisplayIsWhatTheHostOrTheEnvironmentNames) {
    const auto path = std::filesystem::temp_directory_path() / ("qx-display-" + std::to_string(::getpid()) + ".icc");
    const ICC file = ICCOf(*named("display-p3"));
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    ::unsetenv("QX_DISPLAY_PROFILE");
    EXPECT_TRUE(HCL_EqualCMXIDs(display_id(), id_of(named("srgb"))));
    for (const auto& [value, name] :
         Cases<std::string, Text>{{"", "srgb"}, {"rec2020", "rec2020"}, {path, "display-p3"}}) {
        ::setenv("QX_DISPLAY_PROFILE", value.c_str(), 1);
        EXPECT_TRUE(HCL_EqualCMXIDs(display_id(), id_of(named(name)))) << value;
    }
    ::setenv("QX_DISPLAY_PROFILE", "/nowhere/at-all.icc", 1);
    display_id(1);
    EXPECT_NE(standalone::LastColourFault().find("/nowhere/at-all.icc"), std::string::npos);
    standalone::SetDisplayProfile(named("rec709"));
    EXPECT_TRUE(HCL_EqualCMXIDs(display_id(), id_of(named("rec709"))));
    standalone::SetDisplayProfile(nullptr);
    ::unsetenv("QX_DISPLAY_PROFILE");
    std::filesystem::remove(path);
    std::string fault;
    EXPECT_EQ(standalone::ProfileByNameOrFile("/tmp", &fault), nullptr) << "a folder";
    EXPECT_FALSE(fault.empty());
}

TEST(ColourProfile, RecipesThatMakeNoProfileAreRefused) {
    const auto rec709 = standalone::kRec709Primaries;
    auto flat = rec709, nowhere = rec709;
    flat.green = flat.red;
    nowhere.white = {0.3, 0};
    const Cases<standalone::Primaries, double> kRecipes{{flat, 2},    {nowhere, 2},  {rec709, 0},
                                                        {rec709, -1}, {rec709, NAN}, {rec709, 20}};
    for (const auto& [primaries, exponent] : kRecipes) {
        std::string fault;
        EXPECT_EQ(standalone::MakeProfile({"x", primaries, ToneCurve::power, exponent}, &fault), nullptr);
        EXPECT_FALSE(fault.empty());
    }
    const auto made = standalone::MakeProfile({"Fl\xC3\xA4"
                                               "che",
                                               rec709, ToneCurve::power, 2},
                                              nullptr);
    EXPECT_EQ(FactsOf(*made).name,
              "Fl\xC3\xA4"
              "che");
}

TEST(ColourOptions, AreThoseOfTheHost) {
    bool flag = true;
    const auto standard = HCL_GetDefaultCMXOptions(&flag), fast = HCL_GetFastCMXOptions();
    EXPECT_FALSE(flag);
    EXPECT_TRUE(standard.count == 1 && standard.pairs[0].key == CMX_Code("optL") && standard.pairs[0].value == 0);
    EXPECT_TRUE(fast.count == 2 && fast.pairs[0].key == CMX_Code("optL") && fast.pairs[0].value == 100);
    EXPECT_TRUE(fast.pairs[1].key == CMX_Code("clip") && fast.pairs[1].value == 1);
    HCL_GetDefaultCMXOptions(nullptr);
    HCL_CMX_ETX(0);
    EXPECT_THROW(HCL_CMX_ETX(kCMX_NotLoaded), int);
    EXPECT_EQ(kCMX_NotLoaded, 0x67656E20);
    EXPECT_EQ(standalone::FindColourProcedure("CMXInterface1", "ApplyTransform"), nullptr);
    EXPECT_EQ(standalone::FindColourProcedure(kCMX_Label, "MakeProofingTransform"), nullptr);
}

}  // namespace
