// SPDX-License-Identifier: Apache-2.0
// OpenEXR files as other programs write them, and light without alpha, which only they hold.
#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>
#include <half.h>

#include "pictures/Light.h"
#include "pictures/Losses.h"
#include "platform/standalone/Standalone.h"
#include "tests/pictures/ExrSamples.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using ExrKinds = InFolder;
using Light = InFolder;

/// Half channels over a data window inside a larger display window.
void write_exr(const std::string& path, const Names& names, float alpha = 0.5f) {
    Imf::Header header(Imath::Box2i({10, 10}, {19, 14}), Imath::Box2i({12, 8}, {21, 12}));
    Samples samples;
    float value = 0;
    for (const std::string& name : names) samples.add(header, name, name == "A" ? alpha : value += 0.125f, 12 + 8 * 10);
    Imf::addChromaticities(header, {{0.7f, 0.3f}, {0.2f, 0.8f}, {0.1f, 0.0f}, {0.3f, 0.35f}});
    header.pixelAspectRatio() = 2;
    Imf::addOwner(header, "somebody");
    Imf::OutputFile exr(path.c_str(), header);
    exr.setFrameBuffer(samples.buffer);
    exr.writePixels(5);
}

TEST_F(ExrKinds, DataWindowLiesInTheDisplayWindow) {
    write_exr(folder / "a.exr", {"R", "G", "B", "A"});
    const auto picture = read("a.exr");
    EXPECT_TRUE(picture.has_alpha);
    EXPECT_TRUE(picture.linear);
    ASSERT_EQ(std::pair(picture.world->width, picture.world->height), std::pair(10, 5));
    for (int i = 0; i < 50; ++i) {
        const bool inside = i % 10 >= 2 && i / 10 <= 2;  // columns 12 to 19 of 10 to 19, rows 10 to 12 of 10 to 14
        ASSERT_EQ(channels(picture, i % 10, i / 10), inside ? (List{0.5, 0.25, 0.5, 0.75}) : List(4)) << i;
    }
    write_exr(folder / "y.exr", {"Y"});
    EXPECT_EQ(channels(read("y.exr"), 5, 0), (List{1, 0.125, 0.125, 0.125}));
    write_exr(folder / "z.exr", {"U", "V"});
    EXPECT_THROW(read("z.exr"), Failure);
}

TEST_F(ExrKinds, PrimariesAndTheShapeOfPixelsPassThrough) {
    write_exr(folder / "a.exr", {"R", "G", "B"});
    write("b.exr", read("a.exr"), 32);
    const auto copy = read("b.exr");
    ASSERT_TRUE(copy.colours.primaries.has_value());
    EXPECT_EQ(*copy.colours.primaries, (std::array<float, 8>{0.7f, 0.3f, 0.2f, 0.8f, 0.1f, 0.0f, 0.3f, 0.35f}));
    EXPECT_EQ(copy.resolution.y / copy.resolution.x, 2);
    Picture oblong = noise(8, 8);
    oblong.resolution = {1, 0.9, Resolution::Unit::none};
    for (const char* name : {"o.png", "o.jpg", "o.tif", "o.exr"}) {
        write(name, oblong);
        EXPECT_NEAR(read(name).resolution.y / read(name).resolution.x, 0.9, 1e-6) << name;
    }
    auto with_profile = picture<QX_PixelFloat>(1, 1, false, [](int, int) { return QX_PixelFloat{}; });
    with_profile.colours.icc.bytes = small_profile();
    EXPECT_EQ(left_out("x.exr", copy, 32), Names{});
    EXPECT_EQ(left_out("x.png", copy, 32),
              (Names{"its primaries are left out, only OpenEXR holds them",
                     "its attributes are left out, only OpenEXR holds them",
                     "what lies outside its display window is left out", "its half floats become 16 bits"}));
    EXPECT_EQ(left_out("x.exr", with_profile, 32), Names{"its colour profile is left out, OpenEXR holds none"});
    EXPECT_EQ(left_out("x.tif", with_profile, 32), Names{});
}

TEST_F(ExrKinds, AttributesAndHalvesPassThroughAndTheRestIsTold) {
    write_exr(folder / "a.exr", {"R", "G", "B", "depth.Z", "Y"});
    Picture picture = read("a.exr");
    EXPECT_EQ(picture.notes, Names{"its further channels are left out: Y, depth.Z"});
    EXPECT_EQ(lost_beside(picture), Names{"what lies outside its display window is left out"});
    for (const auto& [half, type] :
         {std::pair{std::optional<bool>(), Imf::HALF}, {true, Imf::HALF}, {false, Imf::FLOAT}}) {
        write_picture(folder / "b.exr", picture, 32, {.half = half});
        Imf::InputFile copy((folder / "b.exr").c_str());
        EXPECT_EQ(Imf::owner(copy.header()), "somebody");
        EXPECT_EQ(copy.header().channels().findChannel("R")->type, type);
        EXPECT_EQ(copy.header().channels().findChannel("A"), nullptr) << "all in its window is opaque";
    }
    picture.precision = Precision::real;
    EXPECT_EQ(left_out("b.exr", picture, 32), Names{"its floats become half floats"});
    row_of<QX_PixelFloat>(*picture.world, 1)[3].green = 70000;
    EXPECT_EQ(left_out("b.exr", picture, 32, {.half = true}).size(), 2u);
    EXPECT_EQ(left_out("b.exr", picture, 32, {.half = false}), Names{});
    EXPECT_EQ(left_out("b.tif", picture, 32).size(), 3u);
    EXPECT_EQ(left_out("b.tif", picture, 16).size(), 5u) << "cut, and 16 bits";
}

