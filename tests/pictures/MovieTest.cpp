// SPDX-License-Identifier: Apache-2.0
// Movies that are read back: frames by number, stamps, colours, and what is no movie or a damaged one.
#include "pictures/Movie.h"

#include <cmath>
#include <numeric>
#include <set>

#include "pictures/Carried.h"
#include "tests/pictures/Muxing.h"
#include "tests/pictures/Support.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;

using Picture = qx::pictures::Picture;  // not that of worlds

constexpr int kFull16 = 65535;

/// Frame `number` of a movie in which every pixel tells it.
template <class Pixel> Picture painted(int width, int height, bool alpha, int number) {
    std::mt19937 random(static_cast<unsigned>(number) + 1);
    constexpr unsigned full = sizeof(Pixel) == 4 ? 255 : kFull16;
    Picture p = picture<Pixel>(width, height, alpha, [&](int, int) {
        const auto channel = [&] { return static_cast<decltype(Pixel::red)>(random() % (full + 1)); };
        return Pixel{alpha ? channel() : static_cast<decltype(Pixel::red)>(full), channel(), channel(), channel()};
    });
    settle("painted", p, true);
    return p;
}

/// Frames whose brightness rises with their number, over a pattern.
Picture shaded(int width, int height, int number) {
    return picture<QX_Pixel8>(width, height, false, [=](int x, int y) {
        const int v = 40 + 8 * number + ((x / 4 + y / 4 + number) % 2 == 0 ? 4 : -4);
        return argb(255, v, v, v);
    });
}

double mean_red(const Picture& p) {
    double sum = 0;
    each_pixel<QX_Pixel8>(*p.world, [&](const QX_Pixel8& pixel, int, int) { sum += pixel.red; });
    return sum / p.world->width / p.world->height;
}

bool same_file_pixels(const Picture& a, const Picture& b) {
    if (a.world->Depth() != 16) return same_pixels(a, b);
    return same_pixels(*pixels_of_file16("a", a), *pixels_of_file16("b", b));
}

std::vector<int> shuffled(int count) {
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(3));
    return order;
}

class Movies : public InFolder {
protected:
    template <class Make>
    void make(const std::string& name, int frames, int width, int height, const MovieSettings& settings,
              const Make& frame) const {
        MovieFile movie(folder / name, width, height, settings);
        for (int i = 0; i < frames; ++i) movie.add(frame(i));
        movie.commit();
    }
    void make_shaded(const std::string& name, int frames, const MovieSettings& settings = {}) const {
        make(name, frames, 64, 48, settings, [](int i) { return shaded(64, 48, i); });
    }
    void make_painted(const std::string& name, int frames) const {
        make(name, frames, 16, 8, {.lossless = true}, [](int i) { return painted<QX_Pixel8>(16, 8, false, i); });
    }
    std::string reader_fault(const std::string& name) const {
        return fault_of<Failure>([&] { MovieReader(folder / name); });
    }
};

template <class Pixel> void expect_kept(const std::string& path, int width, int height, bool alpha) {
    constexpr int frames = 9, depth = 2 * sizeof(Pixel);
    MovieFile movie(path, width, height, {.lossless = true, .alpha = alpha, .depth = depth});
    for (int i = 0; i < frames; ++i) movie.add(painted<Pixel>(width, height, alpha, i));
    movie.commit();
    MovieReader reader(path);
    EXPECT_TRUE(reader.notes().empty());
    EXPECT_EQ(reader.frames(), frames);
    EXPECT_EQ(reader.facts().has_alpha, alpha);
    EXPECT_EQ(reader.facts().depth, depth);
    for (const int i : shuffled(frames)) {
        const Picture frame = reader.read(i);
        EXPECT_TRUE(same_file_pixels(frame, painted<Pixel>(width, height, alpha, i))) << i;
        EXPECT_EQ(frame.has_alpha, alpha);
    }
}

TEST_F(Movies, LosslessOnesKeepEveryBit) {
    for (const auto& [width, height] : {std::pair(33, 17), {1, 1}, {2, 400}, {64, 48}, {3, 301}}) {
        for (const bool alpha : {false, true}) {
            SCOPED_TRACE(std::to_string(width) + (alpha ? " with alpha" : ""));
            expect_kept<QX_Pixel8>(folder / "m.mkv", width, height, alpha);
            expect_kept<QX_Pixel16>(folder / "m.mkv", width, height, alpha);
        }
    }
}

