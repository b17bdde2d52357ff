// SPDX-License-Identifier: Apache-2.0
// Work on several files at once, and work that is stopped.
#include "pictures/Watch.h"

#include <sys/stat.h>

#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;

const char* const kNames[] = {"a.png", "b.jpg", "c.tif", "d.exr"};

Picture pattern(int seed) {
    return picture<QX_Pixel8>(150, 100, false, [=](int x, int y) { return argb(255, x + seed, y * seed, x ^ y); });
}

using Watched = InFolder;

TEST_F(Watched, WorkStopsAndLeavesNoFile) {
    for (const std::string name : kNames) {
        SCOPED_TRACE(name);
        for (const int most : {0, 1, 2, 61}) {
            CountingWatch writing(most), reading(most / 20);  // which is told of blocks of rows
            put(name, "old");
            EXPECT_THROW(write_picture(folder / name, pattern(1), 8, {}, writing), Stopped);
            EXPECT_TRUE(writing.told == most && writing.last == most - 1) << most;
            EXPECT_EQ(bytes(name), "old");
            write(name, pattern(1));
            EXPECT_THROW(read_picture(folder / name, reading), Stopped);
            EXPECT_TRUE(reading.told == reading.most && !reading.wrong) << most;
            EXPECT_EQ(folder.names(), Names{name});
        }
        CountingWatch all;
        write_picture(folder / name, pattern(1), 8, {}, all);
        EXPECT_TRUE(all.told == 100 && all.last == 99 && all.finished == 0 && !all.wrong);
        std::filesystem::remove(folder / name);
    }
}

/// Each thread has files, pixels and a watch of its own; one in four is stopped and the others do not notice.
TEST_F(Watched, PicturesOnSeveralThreadsDoNotMeet) {
    const mode_t mask = ::umask(027);
    const auto work = [&](int number) {
        for (int round = 0; round < 8; ++round) {
            const std::string name = std::to_string(number) + kNames[(number + round) % 4];
            const Picture in = pattern(number);
            CountingWatch watch(number % 4 == 3 ? 50 : 1000);
            try {
                write_picture(folder / name, in, 8, {}, watch);
                EXPECT_TRUE(name.ends_with("jpg") || same_pixels(*at_depth(name, *read(name).world, 8), *in.world))
                    << name;
                EXPECT_NE(number % 4, 3);
            } catch (const Stopped&) {
                EXPECT_EQ(number % 4, 3);
            }
        }
    };
    in_threads(8, work);
    EXPECT_EQ(::umask(mask), 027u);
    EXPECT_EQ(folder.names().size(), 6u * 4);
    for (const auto& name : folder.names()) {
        EXPECT_EQ(std::filesystem::status(folder / name).permissions(), std::filesystem::perms(0640)) << name;
    }
}

}  // namespace