TEST_F(ExrKinds, SamplesInDepthBecomeOneWithANote) {
    Imf::Header header(1, 1);
    header.setType(Imf::DEEPSCANLINE);
    header.compression() = Imf::ZIPS_COMPRESSION;
    unsigned count = 2;
    Imf::DeepFrameBuffer buffer;
    buffer.insertSampleCountSlice(Imf::Slice(Imf::UINT, reinterpret_cast<char*>(&count)));
    float values[5][2] = {{0.5f, 1}, {0.25f, 0.5f}, {0.25f, 0}, {0, 1}, {1, 2}};  // the second lies behind the first
    float* samples[5];
    for (std::size_t i = 0; i < 5; ++i) {
        const char name[] = {"ARGBZ"[i], '\0'};
        samples[i] = values[i];
        header.channels().insert(name, Imf::Channel(Imf::FLOAT));
        buffer.insert(name, Imf::DeepSlice(Imf::FLOAT, reinterpret_cast<char*>(&samples[i]), 0, 0, sizeof(float)));
    }
    {
        Imf::DeepScanLineOutputFile file((folder / "d.exr").c_str(), header);
        file.setFrameBuffer(buffer);
        file.writePixels(1);
    }
    const auto picture = read("d.exr");
    EXPECT_EQ(channels(picture, 0, 0), (List{1, 0.5, 0.25, 0.5}));
    EXPECT_EQ(picture.notes,
              (Names{"its further channels are left out: Z", "its samples in depth become one a pixel"}));
}

/// What only a header claims is refused by it, before memory is taken for it.
TEST_F(ExrKinds, FalseClaimsAreRefused) {
    write_exr(folder / "a.exr", {"Y"});
    const std::string whole = bytes("a.exr");
    const std::size_t size = whole.find("dataWindow") + 11 + 6;  // behind the name and the type
    const std::size_t lowest = size + 4 + 12;                    // behind three numbers
    ASSERT_EQ(whole[size], 16);
    ASSERT_EQ(whole[lowest], 12);
    for (const auto& [place, words] : {std::pair{lowest, "data window"}, {size, "ends within its header"}}) {
        std::string changed = whole;
        put("a.exr", changed.replace(place, 4, std::string("\0\0\0\x10", 4)));
        EXPECT_HOLDS(fault("a.exr"), words);
    }
    std::string fewer = whole;
    fewer[whole.find("chlist") + 7 + 4 + 2 + 8] = 2;  // behind that type, a size, the name, and the kind of the samples
    put("a.exr", fewer);
    EXPECT_HOLDS(fault("a.exr"), "its channel Y has fewer samples");
}

/// Blocks are packed and unpacked by whatever threads there are, and by tasks in any order.
TEST_F(ExrKinds, BlocksAreTheSameOnAnyThreads) {
    const auto in = picture<QX_PixelFloat>(90, 701, true, [](int x, int y) {
        return QX_PixelFloat{static_cast<float>(x + 1) / 90, static_cast<float>(x * y % 97), 0.5f, 0.1f};
    });
    std::string first;
    for (const int threads : {1, 2, 7, 0}) {
        standalone::SetPoolLimit(threads == 0 ? 3 : threads);
        if (threads == 0) {
            standalone::SetExecutor([](const boost::function<void(int)>& task, int count) {
                for (int i = count; i-- > 0;) task(i);
            });
        }
        write("b.exr", in, 32);
        if (first.empty()) first = bytes("b.exr");
        EXPECT_TRUE(bytes("b.exr") == first) << threads;
        write("c.exr", read("b.exr"), 32);
        EXPECT_TRUE(bytes("c.exr") == first) << threads;
    }
    standalone::SetExecutor({});
    standalone::SetPoolLimit(0);
}

TEST_F(Light, StaysInACopyAndGoesFromPixelsThatGetAlpha) {
    write_exr(folder / "light.exr", {"R", "G", "B", "A"}, 0);  // 24 pixels of it lie in the picture
    const auto light = read("light.exr");
    EXPECT_EQ(channels(light, 5, 1), (List{0, 0.125, 0.25, 0.375}));
    EXPECT_TRUE(is_light(light, 5, 1));
    EXPECT_FALSE(is_light(light, 0, 0)) << "clear and black";
    EXPECT_FALSE(covers_light(light));
    write("copy.exr", light, 32);
    EXPECT_TRUE(same_pixels(read("copy.exr"), light));

    // Colour under alpha 0 of straight pixels is no light.
    const auto straight = [](int x, int) { return QX_PixelFloat{0, 1, x == 0 ? 1.0f : INFINITY, 1}; };
    write("straight.exr", picture<QX_PixelFloat>(2, 1, true, straight), 32);
    for (int x = 0; x < 2; ++x) EXPECT_EQ(channels(read("straight.exr"), x, 0), List(4));
}

}  // namespace