/// Codecs that keep frames back and show them in another order than they come.
TEST_F(Movies, GiveEachFrameByNumberInAnyOrder) {
    constexpr int frames = 25;
    for (const std::string name : {"m.mp4", "m.mov", "m.mkv", "m.avi", "m.webm"}) {
        SCOPED_TRACE(name);
        make_shaded(name, frames, {.rate = {24000, 1001}});
        MovieReader in_order(folder / name), by_chance(folder / name, 3);
        ASSERT_EQ(in_order.frames(), frames);
        const qx::movie::Facts& facts = in_order.facts();
        EXPECT_TRUE(facts.regular);
        EXPECT_EQ(std::pair(facts.rate.number, facts.rate.per), std::pair(std::int64_t{24000}, std::int64_t{1001}));
        const auto stamps = in_order.stamps();
        const double unit = double(facts.time_base.number) / double(facts.time_base.per);
        std::vector<Picture> all;
        for (int i = 0; i < frames; ++i) {
            EXPECT_NEAR(double(stamps[std::size_t(i)] - stamps[0]) * unit, i * 1001.0 / 24000, unit) << i;
            all.push_back(in_order.read(i));
            EXPECT_NEAR(mean_red(all.back()), 40 + 8 * i, 3.5) << i;
        }
        for (const int i : shuffled(frames)) EXPECT_TRUE(same_pixels(by_chance.read(i), all[std::size_t(i)])) << i;
        EXPECT_EQ(fault_of<Failure>([&] { in_order.read(frames); }), folder / name + ": has no such frame");
    }
}

TEST_F(Movies, LongOnesSeekAndFindTheirFrames) {
    constexpr int frames = 600;  // several keyframes
    const auto frame = [](int i) {
        return picture<QX_Pixel8>(32, 32, false,
                                  [=](int, int) { return argb(255, i % 16 * 16, i / 16 % 16 * 16, i / 256 * 64); });
    };
    for (const std::string name : {"m.mp4", "m.mkv"}) {
        make(name, frames, 32, 32, {}, frame);
        MovieReader in_order(folder / name), by_chance(folder / name);
        std::vector<Picture> all;
        for (int i = 0; i < frames; ++i) all.push_back(in_order.read(i));
        for (int i = 1; i < frames; ++i) ASSERT_FALSE(same_pixels(all[std::size_t(i)], all[std::size_t(i - 1)])) << i;
        std::vector<int> some = shuffled(frames);
        some.resize(40);
        for (const int i : some) EXPECT_TRUE(same_pixels(by_chance.read(i), all[std::size_t(i)])) << name << i;
    }
}

constexpr Stream kRaw{AV_CODEC_ID_RAWVIDEO, {1, 1000}, 4, 2, AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG};

/// A grey frame for kRaw.
std::string raw_frame(int number) { return std::string(8, static_cast<char>(10 * number)) + std::string(4, '\x80'); }
double grey_of(MovieReader& movie, int i) { return channels(movie.read(i), 3, 1)[1]; }

TEST_F(Movies, TellTheStampsThereAre) {
    const std::vector<std::int64_t> stamps{0, 40, 50, 200, 240, 1000};
    std::vector<Packed> packets;
    for (int i = 0; i < 6; ++i) packets.push_back({0, stamps[std::size_t(i)], raw_frame(i)});
    ASSERT_TRUE(mux(folder / "m.mkv", {kRaw}, packets));
    MovieReader movie(folder / "m.mkv");
    EXPECT_FALSE(movie.facts().regular);
    std::vector<std::int64_t> ends = stamps;
    ends.push_back(1200);  // nobody tells how long the last one lasts: as the others do on average
    const auto told = movie.stamps();
    EXPECT_EQ(std::vector<std::int64_t>(told.begin(), told.end()), ends);
    EXPECT_EQ(std::pair(movie.facts().rate.number, movie.facts().rate.per),
              std::pair(std::int64_t{5}, std::int64_t{1}));
    for (const int i : shuffled(6)) EXPECT_NEAR(grey_of(movie, i), 10 * i, 1);
}

TEST_F(Movies, FramesOfOneStampAreNumbered) {
    std::vector<Packed> packets;
    for (const int i : {0, 1, 2, 3}) packets.push_back({0, i / 2 * 40, raw_frame(i)});
    ASSERT_TRUE(mux(folder / "m.mkv", {kRaw}, packets));
    MovieReader movie(folder / "m.mkv");
    ASSERT_EQ(movie.frames(), 4);
    EXPECT_TRUE(movie.facts().numbered);
    EXPECT_HOLDS(movie.notes().at(0), "numbered in their order");
    for (const int i : {2, 0, 3, 1}) EXPECT_NEAR(grey_of(movie, i), 10 * i, 1);
}

