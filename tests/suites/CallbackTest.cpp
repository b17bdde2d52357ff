// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

constexpr unsigned char kStraight = 1, kPremul = 0;
constexpr int kDraft = 0, kBest = 1;

QX_CallbackBlock block_of(int quality = kBest, unsigned char flags = kStraight) {
    QX_CallbackBlock block;
    EXPECT_EQ(QX_GetCallbackBlock(quality, flags, &block), 0);
    return block;
}
template <class Fn> Fn* field(const QX_CallbackBlock& block, int index) {
    return reinterpret_cast<Fn*>(block.fields[index]);
}

/// The library with a mark of its own in every slot, so that a routine's address tells its slot.
class Marked : public testing::Test {
protected:
    Born born{1};
    std::array<char, kQX_SlotCount> marks{};
    Reports reports;

    Marked() {
        for (int i = 1; i < kQX_SlotCount; ++i) QX_SetOverrideFunc(i, &marks[static_cast<std::size_t>(i)]);
    }
    /// -1 for null, -2 for what is in no slot.
    int slot_of(const void* routine) const {
        if (routine == nullptr) return -1;
        const auto* mark = static_cast<const char*>(routine);
        return mark > marks.data() && mark < marks.data() + marks.size() ? static_cast<int>(mark - marks.data()) : -2;
    }
    int lookup(int selector, int quality = kBest, unsigned char flags = kStraight) {
        void* out = this;
        EXPECT_EQ(QX_GetCallbackAddr(nullptr, quality, flags, selector, &out), 0) << selector;
        return slot_of(out);
    }
};

TEST(CallbackBlock, AllFieldsAreFilledButThoseOfNoRoutine) {
    const Born born(4);
    // Old entries, the 20th of mathematics, and the last.
    const std::set<int> missing = {kQX_CB_reserved0, kQX_CB_reserved1, kQX_CB_ansi + 19, kQX_CB_reserved2};
    for (const auto& [quality, flags] : each(std::array{kDraft, kBest}, std::array{kStraight, kPremul})) {
        const QX_CallbackBlock block = block_of(quality, flags);
        for (int i = 0; i < 69; ++i) {
            const bool no_premul16 =
                quality == kBest && flags == kPremul && (i == kQX_CB_subpixel_sample16 || i == kQX_CB_area_sample16);
            EXPECT_EQ(block.fields[i] == nullptr, missing.count(i) != 0 || no_premul16) << "field " << i;
        }
    }
}

/// Fields and selectors that lead to slots. A selector of 0 is none of the field, a field of 0 none of the selector.
/// Columns: field, selector, and the slots of straight best, premultiplied best, straight draft, premultiplied draft
const Cases<int, int, int, int, int, int> kReached = {
    {1, 2, 3, 4, 2, 2},       {2, 3, 5, 6, 2, 2},       {5, 6, 9, 10, 7, 8},      {8, 9, 24, 25, 23, 23},
    {59, 31, 64, 64, 63, 63}, {60, 32, 65, 65, 63, 63}, {0, -2, 26, 27, 26, 27},  {7, 8, 28, 28, 28, 28},
    {11, 12, 42, 42, 42, 42}, {63, 35, 42, 42, 42, 42}, {16, 25, 43, 43, 43, 43}, {64, 36, 43, 43, 43, 43},
    {17, 26, 44, 44, 44, 44}, {56, 29, 51, 51, 51, 51}, {65, 37, 51, 51, 51, 51}, {57, 30, 53, 53, 53, 53},
    {4, 5, 1, 1, 1, 1},       {0, -13, 92, 92, 92, 92}, {0, -12, 61, 61, 61, 61}, {0, -11, 60, 60, 60, 60},
    {0, -9, 58, 58, 58, 58},  {0, -8, 57, 57, 57, 57},  {0, -6, 54, 54, 54, 54},
};

TEST_F(Marked, FieldsAndSelectorsReachTheirSlots) {
    for (const auto& [at, selector, straight_best, premul_best, straight_draft, premul_draft] : kReached) {
        SCOPED_TRACE(testing::Message() << "field " << at << " selector " << selector);
        const Cases<int, unsigned char, int> ways = {// bit 0 of the flags alone is read; anything but 0 is best
                                                     {kBest, kStraight, straight_best},
                                                     {kBest, 0xFE, premul_best},
                                                     {kDraft, kStraight, straight_draft},
                                                     {kDraft, kPremul, premul_draft},
                                                     {-7, kStraight, straight_best}};
        for (const auto& [quality, flags, slot] : ways) {
            EXPECT_EQ(lookup(selector, quality, flags), slot);
            const bool none = flags == 0xFE && (at == 59 || at == 60);  // no premultiplied 16 bits
            EXPECT_TRUE(at == 0 || slot_of(block_of(quality, flags).fields[at]) == (none ? -1 : slot));
        }
    }
}

