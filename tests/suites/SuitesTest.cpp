// SPDX-License-Identifier: Apache-2.0
#include <variant>

#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_SuiteRoutines.h"
#include "platform/TK_CPU.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

template <class Routine> void* at(Routine* routine) { return reinterpret_cast<void*>(routine); }

/// What an entry has to be: a number below 118 is that slot, an address a routine, kField + i a field of the block,
/// kOwn what no other table has.
using Entry = std::variant<int, void*>;
struct Wanted {
    Text name;
    int version, internal_version;
    std::vector<Entry> entries;
};
constexpr int kField = 1000, kOwn = 2000;

std::vector<Entry> fields(int first, int count) {
    std::vector<Entry> all;
    for (int i = 0; i < count; ++i) all.emplace_back(kField + first + i);
    return all;
}
#define COLOURS(Form)                                                                                         \
    {                                                                                                         \
        at(&QX_RGBtoHLS_##Form), at(&QX_HLStoRGB_##Form), at(&QX_RGBtoYIQ_##Form), at(&QX_YIQtoRGB_##Form),   \
            at(&QX_Luminance_##Form), at(&QX_Hue_##Form), at(&QX_Lightness_##Form), at(&QX_Saturation_##Form) \
    }

const Wanted kWanted[] = {
    {"VN CPU Data Suite", 1, 1, {kOwn, kOwn, kOwn, kOwn}},
    {"QX ANSI Suite", 1, 1, fields(26, 19)},
    {"QX Handle Suite", 2, 1, {kField + 20, kField + 21, kField + 22, kField + 23, kField + 55, kField + 58}},
    {"QX Color Suite", 1, 1, fields(46, 8)},
    {"QX Color16 Suite", 1, 1, COLOURS(Straight16)},
    {"QX ColorFloat Suite", 1, 1, COLOURS(StraightFloat)},
    {"QX Batch Sampling Suite", 1, 1, {nullptr, nullptr, nullptr, nullptr}},
    {"QX Sampling8 Suite", 1, 1, {2, 3, 5}},
    {"QX Sampling16 Suite", 1, 1, {63, 64, 65}},
    {"QX SamplingFloat Suite",
     1,
     1,
     {at(&QX_NNSampleFloat), at(&QX_SubpixelBilinearFloat), at(&QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>)}},
    {"QX World Suite", 1, 1, {kField + 14, kField + 15}},
    {"QX Iterate8 Suite", 1, 1, {42, 43, 44, 51, 53}},
    {"QX iterate16 Suite", 1, 1, {42, 43, 51}},
    {"QX iterateFloat Suite", 1, 1, {42, 43, 51}},
    {"QX World Transform Suite", 1, 1, {9, at(&QX_Blend_Straight), 28, 23, 24, kField + 18, kField + 19}},
    {"QX Fill Matte Suite",
     2,
     2,
     {at(&QX_Fill), at(&QX_Fill16), at(&QX_FillFloat), at(&QX_Premul), at(&QX_PremulColor), at(&QX_PremulColor16),
      at(&QX_PremulColorFloat)}},
    {"QX Pixel Data Suite",
     2,
     2,
     {at(&QX_GetPixelData8), at(&QX_GetPixelData16), at(&QX_GetPixelDataFloat), at(&QX_GetPixelDataFloatGPU)}},
    {"QX Pixel Data Suite", 1, 1, {at(&QX_GetPixelData8), at(&QX_GetPixelData16), at(&QX_GetPixelDataFloat)}},
    {"QX World Suite", 2, 2, {kOwn, kField + 15, kOwn}},
};
constexpr std::size_t kCount = std::size(kWanted);
static_assert(kCount == 19);

class Suites : public testing::Test {
protected:
    Suites() { standalone::ForgetSuites(); }
    ~Suites() override {
        standalone::SetRegistrationGate({});
        standalone::ForgetSuites();
    }
    Born born{4};
    Reports reports;

    static void* wanted(const Entry& entry) {
        if (std::holds_alternative<void*>(entry)) return std::get<void*>(entry);
        const int number = std::get<int>(entry);
        if (number < kField) return QXp_G_OverFuncs[number];
        QX_CallbackBlock block;
        QX_GetCallbackBlock(1, 1, &block);
        return block.fields[number - kField];
    }
    static void expect_tables() {
        const auto all = standalone::RegisteredSuites();
        ASSERT_EQ(all.size(), kCount);
        for (std::size_t i = 0; i < kCount; ++i) {
            SCOPED_TRACE(kWanted[i].name);
            EXPECT_EQ(all[i].name, kWanted[i].name);
            EXPECT_EQ(all[i].version, kWanted[i].version);
            EXPECT_EQ(all[i].internal_version, kWanted[i].internal_version);
            ASSERT_EQ(all[i].entries, static_cast<int>(kWanted[i].entries.size()));
            const auto* table = static_cast<void* const*>(all[i].table);
            for (std::size_t n = 0; n < kWanted[i].entries.size(); ++n) {
                const auto& entry = kWanted[i].entries[n];
                EXPECT_TRUE(entry == Entry(kOwn) || table[n] == wanted(entry)) << n;
                EXPECT_EQ(table[n] == nullptr, i == 6) << n;
            }
        }
    }
};

TEST_F(Suites, AreRegisteredInOrderWithTheRoutinesOfTheMoment) {
    ASSERT_EQ(QX_InstallSuites(), 0);
    expect_tables();
    QX_SetOverrideFunc(42, this);
    const void* const iterate = static_cast<void* const*>(standalone::RegisteredSuites()[11].table)[0];
    EXPECT_NE(iterate, this) << "a table follows no later change";
    ASSERT_EQ(QX_InstallSuites(), 0);
    expect_tables();
    EXPECT_EQ(static_cast<void* const*>(standalone::RegisteredSuites()[11].table)[0], this);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Suites, AFailedRegistrationKeepsThoseBeforeIt) {
    const Cases<std::function<int()>, int, Text> ways = {{[] { return 77; }, 77, ""},
                                                         {[]() -> int { throw 88; }, 88, ""},
                                                         {[]() -> int { throw std::runtime_error("no"); }, 3, "no"},
                                                         {[]() -> int { throw std::bad_alloc(); }, 4, "out of memory"}};
    for (const auto& [way, code, text] : ways) {
        for (std::size_t nth = 0; nth <= kCount; ++nth) {
            standalone::ForgetSuites();
            reports.clear();
            std::size_t asked = 0;
            standalone::SetRegistrationGate([&](const char*, int) { return asked++ == nth ? way() : 0; });
            EXPECT_EQ(QX_InstallSuites(), nth < kCount ? code : 0);
            EXPECT_EQ(standalone::RegisteredSuites().size(), nth);
            EXPECT_EQ(asked, std::min(nth + 1, kCount));
            EXPECT_EQ(reports.last_text(), nth < kCount ? text : "");
        }
    }
    standalone::SetRegistrationGate({});
    standalone::SetBasicSuite(nullptr, 12);
    EXPECT_EQ(QX_InstallSuites(), 12);
    standalone::SetBasicSuite(nullptr);
    EXPECT_EQ(standalone::RegisteredSuites().size(), kCount);
}

TEST_F(Suites, ANameThatIsTakenStopsTheRest) {
    static const int other = 0;
    ASSERT_EQ(TK_QS_AddQSSuite(nullptr, 0, "QX World Suite", 1, 1, 2, &other), 0);
    EXPECT_EQ(QX_InstallSuites(), 3);
    EXPECT_EQ(standalone::RegisteredSuites().size(), 11u);
}

TEST_F(Suites, EveryAllocationFailsOnce) {
    int failures = 0, code = 4;
    for (int nth = 1; code != 0; ++nth) {
        standalone::ForgetSuites();
        NewCounter::fail(nth);
        code = QX_InstallSuites();
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4) << code;
        failures += code == 4 ? 1 : 0;
    }
    EXPECT_GE(failures, static_cast<int>(kCount));
    EXPECT_EQ(reports.all().size(), static_cast<std::size_t>(failures));
    expect_tables();
}

/// A routine of a suite, as an effect finds it.
template <class Fn> Fn* found(const char* name, int version, int entry) {
    const QSBasicSuite* basic = nullptr;
    const void* table = nullptr;
    EXPECT_EQ(TK_QS_GetQSBasicSuite(&basic), 0);
    EXPECT_EQ(basic->AcquireSuite(name, version, &table), 0);
    EXPECT_EQ(basic->ReleaseSuite(name, version), 0);
    return reinterpret_cast<Fn*>(static_cast<void* const*>(table)[entry]);
}

TEST_F(Suites, ProcessorFlags) {
    ASSERT_EQ(QX_InstallSuites(), 0);
    std::vector<int (*)(bool*)> flags;
    for (int i = 0; i < 4; ++i) flags.push_back(found<decltype(qx::processor_flag0)>("VN CPU Data Suite", 1, i));
    for (const auto level : kLevels) {
        standalone::SetProcessorLevel(level);
        for (std::size_t i = 0; i < flags.size(); ++i) {
            bool set = i % 2 == 0;
            EXPECT_EQ(flags[i](&set), 0);
            EXPECT_EQ(set, TK_G_CPU_DataP->flags[i] != 0);
        }
        bool vector = false;
        EXPECT_EQ(flags[2](&vector), 0);
        EXPECT_EQ(vector, level != standalone::ProcessorLevel::plain);
    }
    for (const auto flag : flags) expect_refused({{[&] { return flag(nullptr); }, "invalid parameter", 516}});
}

std::uint32_t code(const char* bytes) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, 4);
    return number;
}