/// By the definition of the matrices, from their luma coefficients.
List rgb_of(double y, double u, double v, double kr, double kb, bool full) {
    const double luma = full ? y / 255 : (y - 16) / 219, range = full ? 255 : 224;
    const double pb = (u - 128) / range, pr = (v - 128) / range;
    const double r = luma + 2 * (1 - kr) * pr, b = luma + 2 * (1 - kb) * pb;
    return {255, 255 * r, 255 * (luma - kr * r - kb * b) / (1 - kr - kb), 255 * b};
}

TEST_F(Movies, ColoursFollowMatrixAndRange) {
    const struct {
        int height, matrix, range;
        double kr, kb;
    } cases[] = {
        {8, AVCOL_SPC_UNSPECIFIED, 0, 0.299, 0.114},     {718, AVCOL_SPC_UNSPECIFIED, 0, 0.299, 0.114},
        {720, AVCOL_SPC_UNSPECIFIED, 0, 0.2126, 0.0722}, {8, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, 0.2126, 0.0722},
        {720, AVCOL_SPC_SMPTE170M, 0, 0.299, 0.114},     {8, AVCOL_SPC_BT2020_NCL, 0, 0.2627, 0.0593},
        {8, AVCOL_SPC_SMPTE240M, 0, 0.212, 0.087},       {8, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, 0.2126, 0.0722},
    };
    for (const auto& c : cases) {
        for (const auto& [y, u, v] : {std::tuple(120, 100, 140), {60, 150, 120}, {180, 128, 128}}) {
            SCOPED_TRACE(std::to_string(c.height) + " lines, matrix " + std::to_string(c.matrix));
            Stream stream{AV_CODEC_ID_RAWVIDEO, {1, 25}, 8, c.height, AV_PIX_FMT_YUV420P, c.matrix, c.range};
            const auto pixels = static_cast<std::size_t>(8 * c.height);
            const std::string frame = std::string(pixels, static_cast<char>(y)) +
                                      std::string(pixels / 4, static_cast<char>(u)) +
                                      std::string(pixels / 4, static_cast<char>(v));
            ASSERT_TRUE(mux(folder / "m.mkv", {stream}, {{0, 0, frame}}));
            MovieReader movie(folder / "m.mkv");
            EXPECT_EQ(movie.colours().matrix, c.matrix);
            const Picture read = movie.read(0);
            const List expected = rgb_of(y, u, v, c.kr, c.kb, c.range == AVCOL_RANGE_JPEG);
            for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(channels(read, 5, 3)[i], expected[i], 1) << i;
        }
    }
}

TEST_F(Movies, DeeperOnesAreReadAtSixteenBits) {
    for (const auto format : {AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUVA420P10LE}) {
        const Stream stream{AV_CODEC_ID_RAWVIDEO, {1, 25}, 8, 8, format};
        const bool has_alpha = format == AV_PIX_FMT_YUVA420P10LE;
        for (const auto& [y, u, v, a] : {std::tuple(482, 401, 563, 1023), {303, 512, 480, 300}, {940, 512, 512, 0}}) {
            std::string frame;
            for (const auto& [count, value] : {std::pair(64, y), {16, u}, {16, v}, {has_alpha ? 64 : 0, a}}) {
                for (int i = 0; i < count; ++i)
                    frame += {static_cast<char>(value & 255), static_cast<char>(value >> 8)};
            }
            ASSERT_TRUE(mux(folder / "m.nut", {stream}, {{0, 0, frame}}));
            MovieReader movie(folder / "m.nut");
            EXPECT_EQ(movie.facts().has_alpha, has_alpha);
            const Picture read = movie.read(0);
            ASSERT_EQ(read.world->Depth(), 16);
            List expected = rgb_of(y / 4.0, u / 4.0, v / 4.0, 0.299, 0.114, false);
            expected[0] = has_alpha ? 255 * std::round(a * 32768 / 1023.0) / 32768 : 255;
            EXPECT_NEAR(channels(read, 5, 3)[0], expected[0] / 255 * 32768, 0.5);
            for (std::size_t i = 1; i < 4; ++i) EXPECT_NEAR(channels(read, 5, 3)[i] / 32768, expected[i] / 255, 3e-4);
        }
    }
}

