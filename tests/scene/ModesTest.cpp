// SPDX-License-Identifier: Apache-2.0
#include "scene/Modes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "scene/Words.h"

namespace {

using namespace qx::scene;

TEST(ModeNames, EachNameAndNumberIsFound) {
    EXPECT_EQ(all_modes().size(), 43u);
    for (const auto& mode : all_modes()) {
        std::string kebab = mode.name;
        std::replace(kebab.begin(), kebab.end(), '_', '-');
        EXPECT_EQ(mode_number(mode.name), mode.number);
        EXPECT_EQ(mode_number(kebab), mode.number);
        EXPECT_EQ(mode_number("xfer_" + std::string(mode.name)), mode.number);
        EXPECT_EQ(mode_number(std::to_string(mode.number)), mode.number);
    }
}

TEST(ModeNames, WrongOnesSuggestTheNearest) {
    const struct {
        const char *text, *nearest;
    } cases[] = {{"scren", "screen"},
                 {"soft light", "soft_light"},
                 {"color", "colour"},
                 {"Multiplied", "multiply"},
                 {"dodge-premult", "dodge_premul"}};
    for (const auto& c : cases) {
        try {
            mode_number(c.text);
            ADD_FAILURE() << c.text;
        } catch (const BadText& fault) {
            EXPECT_NE(std::string(fault.what()).find(std::string("nearest is ") + c.nearest), std::string::npos)
                << fault.what();
        }
    }
    for (const char* number : {"-1", "-4", "41", "99999999999", "", "2x"}) EXPECT_THROW(mode_number(number), BadText);
}

}  // namespace
