// SPDX-License-Identifier: Apache-2.0
// The library rounds float rows to 8 bits by a rule that asks for their address. Whatever a picture's size and way,
// nobody sees but one: to the nearest, and halves to the even value.
#include "tests/pictures/Support.h"
#include "tests/pictures/Ties.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Rounding = InFolder;

void expect_even(const QX_World& world) {
    for (int i = 0; i < world.width * world.height; ++i) {
        ASSERT_EQ(channels(world, i % world.width, i / world.width), even_tie(i)) << i;
    }
}

TEST_F(Rounding, ThereAreTiesToEitherSide) {
    const auto odd = std::count_if(ties().begin(), ties().end(), [](const Tie& tie) { return tie.below % 2 != 0; });
    EXPECT_GT(odd, 20);
    EXPECT_GT(static_cast<long>(ties().size()) - odd, 20);
}

TEST_F(Rounding, RowsOfNewWorldsBeginOnBoundaries) {
    for (int i = 0; i < 3 * 39 * 3; ++i) {
        const int depth = 8 << i % 3, width = 1 + i / 9;
        const auto world = new_world("test", width, 3, depth);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(row_of<std::byte>(*world, i / 3 % 3)) % 16, 0u)
            << depth << " bits, width " << width;
    }
}

TEST_F(Rounding, TiesBecomeEvenInPicturesOfAnyWidth) {
    for (const int width : {1, 2, 3, 5, 16, 33}) {
        SCOPED_TRACE(width);
        const auto in = picture<QX_PixelFloat>(width, 9, false, [=](int x, int y) { return tie_at(x + y * width); });
        expect_even(*at_depth("test", *in.world, 8));
        for (const char* source : {"in.tif", "in.exr"}) {
            write(source, in, 32);
            ASSERT_EQ(read(source).world->Depth(), 32);
            for (const char* result : {"out.png", "out.tif"}) {
                write(result, read(source));
                expect_even(*read(result).world);
            }
        }
    }
}

/// A world around memory of someone else's, at every distance from a boundary.
TEST_F(Rounding, TiesBecomeEvenWhereverTheRowsLie) {
    constexpr int width = 7, height = 5, rowbytes = width * 16 + 4;
    for (std::size_t shift = 0; shift < 16; shift += 4) {
        alignas(16) std::byte memory[12 + rowbytes * height];
        for (int i = 0; i < width * height; ++i) {
            const QX_PixelFloat tie = tie_at(i);
            std::memcpy(memory + shift + i / width * rowbytes + i % width * 16, &tie, sizeof tie);
        }
        const std::unique_ptr<QX_World> world(QX_World::NewReference(memory + shift, width, height, 32, rowbytes));
        expect_even(*at_depth("test", *world, 8));
    }
}

}  // namespace