/// Half a pixel aside would make 2 levels of a ramp of 4 a pixel.
TEST_F(Movies, ColoursStayWhereTheyAre) {
    const Picture ramp =
        picture<QX_Pixel8>(64, 48, false, [](int x, int) { return argb(255, 2 + 4 * x, 0, 252 - 4 * x); });
    for (const std::string name : {"m.mp4", "m.mkv", "m.avi", "m.webm"}) {
        make(name, 1, 64, 48, {}, [&](int) {
            return picture<QX_Pixel8>(64, 48, false,
                                      [&](int x, int y) { return row_of<QX_Pixel8>(*ramp.world, y)[x]; });
        });
        const Picture read = MovieReader(folder / name).read(0);
        double off = 0;
        for (int x = 8; x < 56; ++x)
            off += (channels(read, x, 24)[1] - (2 + 4 * x)) - (channels(read, x, 24)[3] - (252 - 4 * x));
        EXPECT_NEAR(off / 96, 0, 1) << name;
    }
}

TEST_F(Movies, KeepTagsOrientationAndAspect) {
    for (const std::string name : {"m.mp4", "m.mov", "m.mkv"}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            SCOPED_TRACE(name + std::to_string(orientation));
            const MovieColours colours{9, 14, orientation % 2 != 0 ? 9 : 6, orientation > 4 ? 2 : 1};
            MovieFile file(folder / name, 64, 48, {.colours = colours, .orientation = orientation, .aspect = {4, 3}});
            file.add(shaded(64, 48, 3));
            file.commit();
            const bool turns = !name.ends_with("mkv");
            EXPECT_EQ(file.note().empty(), turns || orientation == 1);
            MovieReader movie(folder / name);
            EXPECT_TRUE(movie.colours() == colours);
            EXPECT_EQ(movie.facts().showing.orientation, turns ? orientation : 1);
            EXPECT_EQ(movie.facts().showing.aspect.number * 3, movie.facts().showing.aspect.per * 4);
            EXPECT_NEAR(mean_red(movie.read(0)), 64, 2.5);
        }
    }
}

TEST_F(Movies, AudioIsCopiedPacketByPacket) {
    std::vector<Packed> packets;
    std::mt19937 random(5);
    for (int i = 0; i < 30; ++i) {
        packets.push_back({0, i, raw_frame(i)});
        std::string samples(2 * 320, 0);
        for (char& c : samples) c = static_cast<char>(random());
        packets.push_back({1, 320 * i, samples, 320});
    }
    Stream video = kRaw;
    video.time_base = {1, 25};
    ASSERT_TRUE(mux(folder / "in.mkv",
                    {video, {.codec = AV_CODEC_ID_PCM_S16LE, .time_base = {1, 8000}, .sample_rate = 8000}}, packets));
    EXPECT_TRUE(MovieReader(folder / "in.mkv").facts().has_audio);
    const auto source = packets_of(folder / "in.mkv", AVMEDIA_TYPE_AUDIO);
    ASSERT_EQ(source.size(), 30u);
    for (const std::string name : {"out.mkv", "out.mov"}) {
        make_shaded(name, 20, {.audio = folder / "in.mkv"});
        const auto copied = packets_of(folder / name, AVMEDIA_TYPE_AUDIO);
        std::string all, expected;
        for (const auto& packet : source) expected += packet.second;
        for (const auto& packet : copied) all += packet.second;
        EXPECT_TRUE(all == expected) << name;
        ASSERT_FALSE(copied.empty());
        EXPECT_EQ(copied[0].first, 0);
        EXPECT_EQ(MovieReader(folder / name).frames(), 20);
    }
    const MovieFile silent(folder / "out.mp4", 64, 48, {.audio = folder / "in.mkv"});
    EXPECT_EQ(silent.note(), "its audio (pcm_s16le) is left out, mp4 does not take it");
    put("text.mkv", "no movie");
    const MovieFile without(folder / "out.mkv", 64, 48, {.audio = folder / "text.mkv"});
    EXPECT_EQ(without.note(), "its audio is left out: is no movie of a known kind, or a damaged one");
    make_shaded("later.mkv", 20, {.audio = folder / "in.mkv", .audio_start = {-1, 2}});
    EXPECT_EQ(packets_of(folder / "later.mkv", AVMEDIA_TYPE_AUDIO).at(0).first, 0.5);
}

