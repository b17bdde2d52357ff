// SPDX-License-Identifier: Apache-2.0
// The library's ways to the engine, through one that records.
#include "QX/color/QX_Profiles.h"

#include <boost/make_shared.hpp>

#include "QX/color/QX_ColorSettings.h"
#include "platform/standalone/Colour.h"
#include "tests/color/RecordingEngine.h"

namespace qx::test {
namespace {

using Calls = std::vector<std::string>;

HCL_CMX_ProfilePtr shared(HCL_CMX_Profile profile) { return boost::make_shared<HCL_CMX_Profile>(std::move(profile)); }

HCL_XIFAddressProc registry() {
    HCL_XIFAddressProc proc = nullptr;
    EXPECT_EQ(HCL_GetXIFAddressProc(&proc), 0);
    return proc;
}

TEST(ColourEngineTable, IsAskedForFromItsEndAndAgainWhenTheRegistryChanges) {
    const Born born;
    RecordingEngine engine;
    const Calls names{"ExtractCalRGB",        "OptimizeTransform",  "ConcatTransforms",   "ApplyTransform",
                      "UnReferenceTransform", "ReferenceTransform", "MakeColorTransform", "MonitorProfileN",
                      "MainMonitorProfile",   "ProfileFromCode"};
    Calls want;
    for (const auto& name : names) want.push_back("CMXInterface2 " + name);
    EXPECT_EQ(engine.asked, want);
    const auto gamma = [] {
        float red, green, blue;
        return code_of([&] { QX_GetCalRGBGammas({}, &red, &green, &blue); });
    };
    EXPECT_EQ(gamma(), 0);
    EXPECT_EQ(engine.asked.size(), 10u);

    for (const auto& name : names) {  // a look-up that fails ends the loader
        engine.missing = name, engine.asked.clear();
        try {
            load_colour_engine(registry());
            ADD_FAILURE() << name;
        } catch (const BRVException& fault) {
            EXPECT_STREQ(fault.what(), "couldn't init CCMX");
        }
        EXPECT_EQ(engine.asked.back(), "CMXInterface2 " + name);
        EXPECT_EQ(gamma(), static_cast<int>(CMX_Code("gen ")));
        EXPECT_EQ(Born().code(), 1);
    }
    engine.missing.clear();
    EXPECT_EQ(gamma(), 0);  // there again, without a new start
}

TEST(ColourEngineThreads, LoadWhileOthersCall) {
    const Born born;
    RecordingEngine engine;
    std::atomic<int> failed{0};
    in_threads(8, [&](int i) {
        for (int k = 0; k < 50; ++k) {
            if (i == 0 && k % 10 == 0) {
                load_colour_engine(registry());
            } else {
                const auto transform = engine.transform("t");
                const auto call = [&](auto procedure) {
                    failed += call_colour_engine(procedure, transform.GetTransform()) != 0;
                };
                call(&ColourEngine::ReferenceTransform), call(&ColourEngine::UnReferenceTransform);
            }
        }
    });
    EXPECT_EQ(failed, 0);
}

TEST(Profiles, GammasAndProfilesAreTheEngines) {
    const Born born;
    RecordingEngine engine;
    float red = 0, green = 0, blue = 0;
    QX_GetCalRGBGammas(shared(engine.profile("p")), &red, &green, &blue);
    EXPECT_TRUE(red == 1.5f && green == 2.25f && blue == 3.1f);
    char display[] = "display";
    EXPECT_EQ(QX_GetPlatformDisplayProfile(nullptr).GetName(), L"main");
    EXPECT_EQ(QX_GetPlatformDisplayProfile(display).GetName(), L"display");
    for (const int variant : {0, 2, -1})
        EXPECT_EQ(QX_GetRec709Profile(QX_Rec709_VARIANT{variant}, {})->GetName(), L"r7hf");
    EXPECT_EQ(engine.calls, (Calls{"ExtractCalRGB p", "MainMonitorProfile", "MonitorProfileN display",
                                   "ProfileFromCode r7hf", "ProfileFromCode r7hf", "ProfileFromCode r7hf"}));
    EXPECT_EQ(engine.live, 0);
}

TEST(Profiles, LinearTransformsGoToOrFromTheAnchorsLight) {
    const Born born;
    RecordingEngine engine;
    const auto a = shared(engine.profile("a")), b = shared(engine.profile("b"));
    const auto made = [&](const HCL_CMX_ProfilePtr& from, const HCL_CMX_ProfilePtr& to, bool to_linear) {
        return RecordingEngine::text_of_transform(
            QX_GetLinearizeTransform(from, to, kHCL_Gamma24, to_linear).GetTransform());
    };
    EXPECT_EQ(made(a, b, true), "a>linear b 1{optL0}");
    EXPECT_EQ(made(a, b, false), "linear a>b 1{optL0}");
    const auto standard = name_of(HCL_CMX_GetDefaultProfile(kHCL_Gamma24)->GetProfile());
    const auto linear = name_of(HCL_CMX_GetLinearRGBProfile(HCL_CMX_GetDefaultProfile(kHCL_Gamma24))->GetProfile());
    EXPECT_EQ(made(a, {}, true), "a>" + linear + " 1{optL0}");
    EXPECT_EQ(made({}, b, true), standard + ">linear b 1{optL0}");
    EXPECT_EQ(made({}, b, false), linear + ">b 1{optL0}");
}

/// The transform of a display as its rule tells it.
struct DisplayCase {
    bool source_over, simulation, simulation_over, output, keep, optimize, limits;

