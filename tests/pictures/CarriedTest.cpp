// SPDX-License-Identifier: Apache-2.0
// Pixels that are only carried from file to file stay what they were, as the libraries see the files.
#include "pictures/Carried.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <half.h>

#include "pictures/Losses.h"
#include "tests/pictures/Writers.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Carried = InFolder;
using Values = std::vector<std::uint16_t>;
constexpr int kSide = 256;

/// Each of the 65,536 values in each channel.
Values all_values() {
    Values values;
    for (int v = 0; v < 65536; ++v) {
        for (const int c : {v, 65535 - v, v ^ 0x5A5A}) values.push_back(static_cast<std::uint16_t>(c));
    }
    return values;
}

void put_values(const std::string& path, const Values& values) {
    if (path.ends_with("png")) {
        png_image image{nullptr, PNG_IMAGE_VERSION, kSide, kSide, PNG_FORMAT_LINEAR_Y | PNG_FORMAT_FLAG_COLOR, 0, 0, 0,
                        {}};
        ASSERT_NE(png_image_write_to_file(&image, path.c_str(), 0, values.data(), 0, nullptr), 0) << image.message;
        return;
    }
    TIFF* tiff =
        new_tiff(path, kSide, kSide, 16,
                 {{TIFFTAG_SAMPLESPERPIXEL, 3}, {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB}, {TIFFTAG_PLANARCONFIG, 1}});
    Values row;
    for (std::uint32_t y = 0; y < kSide; ++y) {
        row.assign(values.begin() + y * 3 * kSide, values.begin() + (y + 1) * 3 * kSide);
        TIFFWriteScanline(tiff, row.data(), y, 0);
    }
    TIFFClose(tiff);
}

Values values_of(const std::string& path) {
    Values values(3 * kSide * kSide);
    const auto row = [&](std::uint32_t y) { return values.data() + y * 3 * kSide; };
    if (path.ends_with("png")) {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_init_io(png, file);
        png_read_info(png, info);
        EXPECT_EQ(png_get_bit_depth(png, info), 16);
        png_set_swap(png);
        for (std::uint32_t y = 0; y < kSide; ++y) png_read_row(png, reinterpret_cast<png_bytep>(row(y)), nullptr);
        png_destroy_read_struct(&png, &info, nullptr);
        std::fclose(file);
        return values;
    }
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    EXPECT_EQ(TIFFScanlineSize(tiff), 3 * kSide * 2);
    for (std::uint32_t y = 0; y < kSide; ++y) TIFFReadScanline(tiff, row(y), y, 0);
    TIFFClose(tiff);
    return values;
}

TEST_F(Carried, AllValuesOf16BitsPassEitherDepthEitherWay) {
    for (const std::string in : {"in.png", "in.tif"}) {
        put_values(folder / in, all_values());
        for (const int depth : {16, 32}) {
            for (const std::string out : {"out.png", "out.tif"}) {
                Picture picture = read(in);
                bring_to_depth(in, picture, depth);
                write(out, picture, 16);
                EXPECT_EQ(values_of(folder / out), all_values()) << in << depth << out;
            }
            Picture picture = read(in);
            bring_to_depth(in, picture, depth);
            write("out.exr", picture, depth);
            const Picture floats = read("out.exr");
            for (int v = 0; v < 65536; ++v)
                ASSERT_EQ(channels(floats, v % kSide, v / kSide)[1], float(v / 65535.0)) << v;
        }
    }
}

/// 8 bits at depth 32 are 257 times themselves in a file of 16; what was laid over is not what was carried.
TEST_F(Carried, OtherPixelsAreRounded) {
    Picture eight = picture<QX_Pixel8>(kSide, kSide, false, [](int x, int y) { return argb(255, x, 255 - x, x ^ y); });
    bring_to_depth("eight", eight, 32);
    write("out.png", eight, 16);
    const Values values = values_of(folder / "out.png");
    for (std::size_t i = 0; i < kSide * kSide; ++i) ASSERT_EQ(values[3 * i], i % kSide * 257);

    put_values(folder / "in.png", all_values());
    Picture changed = read("in.png");
    each_pixel<QX_Pixel16>(*changed.world,
                           [](QX_Pixel16& p, int, int) { p.red = static_cast<std::uint16_t>(p.red ^ 1); });
    write("out.png", changed, 16);
    const Values written = values_of(folder / "out.png"), in = all_values();
    for (std::size_t i = 0; i < kSide * kSide; ++i) {
        const auto red = row_of<QX_Pixel16>(*changed.world, static_cast<int>(i / kSide))[i % kSide].red;
        ASSERT_NEAR(written[3 * i], std::min<int>(red, 32768) * 65535.0 / 32768, 0.5) << i;
        ASSERT_EQ(written[3 * i + 1], in[3 * i + 1]) << i;
    }
    write("out.exr", changed, 16);
    const Picture floats = read("out.exr");
    for (int i = 0; i < kSide * kSide; ++i) {
        const auto red = row_of<QX_Pixel16>(*changed.world, i / kSide)[i % kSide].red;
        ASSERT_EQ(channels(floats, i % kSide, i / kSide)[1], red / 32768.0) << i;
    }
}