TEST_F(Movies, RefuseWhatIsNone) {
    put("text.mp4", "no movie at all, but long enough to look like one\n");
    put("empty.mp4", "");
    write("picture.png", noise(8, 8));
    put("sound.wav", std::string("RIFF$\20\0\0WAVEfmt \20\0\0\0\1\0\1\0@\37\0\0\200>\0\0\2\0\20\0data\0\20\0\0", 44) +
                         std::string(4096, '\1'));
    ASSERT_TRUE(mux(folder / "sound.mkv",
                    {{.codec = AV_CODEC_ID_PCM_S16LE, .time_base = {1, 8000}, .sample_rate = 8000}},
                    {{0, 0, std::string(640, 1), 320}}));
    ASSERT_TRUE(mux(folder / "none.mkv", {kRaw}, {}));
    for (const std::string row :
         {"text.mp4 => is no movie of a known kind, or a damaged one", "empty.mp4 => is empty",
          "picture.png => is no movie of a known kind, or a damaged one", "sound.mkv => has no video",
          "sound.wav => has no video", "none.mkv => is no movie of a known kind, or a damaged one",
          "missing.mp4 => No such file or directory", ". => is a folder"}) {
        const auto& [name, words] = halves(row);
        EXPECT_EQ(reader_fault(name), folder / name + ": " + words);
    }
    const auto fault = [&](const char* name, int width, const MovieSettings& settings) {
        return fault_of<Failure>([&] { MovieFile(folder / name, width, 8, settings); });
    };
    EXPECT_HOLDS(fault("m.mp4", 9, {}), "frames of 9 x 8: yuv420p needs even sides");
    EXPECT_HOLDS(fault("m.mp4", 8, {.lossless = true}), "a name that ends in mkv");
    MovieFile movie(folder / "m.mp4", 64, 48, {});
    EXPECT_HOLDS(fault_of<Failure>([&] { movie.add(shaded(64, 46, 0)); }), "another size or depth");
}

/// A code of 10 bits is 32768 / 876 wide: what comes back is at most half of it off, white and black are themselves.
TEST_F(Movies, WhatHasMoreThanEightBitsIsMadeOfSixteen) {
    const auto grey = [](int x, int y) { return static_cast<std::uint16_t>((64 * y + x) * 32768 / (64 * 48 - 1)); };
    const auto ramp = picture<QX_Pixel16>(64, 48, false, [&](int x, int y) {
        const std::uint16_t v = grey(x, y);
        return QX_Pixel16{32768, v, v, v};
    });
    for (const auto& [format, most_off] :
         {std::pair{"yuv444p10le", 20}, {"yuv420p10le", 20}, {"yuv444p12le", 6}, {"gbrp10le", 17}, {"gbrp16le", 1}}) {
        SCOPED_TRACE(format);
        MovieSettings settings{.depth = 16};
        settings.encoding.codec = "ffv1";
        settings.encoding.pixel_format = format;
        MovieFile movie(folder / "m.mkv", 64, 48, settings);
        EXPECT_EQ(movie.depth(), 16);
        movie.add(ramp);
        movie.commit();
        MovieReader reader(folder / "m.mkv");
        const Picture back = reader.read(0);
        ASSERT_EQ(back.world->Depth(), 16);
        std::set<int> values;
        each_pixel<QX_Pixel16>(*back.world, [&](const QX_Pixel16& p, int x, int y) {
            values.insert(p.green);
            EXPECT_NEAR(p.green, grey(x, y), most_off) << x << " " << y;
        });
        EXPECT_GT(values.size(), 800u);
        EXPECT_EQ(*values.begin(), 0);
        EXPECT_EQ(*values.rbegin(), 32768);
    }
    EXPECT_EQ(MovieFile(folder / "m.mp4", 64, 48, {.depth = 16}).depth(), 8);
}

TEST_F(Movies, AFrameOfAnotherSizeIsRefused) {
    std::vector<Packed> packets;
    for (int i = 0; i < 5; ++i) {
        write("f.jpg", noise(i < 3 ? 32 : 48, 16));
        packets.push_back({0, i, bytes("f.jpg")});
    }
    ASSERT_TRUE(mux(folder / "m.mov", {{AV_CODEC_ID_MJPEG, {1, 25}, 32, 16, AV_PIX_FMT_YUVJ420P}}, packets));
    MovieReader movie(folder / "m.mov");
    EXPECT_EQ(movie.read(2).world->width, 32);
    EXPECT_EQ(fault_of<Failure>([&] { movie.read(3); }),
              folder / "m.mov" + ": frame 3 has 48 x 16 pixels, those before it have 32 x 16");
    EXPECT_EQ(movie.read(0).world->width, 32);
}