    std::string want() const {
        const std::string standard = "{optL0}", quick = "{optL100 clip1}";
        const std::string source = source_over ? "source over" : "source";
        const std::string simulated = simulation_over ? "simulation over" : "simulation";
        std::string text;
        if (!output) {
            text = source + ">monitor " + (source_over ? "3" + standard : "1" + quick);
        } else {
            const std::string last = "output>monitor 1" + (limits || optimize ? quick : standard);
            if (simulation) {
                std::string first =
                    source + ">" + simulated + (source_over || simulation_over ? " 3" : " 1") + standard;
                if (!keep) first = "(" + first + ", " + simulated + ">output 1" + standard + ")";
                text = "(" + first + ", " + last + ")";
            } else if (keep) {
                text = last;
            } else {
                text = "(" + source + ">output " + (source_over ? "3" : "1") + standard + ", " + last + ")";
            }
        }
        return optimize ? "fast " + text + "{optL100}" : text;
    }
};

TEST(DisplayTransform, IsWhatItsSwitchesSay) {
    const Born born;
    RecordingEngine engine;
    const Text section = "Display Transform Section",
               key = "Clip over range in Display Transform when not Theater Preview";
    for (unsigned bits = 0; bits < 128; ++bits) {
        const auto bit = [&](int i) { return (bits >> i & 1) != 0; };
        const DisplayCase c{bit(0), bit(1), bit(2), bit(3), bit(4), bit(5), bit(6)};
        standalone::ForgetPreferences();
        if (!c.limits) standalone::SetPreference(section, key, "0");
        const auto source = engine.profile(c.source_over ? "source over" : "source");
        const auto monitor = engine.profile("monitor"), output = engine.profile("output");
        const auto simulation = engine.profile(c.simulation_over ? "simulation over" : "simulation");
        const std::int64_t before = engine.live;
        const auto make = [&] {
            return QX_NewDisplayTransform(source, monitor, c.simulation ? &simulation : nullptr,
                                          c.output ? &output : nullptr, c.keep, c.optimize);
        };
        engine.calls.clear();
        {
            const auto made = make();
            EXPECT_EQ(RecordingEngine::text_of_transform(made.GetTransform()), c.want()) << bits;
        }
        EXPECT_EQ(engine.live, before) << bits;
        for (const char* failing :
             {"MakeColorTransform", "ConcatTransforms", "ReferenceTransform", "OptimizeTransform"}) {
            const bool is_called = std::any_of(engine.calls.begin(), engine.calls.end(),
                                               [&](const std::string& call) { return call.starts_with(failing); });
            engine.failing = failing;
            EXPECT_EQ(code_of(make), is_called ? RecordingEngine::kFault : 0);
            EXPECT_EQ(engine.live, before) << bits << failing;
            engine.failing.clear();
        }
    }
    standalone::ForgetPreferences();
    standalone::SetPreferenceError(99);
    const auto p = engine.profile("p");
    EXPECT_EQ(code_of([&] { QX_NewDisplayTransform(p, p, nullptr, nullptr, false, false); }), 99);
    standalone::SetPreferenceError(0);
}

TEST(WorkingSpaceName, NamesTheProfileThatIsWorkedIn) {
    const Born born;
    RecordingEngine engine;
    const auto pool = standalone::NewProfilePool();
    const std::wstring begin = L"Working Space - ";
    EXPECT_EQ(QX_GetWorkingSpaceProfileName({}), begin + L"None");
    EXPECT_EQ(QX_GetWorkingSpaceProfileName(boost::make_shared<QX_ColorSettings>(pool)), begin + L"None");
    const auto profile = HCL_CMX_GetDefaultProfile(kHCL_Gamma24);
    for (const bool linear : {false, true}) {
        const auto settings = boost::make_shared<QX_ColorSettings>(pool, profile, kHCL_Gamma22, linear, false);
        const auto want = linear ? HCL_CMX_GetLinearRGBProfile(profile) : profile;
        EXPECT_EQ(QX_GetWorkingSpaceProfileName(settings), begin + want->GetName());
    }
}

}  // namespace
}  // namespace qx::test