/// An OpenEXR file through its library alone: the channels A, B, G, R one behind the other.
template <class Channel> constexpr Imf::PixelType kType = sizeof(Channel) == 2 ? Imf::HALF : Imf::FLOAT;
template <class Channel> Imf::FrameBuffer planes(std::vector<Channel>& values, Imath::V2i origin) {
    Imf::FrameBuffer buffer;
    const int first = origin.x + origin.y * kSide;
    for (std::size_t c = 0; c < 4; ++c) {
        buffer.insert(std::string(1, "ABGR"[c]),
                      Imf::Slice(kType<Channel>, reinterpret_cast<char*>(values.data() + c * kSide * kSide - first),
                                 sizeof(Channel), kSide * sizeof(Channel)));
    }
    return buffer;
}

template <class Channel> void expect_carried(const Folder& folder, Imath::Box2i display) {
    const Imath::Box2i data({-50, 90}, {kSide - 51, kSide + 89});
    std::mt19937 random(7);
    std::vector<Channel> in, out(4 * kSide * kSide);
    for (int i = 0; i < 4 * kSide * kSide; ++i) {
        const float unit = static_cast<float>(random()) * 0x1p-32f;
        in.push_back(Channel(i % 97 == 0 ? 0 : i % 89 == 0 ? unit * -3 : unit));  // alphas too; light where they are 0
    }
    {
        Imf::Header header(display, data);
        for (const char* name : {"A", "B", "G", "R"}) header.channels().insert(name, Imf::Channel(kType<Channel>));
        Imf::OutputFile file((folder / "in.exr").c_str(), header);
        file.setFrameBuffer(planes(in, data.min));
        file.writePixels(kSide);
    }
    Picture picture = read_picture(folder / "in.exr");
    write_picture(folder / "out.exr", picture, 32, {.half = sizeof(Channel) == 2});
    Imf::InputFile file((folder / "out.exr").c_str());
    EXPECT_EQ(file.header().displayWindow(), display);
    ASSERT_EQ(file.header().dataWindow(), data);
    file.setFrameBuffer(planes(out, data.min));
    file.readPixels(data.min.y, data.max.y);
    EXPECT_EQ(std::memcmp(in.data(), out.data(), in.size() * sizeof(Channel)), 0);

    // A pixel where the file had none takes a larger window.
    if (data.intersects(display.max)) return;
    row_of<QX_PixelFloat>(*picture.world, picture.world->height - 1)[picture.world->width - 1] = {1, 0.5f, 0.5f, 0.5f};
    write_picture(folder / "more.exr", picture, 32);
    Imath::Box2i both = display;
    both.extendBy(data);
    EXPECT_EQ(Imf::InputFile((folder / "more.exr").c_str()).header().dataWindow(), both);
    EXPECT_TRUE(same_pixels(read_picture(folder / "more.exr"), picture));
    EXPECT_EQ(lost_beside(read_picture(folder / "more.exr")), lost_beside(picture));
}

TEST_F(Carried, FloatsAndHalvesKeepTheirBitsAndWindows) {
    for (const auto& [min, max] : {std::pair{Imath::V2i(-50, 90), Imath::V2i(205, 345)},  // the same as the data window
                                   {{-20, 100}, {99, 199}},                               // inside of it
                                   {{-500, 0}, {600, 400}},                               // around it
                                   {{100, 200}, {400, 360}},                              // across
                                   {{300, -40}, {310, 2}}}) {                             // elsewhere
        SCOPED_TRACE(min.x);
        expect_carried<float>(folder, {min, max});
        expect_carried<half>(folder, {min, max});
    }
}

}  // namespace
