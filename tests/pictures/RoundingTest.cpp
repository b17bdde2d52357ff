// SPDX-License-Identifier: Apache-2.0
// The library rounds float rows to 8 bits by a rule that asks for their address. Whatever a picture's size and way,
// nobody sees but one: to the nearest, and halves to the even value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "tests/pictures/Support.h"
#include "tests/pictures/Ties.h"

namespace {

using namespace qx::pictures;
using qx::test::Folder;
using qx::test::tie_at;

void expect_even(const QX_World& world) {
    for (int i = 0; i < world.width * world.height; ++i) {
        ASSERT_EQ(qx::test::channels(world, i % world.width, i / world.width), qx::test::even_tie(i)) << i;
    }
}

TEST(Rounding, ThereAreTiesToEitherSide) {
    const auto all = qx::test::ties();
    const auto odd = std::count_if(all.begin(), all.end(), [](const auto& tie) { return tie.below % 2 != 0; });
    EXPECT_GT(odd, 20);
    EXPECT_GT(static_cast<long>(all.size()) - odd, 20);
}

TEST(Rounding, RowsOfNewWorldsBeginOnBoundaries) {
    for (const int depth : {8, 16, 32}) {
        for (int width = 1; width < 40; ++width) {
            const auto world = new_world("test", width, 3, depth);
            for (int y = 0; y < 3; ++y) {
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(row_of<std::byte>(*world, y)) % 16, 0u)
                    << depth << " bits, width " << width;
            }
        }
    }
}

TEST(Rounding, TiesBecomeEvenInPicturesOfAnyWidth) {
    const Folder folder;
    for (const int width : {1, 2, 3, 5, 16, 33}) {
        SCOPED_TRACE(width);
        const auto in =
            qx::test::picture<QX_PixelFloat>(width, 9, false, [=](int x, int y) { return tie_at(x + y * width); });
        expect_even(*at_depth("test", *in.world, 8));
        for (const char* source : {"in.tif", "in.exr"}) {
            write_picture(folder / source, in, 32);
            const auto read = read_picture(folder / source);
            ASSERT_EQ(read.world->Depth(), 32);
            for (const char* result : {"out.png", "out.tif"}) {
                write_picture(folder / result, read, 8);
                expect_even(*read_picture(folder / result).world);
            }
        }
    }
}

/// A world around memory of someone else's, at every distance from a boundary.
TEST(Rounding, TiesBecomeEvenWhereverTheRowsLie) {
    constexpr int width = 7, height = 5;
    for (std::size_t shift = 0; shift < 16; shift += 4) {
        const int rowbytes = width * 16 + 4;
        std::vector<std::byte> memory(shift + static_cast<std::size_t>(rowbytes) * height + 16);
        const auto start = reinterpret_cast<std::uintptr_t>(memory.data()) % 16;
        std::byte* first = memory.data() + (16 - start) % 16 + shift;
        for (int i = 0; i < width * height; ++i) {
            const QX_PixelFloat tie = tie_at(i);
            std::memcpy(first + i / width * rowbytes + i % width * 16, &tie, sizeof tie);
        }
        const std::unique_ptr<QX_World> world(QX_World::NewReference(first, width, height, 32, rowbytes));
        expect_even(*at_depth("test", *world, 8));
    }
}

}  // namespace