TEST_F(Movies, CutOnesGiveWhatThereIsAtItsTimeAndSayItOnce) {
    constexpr int frames = 24;
    const MovieSettings settings{.rate = {24, 1}};
    for (const char* name : {"m.mkv", "m.webm", "m.avi", "m.mov"}) make_shaded(name, frames, settings);
    make("l.mkv", frames, 64, 48, {.rate = {24, 1}, .lossless = true}, [](int i) { return shaded(64, 48, i); });
    int read = 0;
    for (const std::string name : {"m.mkv", "m.webm", "m.avi", "m.mov", "l.mkv"}) {
        const std::string whole = bytes(name);
        EXPECT_EQ(reader_fault(name), "");
        for (const int part : {500, 750, 850, 900, 930, 960, 975, 985, 990, 995, 999}) {  // thousandths
            SCOPED_TRACE(name + " " + std::to_string(part));
            put(name,
                whole.substr(0, std::min(whole.size() - 9, whole.size() * static_cast<std::size_t>(part) / 1000)));
            const std::string fault = reader_fault(name);
            if (!fault.empty()) {  // in one what tells of frames stands at the end, in small ones a long head goes
                                   // before
                EXPECT_EQ(fault, folder / name + ": is cut short, and nothing of it can be read");
                EXPECT_TRUE(name == "m.mov" || part < 900);
                continue;
            }
            MovieReader movie(folder / name);
            ASSERT_EQ(movie.notes().size(), 1u);
            EXPECT_HOLDS(movie.notes()[0], "is cut short: ");
            EXPECT_EQ(movie.facts().rate.number, 24 * movie.facts().rate.per);
            const auto stamps = movie.stamps();
            const auto unit = movie.facts().time_base;
            for (int i = 0; i < movie.frames(); ++i, ++read) {
                const auto number = static_cast<double>((stamps[std::size_t(i)] - stamps[0]) * unit.number) * 24 /
                                    static_cast<double>(unit.per);
                EXPECT_TRUE(movie.facts().regular || number == std::round(number)) << i;
                if (movie.facts().numbered) continue;  // they count as they come
                EXPECT_NEAR(mean_red(movie.read(i)), 40 + 8 * std::round(number), 3) << i;
            }
        }
    }
    EXPECT_GT(read, 600);
}

TEST_F(Movies, WholeOnesWithGapsAreNotCut) {
    Stream raw = kRaw;
    raw.time_base = {1, 25};
    std::vector<Packed> packets;
    for (const int i : {0, 1, 2, 6, 7, 9}) packets.push_back({0, i, raw_frame(i), 1});
    for (const char* name : {"m.avi", "m.mkv"}) {
        ASSERT_TRUE(mux(folder / name, {raw}, packets));
        MovieReader movie(folder / name);
        ASSERT_EQ(movie.frames(), 6);
        EXPECT_EQ(movie.notes(), Names{}) << name;
        const auto unit = movie.facts().time_base;
        for (std::size_t i = 0; i < packets.size(); ++i)
            EXPECT_EQ(movie.stamps()[i] * unit.number * 25, packets[i].stamp * unit.per) << name << i;
    }
}

/// What is read of a damaged movie is a picture or a fault of ours.
TEST_F(Movies, DamagedOnesDoNoWorse) {
    make_painted("a.mkv", 6);
    for (const char* name : {"b.mp4", "c.avi", "d.webm"}) make_shaded(name, 8);
    for (const std::string name : {"a.mkv", "b.mp4", "c.avi", "d.webm"}) {
        const std::string whole = bytes(name);
        for (const auto seed : seeds(75)) {
            SCOPED_TRACE(name + ", seed " + std::to_string(seed));
            std::mt19937 random(static_cast<unsigned>(seed));
            std::string damaged = whole.substr(0, seed % 5 != 0 ? whole.size() : random() % whole.size() + 1);
            const std::size_t reach = seed % 2 == 0 ? std::min<std::size_t>(600, damaged.size()) : damaged.size();
            for (int i = 0; i < 4; ++i) damaged[random() % reach] = static_cast<char>(random());
            put(name, damaged);
            const auto words = fault_of<Failure>([&] {
                MovieReader movie(folder / name);
                for (const int i : shuffled(std::min(movie.frames(), 12))) movie.read(i);
            });
            EXPECT_TRUE(words.empty() || words.starts_with(folder / name)) << words;
        }
    }
}

}  // namespace