/// Kept: there is no premultiplied 16-bit sampling, so these two keep what they had. A block is a copy.
TEST_F(Marked, QualityChangesItsFieldsAlone) {
    QX_CallbackBlock block = block_of(kDraft, kStraight);
    void* const stranger = block.fields[kQX_CB_fill] = this;
    QX_SetOverrideFunc(42, nullptr);
    EXPECT_EQ(QX_SetCallbackBlockQuality(kBest, kPremul, &block), 0);
    EXPECT_EQ(slot_of(block.fields[kQX_CB_subpixel_sample16]), 63);
    EXPECT_EQ(slot_of(block.fields[kQX_CB_area_sample16]), 63);
    EXPECT_EQ(slot_of(block.fields[kQX_CB_subpixel_sample]), 4);
    EXPECT_EQ(slot_of(block.fields[kQX_CB_iterate]), 42);
    EXPECT_EQ(block.fields[kQX_CB_fill], stranger) << "no field of quality";
    EXPECT_EQ(lookup(12), -1);
}

TEST(CallbackAddr, EverySelectorFromMinus20To110) {
    const Born born;
    Reports reports;
    const QX_CallbackBlock block = block_of();
    const std::map<int, int> by_field = {{4, 3},   {10, 9},  {11, 10}, {23, 14}, {24, 15}, {26, 17},
                                         {27, 18}, {28, 19}, {33, 61}, {12, 11}, {30, 57}};
    for (int selector = -20; selector <= 110; ++selector) {
        SCOPED_TRACE(selector);
        const bool known = (selector >= -13 && selector <= 37) && selector != 0 && selector != -7 && selector != -10;
        reports.clear();
        void* out = &reports;
        EXPECT_EQ(QX_GetCallbackAddr(nullptr, kBest, kStraight, selector, &out), known ? 0 : 515);
        EXPECT_EQ(reports.all().size(), known ? 0u : 1u);
        EXPECT_EQ(reports.last_text(), known ? "" : "invalid callback selector");
        EXPECT_TRUE(known || out == nullptr);
        const auto found = by_field.find(selector);
        EXPECT_TRUE(found == by_field.end() || out == block.fields[found->second]);
    }
    EXPECT_EQ(QX_GetCallbackAddr(nullptr, kBest, kStraight, 10, nullptr), 3);
    EXPECT_EQ(reports.last_text(), kBadParameter);
    EXPECT_EQ(reports.all().back().site, 0x250001);
}

TEST(CallbackBlock, RoutinesOfItsOwn) {
    const Born born;
    Reports reports;
    const QX_CallbackBlock block = block_of();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(field<int(...)>(block, kQX_CB_batch_sample)(1, 2, 3), 3);
    EXPECT_EQ(reports.last_text(), "Batch Sampling has been deprecated; please update your plug-in calling code");
    const auto platform_data = field<int(void*, int, void**)>(block, kQX_CB_get_platform_data);
    for (const int selector : {0, 1}) {
        void* out = &reports;
        expect_refused({{[&] { return platform_data(nullptr, selector, &out); }, kBadParameter, 516}});
        EXPECT_EQ(out, selector == 0 ? nullptr : &reports);
        EXPECT_EQ(platform_data(nullptr, selector, nullptr), 516);
    }
    EXPECT_EQ(block.fields[kQX_CB_fill], reinterpret_cast<void*>(&QX_Fill));
    EXPECT_EQ(block.fields[kQX_CB_fill16], reinterpret_cast<void*>(&QX_Fill16));
    EXPECT_EQ(block.fields[kQX_CB_app], reinterpret_cast<void*>(&QX_AppCallback));
    EXPECT_EQ(block.fields[kQX_CB_gaussian_kernel], reinterpret_cast<void*>(&QX_GaussianKernel));
    void* value = nullptr;
    EXPECT_EQ(QX_GetCallbackAddr(nullptr, kBest, kStraight, -5, &value), 0);
    EXPECT_EQ(value, reinterpret_cast<void*>(&QXp_GaussianValue));
}

