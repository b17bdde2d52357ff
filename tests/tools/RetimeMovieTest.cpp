// SPDX-License-Identifier: Apache-2.0
// qx retime from movies and into them.
#include <algorithm>
#include <random>

#include "tests/pictures/Muxing.h"
#include "tests/scene/Painted.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class RetimeMovies : public QxTest {
protected:
    template <class Pixel> void paint(int frames, int width, int height, int full) const {
        for (int i = 1; i <= frames; ++i) {
            auto made = picture<Pixel>(width, height, false, [=](int x, int y) {
                using Channel = decltype(Pixel::red);
                const auto v = static_cast<Channel>(full * (0.2 + 0.7 * painted(1, x + 4 * i, y)));
                return Pixel{static_cast<Channel>(full), v, static_cast<Channel>(v / 3),
                             static_cast<Channel>(full - v)};
            });
            qx::pictures::write_picture(folder / ("f." + std::to_string(i) + ".png"), made, made.world->Depth());
        }
    }
    /// Grey frames, 32 brighter from one to the next, at these times in units of 10 ms, and audio beside them.
    void mux_greys(const std::string& name, const std::vector<int>& times) const {
        std::vector<Packed> packets;
        for (std::size_t i = 0; i < times.size(); ++i) {
            const std::string luma(32 * 16, static_cast<char>(40 + 32 * i)),
                chroma(32 * 16 / 2, static_cast<char>(128));
            packets.push_back({0, times[i] * 10, luma + chroma, 40});
            packets.push_back({1, times[i] * 8, std::string(640, static_cast<char>(i + 1)), 32});
        }
        const Stream video{AV_CODEC_ID_RAWVIDEO, {1, 1000}, 32, 16, AV_PIX_FMT_YUV420P};
        Stream audio{AV_CODEC_ID_PCM_S16LE, {1, 800}};
        audio.sample_rate = 8000;
        ASSERT_TRUE(mux(folder / name, {video, audio}, packets));
    }
    double grey(const std::string& name) const { return channels(read(name), 8, 8)[2]; }
    std::size_t audio_packets(const std::string& name) const {
        return packets_of(folder / name, AVMEDIA_TYPE_AUDIO).size();
    }
};

TEST_F(RetimeMovies, LosslessOnesHoldTheFramesThatAreMetBitForBit) {
    const auto check = [&](const std::string& made) {
        EXPECT_EQ(qx("retime 'f.#.png' --in 1-4 --speed 0.5 --no-cache --lossless -o " + made + ".mkv").status, 0);
        EXPECT_EQ(qx("retime " + made + ".mkv --speed 1 --cuts none -o " + made + ".#.png").status, 0);
        for (int i = 1; i <= 4; ++i) {
            EXPECT_TRUE(same(made + "." + std::to_string(2 * i - 1) + ".png", "f." + std::to_string(i) + ".png")) << i;
        }
        EXPECT_FALSE(same(made + ".2.png", "f.1.png"));
    };
    paint<QX_Pixel8>(4, 63, 47, 255);
    check("eight");
    paint<QX_Pixel16>(4, 63, 47, 32768);
    check("sixteen");
}

TEST_F(RetimeMovies, FramesOfUnevenLengthKeepTheirTimes) {
    mux_greys("uneven.mkv", {0, 4, 16, 20});
    const auto outcome = qx("retime uneven.mkv --fps 25 --method blend --cuts none --no-cache -o o.#.png");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const double first = grey("o.1.png"), second = grey("o.2.png"), third = grey("o.5.png"), fourth = grey("o.6.png");
    EXPECT_GT(second, first + 30);
    EXPECT_GT(third, second + 30);
    EXPECT_GT(fourth, third + 30);
    EXPECT_NEAR(grey("o.3.png"), second + (third - second) / 3, 1);
    EXPECT_NEAR(grey("o.4.png"), second + (third - second) * 2 / 3, 1);
}

