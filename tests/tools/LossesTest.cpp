// SPDX-License-Identifier: Apache-2.0
// What a result cannot hold is told, and what cannot be written leaves nothing behind.
#include <gtest/gtest.h>

#include <filesystem>

#include "pictures/Light.h"
#include "tests/pictures/Support.h"
#include "tests/tools/RunQx.h"

namespace {

using qx::test::contents;
using qx::test::Folder;
using qx::test::run_qx;

/// Colour of some alpha in all but the first two columns and the last two rows; with alpha 0 it is light.
void write_corner(const std::string& path, float alpha) {
    auto picture = qx::test::picture<QX_PixelFloat>(10, 5, true, [=](int x, int y) {
        return x >= 2 && y <= 2 ? QX_PixelFloat{alpha, 0.25f, 0.5f, 0.75f} : QX_PixelFloat{};
    });
    qx::pictures::mark_light(picture);
    qx::pictures::write_picture(path, picture, 32);
}

TEST(Losses, LightIsNotLostInSilence) {
    const Folder folder;
    write_corner(folder / "light.exr", 0);
    write_corner(folder / "plain.exr", 0.5f);
    const struct {
        const char *background, *layer, *output, *words;
    } cases[] = {{"light.exr", "plain.exr --opacity 0", "o.exr", ""},
                 {"light.exr", "plain.exr --at 9,0", "o.exr", ""},  // its first columns are clear
                 {"light.exr", "plain.exr", "o.exr", "light.exr: light under"},
                 {"light.exr", "plain.exr --opacity 0", "o.tif", "light.exr: light under"},
                 {"plain.exr", "light.exr", "o.exr", "light.exr: light under"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.background) + " " + c.layer + " " + c.output);
        const auto outcome =
            run_qx("comp " + (folder / c.background) + " " + (folder / c.layer) + " -o " + (folder / c.output));
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        const bool told = outcome.errors.find("light under") != std::string::npos;
        EXPECT_EQ(told, *c.words != '\0') << outcome.errors;
        EXPECT_NE(outcome.errors.find(c.words), std::string::npos) << outcome.errors;
    }
    const auto result = qx::pictures::read_picture(folder / "o.exr");
    EXPECT_EQ(result.world->width, 10);
}

/// A limit on the size of files stands for a full disk: a write fails in the midst, or at the very end.
TEST(Losses, FullDiskFailsAndLeavesTheOldFile) {
    const Folder folder;
    unsigned state = 1;
    qx::test::write_bytes(
        folder / "in.png", 200, 200,
        [&](int, int) {  // nothing that a format could make small
            state = state * 1664525u + 1013904223u;
            return qx::test::argb(255, state >> 8, state >> 16, state >> 24);
        },
        false);
    for (const char* name : {"out.png", "out.jpg", "out.tif", "out.exr"}) {
        for (const char* blocks : {"1", "16"}) {
            SCOPED_TRACE(std::string(name) + " " + blocks);
            qx::test::put_contents(folder / name, "old");
            const auto outcome = run_qx(
                "comp -q " + (folder / "in.png") + " " + (folder / "in.png") + " --depth 32 -o " + (folder / name),
                std::string("ulimit -f ") + blocks + ";");
            EXPECT_EQ(outcome.status, 1);
            EXPECT_EQ(outcome.errors, "qx: " + (folder / name) + ": File too large\n");
            EXPECT_EQ(contents(folder / name), "old");
            EXPECT_EQ(folder.names().size(), 2u);
            std::filesystem::remove(folder / name);
        }
    }
}

}  // namespace
