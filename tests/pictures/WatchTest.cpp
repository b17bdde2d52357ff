// SPDX-License-Identifier: Apache-2.0
// Work on several files at once, and work that is stopped.
#include "pictures/Watch.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::Folder;

const char* const kNames[] = {"a.png", "b.jpg", "c.tif", "d.exr"};

Picture pattern(int seed) {
    return qx::test::picture<QX_Pixel8>(150, 100, false,
                                        [=](int x, int y) { return qx::test::argb(255, x + seed, y * seed, x ^ y); });
}

/// Stops once it has heard of some rows. What it hears rises up to the whole.
class Limit : public Watch {
public:
    explicit Limit(std::int64_t most) : most_(most) {}
    bool stops() const noexcept override { return heard >= most_; }
    void rows(std::int64_t done, std::int64_t total) noexcept override {
        EXPECT_GE(done, heard);
        EXPECT_LT(done, total);
        heard = done;
    }
    std::int64_t heard = -1;

private:
    const std::int64_t most_;
};

TEST(Watch, StopsReadingAndWritingAndLeavesNoFile) {
    const Folder folder;
    for (const char* name : kNames) {
        SCOPED_TRACE(name);
        for (const std::int64_t most : {-1, 0, 1, 60}) {
            Limit writing(most), reading(most);
            qx::test::put_contents(folder / name, "old");
            EXPECT_THROW(write_picture(folder / name, pattern(1), 8, {}, writing), Stopped);
            EXPECT_EQ(writing.heard, most);
            EXPECT_EQ(qx::test::contents(folder / name), "old");
            write_picture(folder / name, pattern(1), 8);
            EXPECT_THROW(read_picture(folder / name, reading), Stopped);
            EXPECT_GE(reading.heard, most);
            std::filesystem::remove(folder / name);
            EXPECT_TRUE(folder.names().empty());
        }
        Limit all(100);
        write_picture(folder / name, pattern(1), 8, {}, all);
        EXPECT_EQ(all.heard, 99);
        std::filesystem::remove(folder / name);
    }
}

/// Each thread has files, pixels and a watch of its own; one in four is stopped and the others do not notice.
TEST(Watch, PicturesOnSeveralThreadsDoNotMeet) {
    const Folder folder;
    const mode_t mask = ::umask(027);
    const auto work = [&](int number) {
        for (int round = 0; round < 8; ++round) {
            const std::string path = folder / (std::to_string(number) + kNames[(number + round) % 4]);
            const Picture picture = pattern(number);
            Limit watch(number % 4 == 3 ? 50 : 1000);
            try {
                write_picture(path, picture, 8, {}, watch);
                const Picture back = read_picture(path);
                const bool lossy = path.back() == 'g' && path[path.size() - 2] == 'p';
                EXPECT_TRUE(lossy || qx::test::same_pixels(*at_depth(path, *back.world, 8), *picture.world)) << path;
                EXPECT_NE(number % 4, 3);
            } catch (const Stopped&) {
                EXPECT_EQ(number % 4, 3);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back(work, i);
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(::umask(mask), 027u);
    EXPECT_EQ(folder.names().size(), 6u * 4);
    for (const auto& name : folder.names()) {
        EXPECT_EQ(std::filesystem::status(folder / name).permissions(), std::filesystem::perms(0640)) << name;
    }
}

}  // namespace