TEST_F(RetimeMovies, AudioGoesWithWhatRunsAsItDid) {
    mux_greys("a.mkv", {0, 4, 8, 12, 16});
    const auto retime = [&](const std::string& arguments) {
        const auto outcome = qx("retime a.mkv --method blend --no-cache --cuts none " + arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return outcome.errors;
    };
    EXPECT_EQ(retime("--fps 50 -o b.mkv"), "");
    EXPECT_EQ(packets_of(folder / "b.mkv", AVMEDIA_TYPE_AUDIO), packets_of(folder / "a.mkv", AVMEDIA_TYPE_AUDIO));
    EXPECT_HOLDS(retime("--speed 0.5 -o c.mkv"), "a.mkv: its audio is left out");
    EXPECT_HOLDS(retime("--fps 50 --frames 2-5 -o d.mkv"), "a.mkv: its audio is left out");
    EXPECT_EQ(retime("--fps 50 --audio drop -o e.mkv"), "");
    for (const char* name : {"c.mkv", "d.mkv", "e.mkv"}) EXPECT_EQ(audio_packets(name), 0u) << name;
    EXPECT_EQ(packets_of(folder / "b.mkv", AVMEDIA_TYPE_VIDEO).size(), 10u);
    EXPECT_EQ(packets_of(folder / "d.mkv", AVMEDIA_TYPE_VIDEO).size(), 4u);
}

/// As a camera would have it: noise, and what an encoder makes of it.
TEST_F(RetimeMovies, CutsAreFoundInWhatWasEncoded) {
    const auto scene = [](int i, int x, int y) {
        if (i < 7) return painted(11, x + 9 * i, y);
        if (i < 15) return painted(12, x, y - 5 * i) + (i == 11 ? 0.4 : 0);  // a flash
        const double u = std::clamp((i - 19) / 6.0, 0.0, 1.0);               // a fade
        return painted(13, x - 4 * i, y) * (1 - u) + painted(14, x + 2 * i, y) * u;
    };
    std::mt19937 random(5);
    std::normal_distribution<double> noise(0, 3);
    for (int i = 0; i < 27; ++i) {
        const auto level = [&](double v) { return static_cast<int>(std::clamp(v, 0.0, 255.0)); };
        write("c." + std::to_string(i) + ".png", 320, 180, [&](int x, int y) {
            const double v = 20 + 200 * scene(i, x, y) + noise(random);
            return argb(255, level(v), level(0.8 * v + 20), level(230 - v));
        });
    }
    for (const std::string name : {"c.mp4", "c.webm"}) {
        EXPECT_EQ(qx("retime 'c.#.png' --in 0-26 --speed 1 -o " + name).errors, "");
        EXPECT_EQ(qx("retime " + name + " --speed 0.7 --method blend -o o.##.png").errors,
                  "qx: note: " + name + ": shots begin at 7, 15 (--cuts tells it otherwise)\n");
    }
}

TEST_F(RetimeMovies, WhatBecomesBlackIsToldOnce) {
    for (int i = 1; i <= 3; ++i) gradient("g." + std::to_string(i) + ".png", 16, 8, i == 1 ? 255 : 90);
    const auto notes = [&](const std::string& arguments) {
        const auto outcome =
            qx("retime 'g.#.png' --in 1-3 --speed 0.5 --method nearest --cuts none --no-cache " + arguments);
        EXPECT_EQ(outcome.status, 0);
        return outcome.errors;
    };
    EXPECT_EQ(notes("-o o.mp4"),
              "qx: note: g.#.png: what is transparent becomes black, since the movie has no transparency\n");
    EXPECT_EQ(notes("-o o.mp4 --frames 1-1"), "");
    EXPECT_EQ(notes("-o o.#.png"), "");
}

TEST_F(RetimeMovies, WhatCannotBeIsOneLine) {
    paint<QX_Pixel8>(2, 63, 47, 255);
    mux_greys("a.mkv", {0, 4});
    put_contents(folder / "text.mp4", "this is no movie");
    expect_fault("retime 'f.#.png' --in 1-2 --speed 0.5 --no-cache -o o.mp4", 1, "o.mp4");
    expect_fault("retime text.mp4 --speed 0.5 -o o.#.png", 1, "text.mp4");
    expect_fault("retime a.mkv --speed 0.5 -o a.mkv", 2, "-o a.mkv: is the input");
    expect_fault("retime a.mkv --speed 0.5 --in 1-2 -o o.#.png", 2, "--in is for numbered pictures");
    expect_fault("retime a.mkv --speed 0.5 --resume -o o.mkv", 2, "--resume is for pictures");
    expect_fault("retime a.mkv --speed 0.5 --cuts 2 -o o.#.png", 2,
                 "--cuts 2: no such frame, the clip has 2 from 0 to 1");
}

}  // namespace
