// SPDX-License-Identifier: Apache-2.0
// The example runs where it lies.
#include "tests/tools/RunQx.h"

namespace {

using Example = qx::test::QxTest;

TEST_F(Example, MovingLayerIsRenderedWhereItLies) {
    run("render examples/moving-layer/scene.json --frames 1-18x17 -o " + (folder / "f.#.png"), "cd '" QX_SOURCES "';");
    const auto evening = qx::pictures::read_picture(QX_SOURCES "/examples/moving-layer/evening.png");
    EXPECT_TRUE(qx::test::same_pixels(read("f.1.png"), evening)) << "no layer is in sight yet";
    EXPECT_FALSE(qx::test::same_pixels(read("f.18.png"), evening));
}

}  // namespace