TEST_F(Suites, WorldsByFormat) {
    ASSERT_EQ(QX_InstallSuites(), 0);
    const auto new_world = found<decltype(qx::new_world_by_format)>("QX World Suite", 2, 0);
    const auto format_of = found<decltype(qx::pixel_format_of_world)>("QX World Suite", 2, 2);
    const auto before = blocks_in_use();
    const Cases<Text, int, Text> formats = {
        {"argb", 8, "argb"}, {"vn16", 16, "vn16"}, {"vn32", 32, "vn32"}, {"@CDa", 16, "vn16"}};
    for (const auto& [bytes, depth, told] : formats) {
        QX_LayerDef world{};
        ASSERT_EQ(new_world(nullptr, 5, 3, 1, code(bytes), &world), 0);
        EXPECT_EQ(QXp_WorldDepth(&world), depth);
        EXPECT_TRUE(world.width == 5 && world.height == 3 && *static_cast<std::uint32_t*>(world.data) == 0);
        std::uint32_t format = 0;
        EXPECT_EQ(format_of(&world, &format), 0);
        EXPECT_EQ(format, code(told));
        EXPECT_EQ(QX_DisposeEffectWorld(&world), 0);
    }
    EXPECT_TRUE(reports.all().empty());
    QX_LayerDef world{};
    const auto make = [&](const char* bytes, QX_LayerDef* out, int width = 5) {
        return [=] { return new_world(nullptr, width, 3, 0, code(bytes), out); };
    };
    expect_refused({{make("@CDA", nullptr), "Invalid parameter, effect world cannot be null."},
                    {make("@CDA", &world), kOnGpu},
                    {make("badf", &world), "Unsupported QX_PixelFormat"},
                    {make("ARGB", &world), "Unsupported QX_PixelFormat"},
                    {make("argb", &world, 0), "invalid image buffer size (0x3).", 516}});
    const Reports quiet;
    for (const auto fail : {standalone::FailAllocation, NewCounter::fail}) {
        int failures = 0;
        for (int nth = 1; world.data == nullptr; ++nth) {
            fail(nth);
            const int got = make("vn16", &world)();
            fail(0);
            EXPECT_EQ(got, world.data == nullptr ? 4 : 0);
            failures += got == 4 ? 1 : 0;
            EXPECT_TRUE(got == 0 || blocks_in_use() == before);
        }
        EXPECT_GE(failures, fail == NewCounter::fail ? 0 : 1);
        EXPECT_EQ(QX_DisposeEffectWorld(&world), 0);
    }
    EXPECT_EQ(blocks_in_use(), before);
}

