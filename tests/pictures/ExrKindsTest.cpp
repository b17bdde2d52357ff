// SPDX-License-Identifier: Apache-2.0
// OpenEXR files as other programs write them, and light without alpha, which only they hold.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>
#include <gtest/gtest.h>
#include <half.h>

#include "pictures/Light.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::channels;
using qx::test::Folder;
using List = std::vector<double>;

/// Half channels over a data window inside a larger display window.
void write_exr(const std::string& path, const std::vector<std::string>& names, float alpha = 0.5f) {
    Imf::Header header(Imath::Box2i({10, 10}, {19, 14}), Imath::Box2i({12, 8}, {21, 12}));
    std::vector<half> samples(10 * 5);
    Imf::FrameBuffer buffer;
    std::vector<std::vector<half>> planes;
    planes.reserve(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        header.channels().insert(names[i], Imf::Channel(Imf::HALF));
        planes.emplace_back(50, half(names[i] == "A" ? alpha : 0.125f * float(i + 1)));
        auto* base = reinterpret_cast<char*>(planes.back().data() - (12 + 8 * 10));
        buffer.insert(names[i], Imf::Slice(Imf::HALF, base, sizeof(half), 10 * sizeof(half)));
    }
    Imf::addChromaticities(header, {{0.7f, 0.3f}, {0.2f, 0.8f}, {0.1f, 0.0f}, {0.3f, 0.35f}});
    header.pixelAspectRatio() = 2;
    Imf::OutputFile exr(path.c_str(), header);
    exr.setFrameBuffer(buffer);
    exr.writePixels(5);
}

TEST(ExrKinds, DataWindowLiesInTheDisplayWindow) {
    const Folder folder;
    write_exr(folder / "a.exr", {"R", "G", "B", "A"});
    const auto picture = read_picture(folder / "a.exr");
    EXPECT_TRUE(picture.has_alpha);
    EXPECT_TRUE(picture.linear);
    ASSERT_EQ(picture.world->width, 10);
    ASSERT_EQ(picture.world->height, 5);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 10; ++x) {
            const bool inside = x >= 2 && y <= 2;  // columns 12 to 19 of 10 to 19, rows 10 to 12 of 10 to 14
            ASSERT_EQ(channels(*picture.world, x, y), inside ? (List{0.5, 0.25, 0.5, 0.75}) : (List{0, 0, 0, 0}));
        }
    }
    write_exr(folder / "y.exr", {"Y"});
    EXPECT_EQ(channels(*read_picture(folder / "y.exr").world, 5, 0), (List{1, 0.125, 0.125, 0.125}));
    write_exr(folder / "z.exr", {"Z"});
    EXPECT_THROW(read_picture(folder / "z.exr"), Failure);
}

TEST(ExrKinds, PrimariesAndTheShapeOfPixelsPassThrough) {
    const Folder folder;
    write_exr(folder / "a.exr", {"R", "G", "B"});
    write_picture(folder / "b.exr", read_picture(folder / "a.exr"), 32);
    const auto copy = read_picture(folder / "b.exr");
    ASSERT_TRUE(copy.primaries.has_value());
    EXPECT_EQ(*copy.primaries, (std::array<float, 8>{0.7f, 0.3f, 0.2f, 0.8f, 0.1f, 0.0f, 0.3f, 0.35f}));
    EXPECT_EQ(copy.resolution.y / copy.resolution.x, 2);
    EXPECT_EQ(left_out("x.exr", copy).size(), 0u);
    EXPECT_EQ(left_out("x.png", copy).size(), 1u);
    auto with_profile = qx::test::picture<QX_PixelFloat>(1, 1, false, [](int, int) { return QX_PixelFloat{}; });
    with_profile.icc = qx::test::small_profile();
    EXPECT_EQ(left_out("x.exr", with_profile).size(), 1u);
    EXPECT_EQ(left_out("x.tif", with_profile).size(), 0u);
}

TEST(ExrKinds, OfManyPartsTheFirstIsUsedAndTheRestIsTold) {
    const Folder folder;
    std::vector<Imf::Header> headers(2, Imf::Header(4, 2));
    for (Imf::Header& header : headers) {
        for (const char* name : {"R", "G", "B"}) header.channels().insert(name, Imf::Channel(Imf::HALF));
        header.setType(Imf::SCANLINEIMAGE);
    }
    headers[0].setName("first");
    headers[1].setName("second");
    {
        Imf::MultiPartOutputFile parts((folder / "m.exr").c_str(), headers.data(), 2);
        std::vector<half> ones(8, half(1.0f));
        Imf::FrameBuffer buffer;
        for (const char* name : {"R", "G", "B"}) {
            buffer.insert(name, Imf::Slice(Imf::HALF, reinterpret_cast<char*>(ones.data()), 2, 8));
        }
        for (int i = 0; i < 2; ++i) {
            Imf::OutputPart part(parts, i);
            part.setFrameBuffer(buffer);
            part.writePixels(2);
        }
    }
    const auto picture = read_picture(folder / "m.exr");
    EXPECT_EQ(channels(*picture.world, 3, 1), (List{1, 1, 1, 1}));
    EXPECT_EQ(picture.notes, std::vector<std::string>{"only its first part is used"});
}

/// What only a header claims is refused by it, before memory is taken for it.
TEST(ExrKinds, FalseClaimsAreRefused) {
    const Folder folder;
    write_exr(folder / "a.exr", {"Y"});
    const std::string whole = qx::test::contents(folder / "a.exr");
    const std::size_t size = whole.find("dataWindow") + 11 + 6;  // behind the name and the type
    const std::size_t lowest = size + 4 + 12;                    // behind three numbers
    ASSERT_EQ(whole[size], 16);
    ASSERT_EQ(whole[lowest], 12);
    const struct {
        std::size_t place;
        const char* words;
    } cases[] = {{lowest, "data window"}, {size, "ends within its header"}};
    for (const auto& c : cases) {
        std::string bytes = whole;
        bytes.replace(c.place, 4, std::string("\0\0\0\x10", 4));
        qx::test::put_contents(folder / "a.exr", bytes);
        try {
            read_picture(folder / "a.exr");
            ADD_FAILURE() << c.words;
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find(c.words), std::string::npos) << failure.what();
        }
    }
}

TEST(Light, StaysInACopyAndGoesFromPixelsThatGetAlpha) {
    const Folder folder;
    write_exr(folder / "light.exr", {"R", "G", "B", "A"}, 0);  // 24 pixels of it lie in the picture
    const auto light = read_picture(folder / "light.exr");
    EXPECT_EQ(channels(*light.world, 5, 1), (List{0, 0.125, 0.25, 0.375}));
    EXPECT_TRUE(is_light(light, 5, 1));
    EXPECT_FALSE(is_light(light, 0, 0)) << "clear and black";
    EXPECT_FALSE(covers_light(light));
    write_picture(folder / "copy.exr", light, 32);
    EXPECT_TRUE(qx::test::same_pixels(*read_picture(folder / "copy.exr").world, *light.world));

    // Colour under alpha 0 of straight pixels is no light.
    const auto straight = qx::test::picture<QX_PixelFloat>(2, 1, true, [](int x, int) {
        return QX_PixelFloat{0, 1, x == 0 ? 1.0f : INFINITY, 1};
    });
    write_picture(folder / "straight.exr", straight, 32);
    const auto back = read_picture(folder / "straight.exr");
    for (int x = 0; x < 2; ++x) EXPECT_EQ(channels(*back.world, x, 0), (List{0, 0, 0, 0}));
}

}  // namespace
