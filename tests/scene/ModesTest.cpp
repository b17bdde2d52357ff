// SPDX-License-Identifier: Apache-2.0
#include "scene/Modes.h"

#include "scene/Words.h"
#include "tests/pictures/Support.h"

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

TEST(ModeNames, WrongOnesSuggestTheNearest) {
    const std::pair<const char*, const char*> cases[] = {{"scren", "screen"},
                                                         {"soft light", "soft_light"},
                                                         {"color", "colour"},
                                                         {"Multiplied", "multiply"},
                                                         {"dodge-premult", "dodge_premul"}};
    for (const auto& [text, nearest] : cases) {
        EXPECT_HOLDS(fault_of<BadText>([text = text] { mode_number(text); }), std::string("nearest is ") + nearest);
    }
    for (const char* number : {"-1", "-4", "41", "99999999999", "", "2x"}) {
        EXPECT_THROW(mode_number(number), BadText) << number;
    }
}

}  // namespace
