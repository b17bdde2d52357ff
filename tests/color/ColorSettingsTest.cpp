// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColorSettings.h"

#include <boost/make_shared.hpp>

#include "QX/color/QX_LinearizationTables.h"
#include "platform/standalone/Colour.h"
#include "tests/color/RecordingEngine.h"

namespace qx::test {
namespace {

using Settings = QX_ColorSettings;

HCL_CMX_ProfilePtr named(const char* name) {
    std::string fault;
    auto profile = standalone::NamedProfile(name, &fault);
    EXPECT_TRUE(profile) << fault;
    return profile;
}

std::array<std::uint8_t, 16> bytes_of(const Guid& guid) {
    std::array<std::uint8_t, 16> bytes;
    std::memcpy(bytes.data(), &guid, sizeof guid);
    return bytes;
}

/// Settings that differ from each other in every field, some by pools and ids alone.
struct Variety {
    HCL_CMX_ProfilePoolPtr pools[2] = {standalone::NewProfilePool(), standalone::NewProfilePool()};
    std::vector<std::unique_ptr<Settings>> all{};

    Variety() {
        const t_CMX_ID unknown{{1, 2, 3}};
        const HCL_CMX_ProfilePtr profiles[] = {nullptr, named("srgb"), named("display-p3")};
        for (const auto& pool : pools) {
            for (const auto& [profile, gamma, linearize, blending] :
                 each(profiles, std::array{0, 1, 2}, std::array{false, true}, std::array{false, true})) {
                const auto working = static_cast<HCL_CMX_WorkingGamma>(gamma);
                all.push_back(std::make_unique<Settings>(pool, profile, working, linearize, blending));
            }
            all.push_back(std::make_unique<Settings>(pool, unknown, kHCL_Gamma22, false, true));
            all.push_back(std::make_unique<Settings>(pool));
        }
    }
};

TEST(ColorSettings, NeedAPool) {
    const HCL_CMX_ProfilePoolPtr none;
    const std::string text = "You have to have a valid profile pool to set a profile.";
    expect_refused(text, {thrown([&] { Settings{none}; }),
                          thrown([&] { Settings(none, named("srgb"), kHCL_Gamma22, false, false); }),
                          thrown([&] { Settings(none, CMX_EmptyProfile_ID, kHCL_Gamma22, false, false); })});
}

TEST(ColorSettings, HoldWhatTheyAreMadeOf) {
    const Born born;
    const auto pool = standalone::NewProfilePool();
    const Settings none(pool);
    EXPECT_FALSE(none.IsValid() || none.GetLinearize() || none.GetLinearBlending() || none.GetProfile());
    EXPECT_EQ(none.GetDefaultWorkingGamma(), kHCL_Gamma22);
    EXPECT_TRUE(HCL_EqualCMXIDs(none.GetProfileID(), CMX_EmptyProfile_ID));
    EXPECT_EQ(none.GetAdjustedProfile()->GetName(), HCL_CMX_GetDefaultProfile(kHCL_Gamma22)->GetName());

    const auto profile = named("display-p3");
    const Settings made(pool, profile, kHCL_Gamma24, true, true);
    const Settings again(pool, made.GetProfileID(), kHCL_Gamma24, true, true);
    const Settings copy(made);
    for (const Settings* settings : {&made, &again, &copy}) {
        EXPECT_TRUE(settings->IsValid() && settings->GetProfile() == profile && *settings == made);
        EXPECT_TRUE(settings->GetLinearize() && settings->GetLinearBlending());
        EXPECT_EQ(settings->DefaultWorkingGammaToFloat(), 2.4f);
        EXPECT_EQ(settings->GetAdjustedProfile(), settings->GetAdjustedProfile());
        EXPECT_TRUE(settings->GetAdjustedProfile()->IsOverRange());
        EXPECT_EQ(settings->GetCalGrayGamma(), 1.0f);
    }
    EXPECT_NE(copy.GetAdjustedProfile(), made.GetAdjustedProfile());  // answers of its own
    const Settings unknown(pool, t_CMX_ID{{9}}, kHCL_Gamma22, false, false);
    EXPECT_TRUE(unknown.IsValid() && !unknown.GetProfile());
}

TEST(ColorSettings, TablesAreThereWhereTheyAreOfUse) {
    const Born born;
    const auto pool = standalone::NewProfilePool();
    for (const auto& [linearize, blending, force] :
         each(std::array{false, true}, std::array{false, true}, std::array{false, true})) {
        const Settings settings(pool, named("rec709"), kHCL_Gamma22, linearize, blending);
        const auto* const tables = settings.GetLinearBlendingTables(force);
        EXPECT_EQ(tables != nullptr, force || (blending && !linearize));
        EXPECT_EQ(settings.GetLinearBlendingTables(force), tables);
    }
}

TEST(ColorSettings, AFailedAnswerIsAskedForAgain) {
    const Born born;
    RecordingEngine engine;
    const auto pool = standalone::NewProfilePool();
    const Settings settings(pool, named("srgb"), kHCL_Gamma22, false, true);
    engine.failing = "ApplyTransform";
    EXPECT_EQ(code_of([&] { settings.GetLinearBlendingTables(false); }), RecordingEngine::kFault);
    engine.failing = "ExtractCalRGB";
    EXPECT_EQ(code_of([&] { settings.GetLinearBlendingTables(false); }), RecordingEngine::kFault);
    EXPECT_EQ(code_of([&] { settings.GetCalGrayGamma(); }), RecordingEngine::kFault);
    engine.failing.clear();
    EXPECT_EQ(settings.GetCalGrayGamma(), 2.25f);
    const auto* const tables = settings.GetLinearBlendingTables(false);
    ASSERT_NE(tables, nullptr);
    EXPECT_EQ(tables->to_linear_gamma, 2.25f);
    EXPECT_EQ(tables->from_linear_gamma, 1 / 2.25f);
    EXPECT_EQ(engine.live, 0);
    engine.calls.clear();
    settings.GetLinearBlendingTables(true), settings.GetCalGrayGamma();
    EXPECT_TRUE(engine.calls.empty());
}

TEST(ColorSettings, RenderGuidsTellEveryFieldAndNothingElse) {
    const Born born;
    const auto pool = standalone::NewProfilePool();
    const std::array<std::uint8_t, 16> want{0x7d, 0x19, 0xc9, 0x99, 0xf1, 0x11, 0x92, 0xc3,
                                            0x20, 0x79, 0x79, 0xf5, 0x5e, 0xb0, 0xab, 0x05};
    EXPECT_EQ(bytes_of(Settings(pool).GetRenderGuid()), want);  // calculated apart
    const Variety variety;
    std::map<std::array<std::uint8_t, 16>, int> seen;
    for (const auto& settings : variety.all) ++seen[bytes_of(settings->GetRenderGuid())];
    EXPECT_EQ(seen.size(), 37u);  // one for each of the choices of one pool: without a profile one is there twice
    for (const auto& [guid, times] : seen) EXPECT_TRUE(times == 2 || times == 4);
}

/// The five stages as they are told.
int told_order(const Settings& a, const Settings& b) {
    const auto compare = [](auto x, auto y) { return x < y ? -1 : x > y ? 1 : 0; };
    const auto address = [](const auto& p) { return reinterpret_cast<std::uintptr_t>(p.get()); };
    const int s1 = compare(address(a.GetProfilePool()), address(b.GetProfilePool()));
    const int s2 = s1 != 0 ? 0 : compare(address(a.GetProfile()), address(b.GetProfile()));
    const int s3 = s2 != 0 ? 0 : compare(int{a.GetLinearBlending()}, int{b.GetLinearBlending()});
    const int s4 = s3 != 0 ? 0 : compare(int{a.GetLinearize()}, int{b.GetLinearize()});
    return s4 != 0 ? 0 : compare(int{a.GetDefaultWorkingGamma()}, int{b.GetDefaultWorkingGamma()});
}

TEST(ColorSettings, OrderAndEqualityAreThoseThatAreTold) {
    const Born born;
    const Variety v;
    bool intransitive = false;
    for (const auto& a : v.all) {
        for (const auto& b : v.all) {
            const int order = a->GetSortOrder(*b);
            ASSERT_EQ(order, told_order(*a, *b));
            ASSERT_EQ(order, -b->GetSortOrder(*a));
            const bool same_gamma = a->GetDefaultWorkingGamma() == b->GetDefaultWorkingGamma();
            const bool both = a->IsValid() && b->IsValid();
            const bool same = a->GetLinearize() == b->GetLinearize() &&
                              a->GetLinearBlending() == b->GetLinearBlending() &&
                              a->GetProfilePool() == b->GetProfilePool() && a->GetProfile() == b->GetProfile();
            const bool equal = same_gamma && (both ? same : a->IsValid() == b->IsValid());
            ASSERT_EQ(*a == *b, equal);
            ASSERT_NE(*a == *b, *a != *b);
            for (const auto& c : v.all)
                intransitive = intransitive || (order < 0 && b->GetSortOrder(*c) < 0 && a->GetSortOrder(*c) >= 0);
        }
    }
    EXPECT_TRUE(intransitive);  // "less" orders pairs only
}

TEST(ColorSettings, ScopesAreTimedWhereThatIsAskedFor) {
    const Born born;
    const Settings settings(standalone::NewProfilePool());
    const auto scopes = [] {
        std::map<std::string, std::int64_t> all;
        for (const auto& scope : standalone::ProfiledScopes()) all[scope.name] += scope.scopes;
        return all;
    };
    const auto ask = [&] {
        settings.GetAdjustedProfile(), settings.GetCalGrayGamma(), settings.GetLinearBlendingTables(true);
    };
    const auto before = scopes();
    standalone::SetProfilingVolume(5);
    ask();
    EXPECT_EQ(scopes(), before);
    standalone::SetProfilingVolume(6);
    ask();
    standalone::SetProfilingVolume(0);
    ask();
    auto after = scopes();
    for (const char* name : {"GetAdjustedProfile", "GetCalGrayGamma", "GetLinearBlendingTables"})
        EXPECT_EQ(after[std::string("VN.QX_ColorSettings::") + name], 1) << name;
}

TEST(ColorSettingsThreads, AskForEverythingAtOnce) {
    const Born born;
    const Settings settings(standalone::NewProfilePool(), named("rec709"), kHCL_Gamma22, false, true);
    const Settings linear(standalone::NewProfilePool(), named("rec709"), kHCL_Gamma22, true, false);
    std::array<const void*, 16> tables{}, profiles{};
    in_threads(16, [&](int i) {
        const auto at = static_cast<std::size_t>(i);
        if (i % 2 == 0) linear.GetCalGrayGamma();
        profiles[at] = linear.GetAdjustedProfile().get();
        tables[at] = settings.GetLinearBlendingTables(false);
    });
    EXPECT_EQ(std::set<const void*>(tables.begin(), tables.end()).size(), 1u);
    EXPECT_EQ(std::set<const void*>(profiles.begin(), profiles.end()).size(), 1u);
}

}  // namespace
}  // namespace qx::test
