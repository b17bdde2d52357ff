// SPDX-License-Identifier: Apache-2.0
// qx flow: files of fields, byte by byte, and their colours.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <bit>
#include <cmath>
#include <set>

#include "pictures/Picture.h"
#include "tests/scene/Painted.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/sheet/FlowWheel.h"
#include "tools/qx/work/FlowFiles.h"

namespace {

using namespace qx::test;
using namespace qx::tool;
using qx::scene::FlowField;
using qx::scene::kUnknownFlow;

class Flow : public QxTest {
protected:
    /// A ground that moves by (3, -2) from one picture to the other.
    void SetUp() override {
        for (int i = 0; i < 2; ++i) {
            write(i == 0 ? "a.png" : "b.png", 96, 80, [=](int x, int y) {
                const int v = static_cast<int>(30 + 200 * painted(1, x - 3 * i, y + 2 * i));
                return argb(255, v, v, v);
            });
        }
    }
};

std::vector<std::vector<float>> read_exr_channels(const std::string& path, const Names& names) {
    Imf::InputFile file(path.c_str());
    const auto& window = file.header().dataWindow();
    const auto width = static_cast<std::size_t>(window.max.x + 1), height = static_cast<std::size_t>(window.max.y + 1);
    std::vector<std::vector<float>> channels(names.size(), std::vector<float>(width * height));
    Imf::FrameBuffer buffer;
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_NE(file.header().channels().findChannel(names[i]), nullptr) << names[i];
        auto* const values = reinterpret_cast<char*>(channels[i].data());
        buffer.insert(names[i], Imf::Slice(Imf::FLOAT, values, sizeof(float), sizeof(float) * width));
    }
    file.setFrameBuffer(buffer);
    file.readPixels(window.min.y, window.max.y);
    return channels;
}

/// A word of a file, its low byte first.
std::uint32_t word(const std::string& bytes, std::size_t at) {
    std::uint32_t all = 0;
    for (std::size_t i = 0; i < 4; ++i)
        all |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[4 * at + i])) << 8 * i;
    return all;
}

TEST_F(Flow, WritesTheFieldAsItIsDefined) {
    run("flow a.png b.png -o f.flo --backward g.flo --picture w.png");
    const std::string forward = contents(folder / "f.flo"), backward = contents(folder / "g.flo");
    ASSERT_EQ(forward.size(), 12u + 96 * 80 * 8);
    EXPECT_EQ(forward.substr(0, 4), "PIEH");
    EXPECT_EQ(word(forward, 1), 96u);
    EXPECT_EQ(word(forward, 2), 80u);
    const auto part = [](const std::string& bytes, std::size_t x, std::size_t y, std::size_t which) {
        return std::bit_cast<float>(word(bytes, 3 + (y * 96 + x) * 2 + which));
    };
    double off = 0;
    int count = 0;
    for (std::size_t y = 20; y < 60; ++y) {
        for (std::size_t x = 20; x < 76; ++x, ++count) {
            off += std::hypot(part(forward, x, y, 0) - 3, part(forward, x, y, 1) + 2);
            off += std::hypot(part(backward, x, y, 0) + 3, part(backward, x, y, 1) - 2);
        }
    }
    EXPECT_LT(off / count / 2, 0.4);  // a fifth of a pixel of the field, which has half the picture's width
    EXPECT_EQ(read("w.png").world->width, 96);
}

TEST_F(Flow, WritesTheTagOfWhatIsUnknown) {
    const FlowField field{2, 1, {{1.5f, -2}, {kUnknownFlow, kUnknownFlow}}};
    write_fields(folder / "u.flo", &field, nullptr, qx::pictures::unwatched())->commit();
    const unsigned char expected[] = {0x50, 0x49, 0x45, 0x48, 2,    0,    0,    0,    1, 0, 0, 0,  // the tag 202021.25
                                      0,    0,    0xC0, 0x3F, 0,    0,    0,    0xC0,              // 1.5, -2
                                      0xF9, 0x02, 0x15, 0x50, 0xF9, 0x02, 0x15, 0x50};             // 1e10
    EXPECT_EQ(contents(folder / "u.flo"), std::string(reinterpret_cast<const char*>(expected), sizeof expected));
}

