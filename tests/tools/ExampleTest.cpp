// SPDX-License-Identifier: Apache-2.0
// The example runs where it lies.
#include <gtest/gtest.h>

#include "tests/pictures/Support.h"
#include "tests/tools/RunQx.h"

namespace {

TEST(Example, MovingLayerIsRenderedWhereItLies) {
    const qx::test::Folder folder;
    const auto outcome =
        qx::test::run_qx("render examples/moving-layer/scene.json --frames 1-18x17 -o " + (folder / "f.#.png"),
                         std::string("cd '") + QX_SOURCES + "';");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    const auto first = qx::pictures::read_picture(folder / "f.1.png"),
               middle = qx::pictures::read_picture(folder / "f.18.png"),
               evening = qx::pictures::read_picture(std::string(QX_SOURCES) + "/examples/moving-layer/evening.png");
    EXPECT_TRUE(qx::test::same_pixels(*first.world, *evening.world)) << "no layer is in sight yet";
    EXPECT_FALSE(qx::test::same_pixels(*middle.world, *evening.world));
}

}  // namespace