/// Columns: field, selector, and the routines of straight and of premultiplied pixels
template <class Routine> void* at(Routine* routine) { return reinterpret_cast<void*>(routine); }
const Cases<int, int, void*, void*> kByAlpha = {
    {6, 7, at(&QX_Blend_Straight), at(&QX_Blend_Premul)},
    {46, 15, at(&QX_RGBtoHLS_Straight), at(&QX_RGBtoHLS_Premul)},
    {47, 16, at(&QX_HLStoRGB_Straight), at(&QX_HLStoRGB_Premul)},
    {48, 17, at(&QX_RGBtoYIQ_Straight), at(&QX_RGBtoYIQ_Premul)},
    {49, 18, at(&QX_YIQtoRGB_Straight), at(&QX_YIQtoRGB_Premul)},
    {50, 19, at(&QX_Luminance_Straight), at(&QX_Luminance_Premul)},
    {51, 20, at(&QX_Hue_Straight), at(&QX_Hue_Premul)},
    {52, 21, at(&QX_Lightness_Straight), at(&QX_Lightness_Premul)},
    {53, 22, at(&QX_Saturation_Straight), at(&QX_Saturation_Premul)},
};

TEST(CallbackBlock, BlendsAndColourModelsGoByAlphaAlone) {
    const Born born;
    for (const auto& [index, selector, straight, premul] : kByAlpha) {
        for (const auto& [quality, flags] : each(std::array{kDraft, kBest}, std::array{kStraight, kPremul})) {
            void *const wanted = flags == kStraight ? straight : premul, *out = nullptr;
            EXPECT_EQ(block_of(quality, flags).fields[index], wanted) << index;
            EXPECT_EQ(QX_GetCallbackAddr(nullptr, quality, flags, selector, &out), 0);
            EXPECT_EQ(out, wanted) << selector;
        }
    }
    EXPECT_EQ(block_of(kBest, kStraight).fields[5], at(&QX_CompositeRectBest_Straight)) << "by quality too";
    EXPECT_EQ(block_of(kBest, kPremul).fields[5], at(&QX_CompositeRectBest_Premul));
    EXPECT_EQ(block_of(kDraft, kStraight).fields[5], at(&QX_CompositeRectDraft_Straight));
    EXPECT_EQ(block_of(kDraft, kPremul).fields[5], at(&QX_CompositeRectDraft_Premul));
}

TEST(CallbackBlock, Mathematics) {
    const Born born;
    const QX_CallbackBlock block = block_of();
    const double x = 0.3;
    const Cases<int, double> unary = {
        {0, std::atan(x)}, {2, 1.0},           {3, std::cos(x)},    {4, std::exp(x)},  {5, x},
        {6, 0.0},          {9, std::log(x)},   {10, std::log10(x)}, {12, std::sin(x)}, {13, std::sqrt(x)},
        {14, std::tan(x)}, {17, std::asin(x)}, {18, std::acos(x)}};
    for (const auto& [i, expected] : unary) EXPECT_EQ(field<double(double)>(block, kQX_CB_ansi + i)(x), expected) << i;
    const Cases<int, double, double, double> binary = {
        {1, 1, 2, std::atan2(1, 2)}, {7, -7, 4, -3.0}, {8, 3, 4, 5.0}, {11, 2, 10, 1024.0}};
    for (const auto& [i, a, b, expected] : binary)
        EXPECT_EQ(field<double(double, double)>(block, kQX_CB_ansi + i)(a, b), expected) << i;
    char text[16];
    field<int(char*, const char*, ...)>(block, kQX_CB_ansi + 15)(text, "%d-%s", 7, "x");
    EXPECT_STREQ(text, "7-x");
    field<char*(char*, const char*)>(block, kQX_CB_ansi + 16)(text, "copied");
    EXPECT_STREQ(text, "copied");
}