TEST_F(Suites, FormatsOfWorldsThatHaveNone) {
    ASSERT_EQ(QX_InstallSuites(), 0);
    const auto format_of = found<decltype(qx::pixel_format_of_world)>("QX World Suite", 2, 2);
    BadWorlds bad;
    std::uint32_t format = 7;
    QX_LayerDef gpu8 = bad.gpu;
    gpu8.platform_ref = standalone::NewFakeFrame(tesselmediatypes::kPixelFormat_ARGB_4444_8u);
    const auto ask = [&](const QX_LayerDef* world) { return [=, &format] { return format_of(world, &format); }; };
    expect_refused({{ask(nullptr), "Bad parameter to QXp_SuiteGetPixelFormat()"},
                    {[&] { return format_of(&bad.gpu, nullptr); }, "invalid parameter", 516},
                    {ask(&gpu8), "Unsupported gpu pixel depth in QXp_EffectWorldDepthToPixelFormat()"}});
    QX_LayerDef odd{};
    odd.world = &bad.odd;
    expect_refused({{ask(&odd), "Unsupported pixel depth in QXp_EffectWorldDepthToPixelFormat()"}});
    EXPECT_EQ(format, 7u);
    EXPECT_EQ(ask(&bad.gpu)(), 0);
    EXPECT_EQ(format, code("@CDA"));
    FK::DisposeVPixFromVideoFrame(gpu8.platform_ref);
}

}  // namespace
