// SPDX-License-Identifier: Apache-2.0
#include "scene/Modes.h"

#include <set>

#include "scene/Composite.h"
#include "scene/Words.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::test;

TEST(ModeNames, EachNameAndNumberIsFound) {
    EXPECT_EQ(all_modes().size(), 43u);
    for (const auto& mode : all_modes()) {
        std::string kebab = mode.name;
        std::replace(kebab.begin(), kebab.end(), '_', '-');
        for (const std::string& text :
             {std::string(mode.name), kebab, std::string("xfer_") + mode.name, std::to_string(mode.number)}) {
            EXPECT_EQ(mode_number(text), mode.number) << text;
        }
    }
}

TEST(ModeNames, OtherProgramsNamesAndSpellingsAreKnown) {
    const std::pair<const char*, int> cases[] = {{"normal", xfer_over},
                                                 {"Plus", xfer_add},
                                                 {"color-dodge", xfer_dodge},
                                                 {"Colour Burn", xfer_burn},
                                                 {"color", xfer_colour},
                                                 {"darker-color", xfer_darker_colour},
                                                 {"Lighter Color", xfer_lighter_colour},
                                                 {"softlight", xfer_soft_light},
                                                 {"LinearDodge", xfer_linear_dodge},
                                                 {"addition", xfer_add},
                                                 {"dst-in", xfer_alpha_multiply},
                                                 {"erase", xfer_alpha_multiply_inverse}};
    for (const auto& [text, number] : cases) EXPECT_EQ(mode_number(text), number) << text;
    std::set<int> seen;
    for (const Mode& mode : all_modes()) {
        EXPECT_TRUE(seen.empty() || mode.number > *seen.rbegin()) << mode.name;
        EXPECT_TRUE(seen.insert(mode.number).second) << mode.name;
        for (const char* alias : mode.aliases) EXPECT_EQ(mode_number(alias), mode.number) << alias;
    }
}

TEST(ModeNames, WrongOnesSuggestTheNearestWithinTwoEdits) {
    const std::pair<const char*, const char*> cases[] = {
        {"scren", "nearest is screen"},        {"Soft Lihgt", "nearest is soft_light"},
        {"nrmal", "nearest is normal"},        {"dodge-premult", "nearest is dodge_premul"},
        {"Multiplied", "see qx modes --list"}, {"xyz", "see qx modes --list"},
        {"to", "see qx modes --list"}};
    for (const auto& [text, words] : cases) {
        EXPECT_HOLDS(fault_of<BadText>([text = text] { mode_number(text); }), words);
    }
    for (const char* number : {"-1", "-4", "41", "99999999999", "", "2x"}) {
        EXPECT_THROW(mode_number(number), BadText) << number;
    }
}

/// The formula that people read is what the library makes of opaque pixels, within the steps of its roundings. Values
/// keep off the places where a formula leaps.
TEST(ModeNames, FormulasTellWhatTheLibraryDoes) {
    const Born library(1);
    constexpr int width = 37, height = 41, full = 32768;
    const auto value = [](int i, int most) { return (i * full + most / 2) / most; };
    const auto world = [&](bool layer) {
        auto made = qx::pictures::new_world("test", width, height, 16);
        qx::pictures::each_pixel<QX_Pixel16>(*made, [&](QX_Pixel16& p, int x, int y) {
            const auto c = static_cast<std::uint16_t>(layer ? value(x, width) : value(y, height));
            p = {full, c, c, c};
        });
        return made;
    };
    const auto mask = world(true), layer = world(true);
    qx::pictures::each_pixel<QX_Pixel16>(*mask, [](QX_Pixel16& p, int, int) { p = {full, full, full, full}; });
    for (const Mode& mode : all_modes()) {
        if (mode.blend == nullptr) continue;
        const auto result = world(false);
        Transfer transfer;
        transfer.layer = layer.get();
        transfer.mask = mask.get();
        transfer.mode = mode.number;
        ASSERT_EQ(composite(transfer, *result), 0) << mode.name;
        qx::pictures::each_pixel<QX_Pixel16>(*result, [&](QX_Pixel16& p, int x, int y) {
            const double s = value(x, width) / double{full}, d = value(y, height) / double{full};
            EXPECT_NEAR(p.red / double{full}, mode.blend(s, d), 16.0 / full)
                << mode.name << ": " << mode.formula << " at " << s << ", " << d;
        });
    }
}

}  // namespace