TEST(CallbackBlock, WorldsAreMadeAndDisposed) {
    const Born born;
    Reports reports;
    const QX_CallbackBlock block = block_of();
    const auto make = field<decltype(qx::new_world_callback)>(block, kQX_CB_new_world);
    const auto dispose = field<decltype(qx::dispose_world_callback)>(block, kQX_CB_dispose_world);
    for (const int flags : {1, 3, 0, 2}) {
        QX_LayerDef world{};
        ASSERT_EQ(make(nullptr, 5, 3, flags, &world), 0);
        EXPECT_EQ(QXp_WorldDepth(&world), (flags & 2) != 0 ? 16 : 8);
        EXPECT_TRUE(world.width == 5 && world.height == 3);
        EXPECT_TRUE((flags & 1) == 0 || *static_cast<std::uint32_t*>(world.data) == 0);
        EXPECT_EQ(dispose(nullptr, &world), 0);
    }
    EXPECT_TRUE(reports.all().empty());
    QX_LayerDef world{};
    const std::string null = "Invalid parameter, effect world cannot be null.";
    expect_refused(
        {{[&] { return make(nullptr, 5, 3, 0, nullptr); }, null},
         {[&] { return dispose(nullptr, nullptr); }, null},
         {[&] { return dispose(nullptr, &world); }, "effects modules should only dispose worlds they have allocated."},
         {[&] { return make(nullptr, 0, 3, 0, &world); }, "invalid image buffer size (0x3).", 516}});
}

/// What a routine of the test, put in the slot of transfers or of transforms, was given.
struct Given {
    static inline QX_CompositeModePlus mode;
    static inline int calls;
    static inline const QX_ProgressInfo* info;
    static inline const QX_LinearBlendingTables* tables;
};

TEST(CallbackBlock, TransfersUnpackTheRecord) {
    const Born born;
    const auto transfer = field<decltype(qx::transfer_rect_callback)>(block_of(), kQX_CB_transfer_rect);
    TestWorld<QX_Pixel8> one(1, 1, FillKind::random, 1);
    const auto before = one.pixels();
    const M_LRect rect{0, 0, 1, 1};
    QX_LayerDef* const world = one.record();
    expect_refused(kBadParameter,
                   {[&] { return transfer(nullptr, 0, 0, 0, &rect, world, nullptr, nullptr, 0, 0, world); }});
    EXPECT_EQ(one.pixels(), before);

    qx::set_slot<qx::Slot::TransferRect>(
        [](auto info, auto, auto, auto, auto, auto, auto mode, auto tables, auto, auto dest_x, auto dest_y, auto) {
            Given::mode = *mode, Given::info = info, Given::tables = tables, ++Given::calls;
            return static_cast<int>(dest_x * 100 + dest_y);
        });
    BadWorlds bad;
    QX_ProgressInfo info{};
    QX_CompositeMode mode{5, 0, 51, 0, 32768};
    const auto call = [&](QX_LayerDef* src, QX_LayerDef* dst) {
        return [=, &info, &mode] { return transfer(&info, 0, 0, 0, nullptr, src, &mode, nullptr, 3, 7, dst); };
    };
    Given::calls = 0;
    const Cases<std::uint8_t, std::uint16_t, double> opacities = {
        {255, 0, 1.0}, {128, 32768, 128 / 255.0}, {0, 32768, 1.0}, {1, 32768, 1 / 255.0}, {0, 8192, 0.25}, {0, 0, 0.0}};
    for (const auto& [coarse, fine, opacity] : opacities) {
        mode.opacity = coarse, mode.opacity16 = fine;
        EXPECT_EQ(call(world, world)(), 307);
        EXPECT_EQ(Given::mode.opacity, static_cast<float>(opacity)) << +coarse << " " << fine;
        EXPECT_TRUE(Given::mode.xfer == 5 && Given::info == &info && Given::tables == nullptr);
    }
    expect_refused(kOnGpu, {call(world, &bad.gpu), call(&bad.gpu, world)});
    EXPECT_EQ(Given::calls, 6);

    qx::set_slot<qx::Slot::TransformWorld>(
        [](auto, auto, auto, auto, auto, auto given, auto, auto, auto, auto count, auto, auto, auto) {
            Given::mode = *given;
            return static_cast<int>(count);
        });
    void* out = nullptr;
    ASSERT_EQ(QX_GetCallbackAddr(nullptr, kBest, kStraight, 28, &out), 0);
    mode.opacity = 51;
    const auto transform = reinterpret_cast<decltype(&qx::transform_world_callback)>(out);
    EXPECT_EQ(transform(nullptr, 0, 0, 0, world, &mode, nullptr, nullptr, 6, true, nullptr, world), 6);
    EXPECT_EQ(Given::mode.opacity, 0.2f);
}

}  // namespace