TEST_F(Flow, AnExrHasAllFourChannels) {
    const FlowField to{2, 2, {{1, 2}, {3, 4}, {5, 6}, {kUnknownFlow, 0}}},
        from{2, 2, {{-1, -2}, {-3, -4}, {-5, -6}, {0, 7}}};
    write_fields(folder / "f.exr", &to, &from, qx::pictures::unwatched())->commit();
    const auto read = read_exr_channels(folder / "f.exr", {"forward.u", "forward.v", "backward.u", "backward.v"});
    ASSERT_EQ(read.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(read[0][i], to.vectors[i].u);
        EXPECT_EQ(read[1][i], to.vectors[i].v);
        EXPECT_EQ(read[2][i], from.vectors[i].u);
        EXPECT_EQ(read[3][i], from.vectors[i].v);
    }
}

TEST_F(Flow, WrongUseIsOneLine) {
    gradient("c.png", 40, 30, 255);
    expect_faults(2, "flow a.png b.png ", "",
                  {"-o f.png => its ending is none of flo, exr", "-o f.flo --backward g.txt => --backward g.txt",
                   "-o f.flo --max 3 => --max is for --picture", "-o f.flo --picture w.png --max 0 => --max 0",
                   "-o f.flo --detail 2 => --detail 2", "-o f.flo --picture w.flo => --picture w.flo",
                   "-o f.flo --picture a.png => --picture a.png: is the input too",
                   "-o f.flo --backward ./f.flo => --backward ./f.flo: is -o too"});
    expect_fault("flow a.png c.png -o f.flo", 1, "40 x 30 pixels, a.png has 96 x 80 pixels");
    expect_fault("flow a.png none.png -o f.flo", 1, "none.png");
}

TEST(FlowWheels, TellDirectionAndLength) {
    const auto colour = [](double u, double v) {
        const QX_Pixel8 p = flow_colour({static_cast<float>(u), static_cast<float>(v)}, 10);
        return List{static_cast<double>(p.red), static_cast<double>(p.green), static_cast<double>(p.blue)};
    };
    EXPECT_EQ(colour(0, 0), (List{255, 255, 255}));
    EXPECT_EQ(colour(10, 0), (List{255, 0, 0}));
    EXPECT_EQ(colour(5, 0), (List{255, 128, 128}));
    EXPECT_EQ(colour(20, 0), (List{191, 0, 0}));
    // 55 steps around: 15 of them lead to full yellow, so below, after 13.75, red is full and green 11/12 of it.
    EXPECT_EQ(colour(0, 9.999999), (List{255, 234, 0}));
    // To the left, after 27.5: 2.5 of 11 steps from cyan to blue.
    EXPECT_NEAR(colour(-10, 0)[1], 255 * 8.5 / 11, 1);
    EXPECT_EQ(colour(-10, 0)[2], 255);
    // Up, after 41.25: 5.25 of 13 steps from blue to magenta.
    EXPECT_NEAR(colour(0, -10)[0], 255 * 5.25 / 13, 1);
    EXPECT_EQ(colour(1e10, 1e10), (List{0, 0, 0}));
}

TEST(FlowWheels, TheUsualLengthLeavesOutliersOut) {
    FlowField field{100, 100, std::vector<FlowField::Vector>(10000, {3, 4})};
    for (std::size_t i = 0; i < 50; ++i) field.vectors[i * 7] = {300, 0};
    for (std::size_t i = 9000; i < 9400; ++i) field.vectors[i] = {kUnknownFlow, kUnknownFlow};
    EXPECT_DOUBLE_EQ(usual_length(field), 5);
    EXPECT_EQ(usual_length({1, 1, {{0, 0}}}), 0.01);
    const auto picture = flow_picture(field, 5);  // with the wheel in a corner
    EXPECT_EQ(channels(picture, 1, 1), channels(picture, 40, 40));
    std::set<List> corner;
    for (int y = 60; y < 95; ++y) {
        for (int x = 60; x < 100; ++x) corner.insert(channels(picture, x, y));
    }
    EXPECT_GT(corner.size(), 100u);
}

}  // namespace
