// SPDX-License-Identifier: Apache-2.0
// Movies as clips.
#include "scene/Clip.h"
#include "scene/colour/Profiles.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::MovieFile;
using MovieClips = InFolder;

constexpr int kFrames = 40;

void make(const std::string& path, const qx::pictures::MovieSettings& settings) {
    MovieFile movie(path, 16, 8, settings);
    for (int i = 0; i < kFrames; ++i) {
        movie.add(picture<QX_Pixel8>(16, 8, false, [=](int x, int y) { return argb(255, i, x, y); }));
    }
    movie.commit();
}

TEST_F(MovieClips, HaveExactTimesWhateverUnitsTheirContainerHas) {
    for (const std::string name : {"m.mkv", "m.mp4", "m.avi"}) {
        make(folder / name, {.rate = {30000, 1001}});
        const auto clip = open_movie_clip(folder / name);
        ASSERT_EQ(clip->frames(), kFrames) << name;
        for (int i = 0; i <= kFrames; ++i) {
            EXPECT_TRUE(clip->time_of(i) - clip->time_of(0) == Rational(i * 1001, 30000)) << name << i;
        }
        EXPECT_TRUE(clip->facts().rate == Rational(30000, 1001) && clip->facts().is_movie);
    }
}

TEST_F(MovieClips, FramesTellTheirProfile) {
    const std::tuple<int, int, std::string> cases[] = {
        {1, 1, "rec709-2.4"}, {2, 2, "rec709-2.4"}, {1, 6, "rec709-2.4"}, {1, 13, "srgb"}, {12, 13, "display-p3"},
        {9, 14, "rec2020"},   {9, 15, "rec2020"},   {9, 1, "rec2020"},    {5, 6, ""}};
    for (const auto& [primaries, transfer, name] : cases) {
        make(folder / "m.mkv", {.colours = {primaries, transfer}, .lossless = true});
        const SharedPicture frame = open_movie_clip(folder / "m.mkv")->frame(0);
        Names notes;
        const Meaning meaning = meaning_of(*frame, notes);
        EXPECT_EQ(meaning.told, !name.empty()) << primaries << ' ' << transfer;
        EXPECT_EQ(notes.empty(), !name.empty());
        EXPECT_TRUE(name.empty() || are_one(meaning.profile, profile_of_text(name))) << name_of(meaning.profile);
    }
}

TEST_F(MovieClips, ThreadsGetTheirFrames) {
    make(folder / "m.mkv", {.lossless = true});
    for (const std::uint64_t bytes : {std::uint64_t{0}, std::uint64_t{6000}, std::uint64_t{1} << 30}) {
        const auto clip = open_movie_clip(folder / "m.mkv", {.most_bytes = bytes, .threads = 2});
        in_threads(8, [&](int thread) {
            std::mt19937 random(static_cast<unsigned>(thread));
            for (int round = 0; round < 60; ++round) {
                const int near = 2 * round + thread % 3;
                const int i = near < kFrames ? near : static_cast<int>(random() % kFrames);
                EXPECT_EQ(channels(*clip->frame(i), 3, 2), (List{255, double(i), 3, 2}));
            }
        });
    }
}

}  // namespace
