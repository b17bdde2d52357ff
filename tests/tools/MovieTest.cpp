// SPDX-License-Identifier: Apache-2.0
// Movies, read back with FFmpeg's libraries.
#include "tests/tools/RunQx.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

using namespace qx::test;
using Movies = QxTest;

/// What a file holds: size, rate and the luma in the middle of each picture.
struct Movie {
    int width = 0, height = 0;
    double rate = 0;
    int primaries = 0, transfer = 0;  ///< what it says of its values
    std::vector<int> lumas;
};

Movie read_movie(const std::string& path) {
    Movie movie;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return movie;
    avformat_find_stream_info(format, nullptr);
    const AVStream& stream = *format->streams[0];
    AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(stream.codecpar->codec_id));
    avcodec_parameters_to_context(codec, stream.codecpar);
    avcodec_open2(codec, nullptr, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    for (bool more = true; more;) {
        more = av_read_frame(format, packet) >= 0;
        avcodec_send_packet(codec, more ? packet : nullptr);
        av_packet_unref(packet);
        while (avcodec_receive_frame(codec, frame) >= 0) {
            movie.lumas.push_back(frame->data[0][frame->height / 2 * frame->linesize[0] + frame->width / 2]);
        }
    }
    movie.width = codec->width;
    movie.height = codec->height;
    movie.rate = av_q2d(stream.avg_frame_rate);
    movie.primaries = codec->color_primaries;
    movie.transfer = codec->color_trc;
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    return movie;
}

/// Grey of value v has luma 16 + 219 * v / 255 in any movie.
TEST_F(Movies, HoldEveryFrameInOrderWithItsBrightness) {
    write("w.png", 96, 64, [](int, int) { return QX_Pixel8{255, 255, 255, 255}; });
    put("s.json", R"({"size": [96, 64], "rate": 12.5, "frames": [0, 10], "layers": [
        {"file": "w.png", "opacity": {"keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]}}]})");
    for (const std::string name : {"m.mp4", "m.mov", "m.mkv", "m.avi", "m.webm"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(qx("render s.json -o " + name).status, 0);
        const Movie movie = read_movie(folder / name);
        EXPECT_EQ(std::pair(movie.width, movie.height), std::pair(96, 64));
        EXPECT_NEAR(movie.rate, 12.5, 0.02);
        ASSERT_EQ(movie.lumas.size(), 11u);
        for (int i = 0; i < 11; ++i) EXPECT_NEAR(movie.lumas[static_cast<std::size_t>(i)], 16 + 21.9 * i, 4) << i;
    }
    EXPECT_EQ(folder.names().size(), 7u);
    ASSERT_EQ(qx("render s.json --frames 0-10x5 -o m.mp4").status, 0);
    EXPECT_EQ(read_movie(folder / "m.mp4").lumas.size(), 3u);
}

/// A grey that sRGB has at 128 has 0.2159 of the light.
TEST_F(Movies, FramesOfASpaceGoToWhatTheMovieSays) {
    write("g.png", 96, 64, [](int, int) { return QX_Pixel8{255, 128, 128, 128}; });
    put("s.json", R"({"frames": [0, 0], "background": "g.png", "layers": []})");
    const std::tuple<std::string, int, int, double> cases[] = {
        {"", 1, 1, 128.0 / 255},
        {"--space srgb", 1, 1, std::pow(0.215861, 1 / 2.4)},
        {"--space linear --to display-p3", 12, 13, 128.0 / 255},
        {"--space srgb --to rec2020", 9, 14, 1.099 * std::pow(0.215861, 0.45) - 0.099},
        {"--space srgb --to gamma-1.8", 2, 2, std::pow(0.215861, 1 / 1.8)}};
    for (const auto& [options, primaries, transfer, value] : cases) {
        EXPECT_EQ(qx("render s.json --depth 16 " + options + " -o m.mp4").status, 0) << options;
        const Movie movie = read_movie(folder / "m.mp4");
        EXPECT_EQ(std::pair(movie.primaries, movie.transfer), std::pair(primaries, transfer)) << options;
        ASSERT_EQ(movie.lumas.size(), 1u);
        EXPECT_NEAR(movie.lumas[0], 16 + 219 * value, 1.5) << options;
    }
}

}  // namespace
