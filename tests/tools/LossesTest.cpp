// SPDX-License-Identifier: Apache-2.0
// What a result cannot hold is told, and what cannot be written leaves nothing behind.
#include "pictures/Light.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
using Losses = QxTest;

/// Colour of some alpha in all but the first two columns and the last two rows; with alpha 0 it is light.
qx::pictures::Picture corner(float alpha) {
    auto made = picture<QX_PixelFloat>(10, 5, true, [=](int x, int y) {
        return x >= 2 && y <= 2 ? QX_PixelFloat{alpha, 0.25f, 0.5f, 0.75f} : QX_PixelFloat{};
    });
    qx::pictures::mark_light(made);
    return made;
}

TEST_F(Losses, LightIsNotLostInSilence) {
    write("light.exr", corner(0), 32);
    write("plain.exr", corner(0.5f), 32);
    const std::pair<std::string, bool> cases[] = {
        {"light.exr plain.exr --opacity 0 -o o.exr", false},
        {"light.exr plain.exr --at 9,0 -o o.exr", false},  // its first columns are clear
        {"light.exr plain.exr -o o.exr", true},
        {"light.exr plain.exr --opacity 0 -o o.tif", true},
        {"plain.exr light.exr -o o.exr", true}};
    for (const auto& [line, told] : cases) {
        const auto outcome = qx("comp " + line);
        EXPECT_EQ(outcome.status, 0) << line << outcome.errors;
        const char* words = told ? "light.exr: light under" : "light under";
        EXPECT_EQ(outcome.errors.find(words) != std::string::npos, told) << line << outcome.errors;
    }
    EXPECT_EQ(read("o.exr").world->width, 10);
}

/// A limit on the size of files stands for a full disk: a write fails in the midst, or at the very end.
TEST_F(Losses, FullDiskFailsAndLeavesTheOldFile) {
    write("in.png", noise(200, 200));
    for (const std::string name : {"out.png", "out.jpg", "out.tif", "out.exr"}) {
        for (const char* limit : {"ulimit -f 1;", "ulimit -f 16;"}) {
            put(name, "old");
            expect_fault("comp -q in.png in.png --depth 32 -o " + name, 1, "qx: " + name + ": File too large\n", limit);
            EXPECT_EQ(bytes(name), "old") << name << limit;
            std::filesystem::remove(folder / name);
        }
    }
}

}  // namespace
