// SPDX-License-Identifier: Apache-2.0
// Files as other programs write them, made here through the libraries.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <cstdio>  // before the next header, which needs it

#include <jpeglib.h>

#include <half.h>

#include "pictures/Scale.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::channels;
using qx::test::Folder;
using List = std::vector<double>;

void write_png(const std::string& path, std::uint32_t format, std::uint32_t width,
               const std::vector<std::uint8_t>& pixels, const std::vector<std::uint8_t>& colours = {}) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = 1;
    image.format = format;
    image.colormap_entries = static_cast<png_uint_32>(colours.size() / 4);
    ASSERT_NE(png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, colours.data()), 0) << image.message;
}

TEST(PngKinds, GreyAndPaletteBecomeColours) {
    const Folder folder;
    write_png(folder / "grey.png", PNG_FORMAT_GRAY, 2, {7, 200});
    write_png(folder / "ga.png", PNG_FORMAT_GA, 2, {7, 40, 200, 0});
    write_png(folder / "palette.png", PNG_FORMAT_RGBA_COLORMAP, 3, {0, 1, 1}, {10, 20, 30, 255, 40, 50, 60, 128});
    const auto grey = read_picture(folder / "grey.png"), ga = read_picture(folder / "ga.png"),
               palette = read_picture(folder / "palette.png");
    EXPECT_FALSE(grey.has_alpha);
    EXPECT_EQ(channels(*grey.world, 1, 0), (List{255, 200, 200, 200}));
    EXPECT_TRUE(ga.has_alpha);
    EXPECT_EQ(channels(*ga.world, 0, 0), (List{40, 7, 7, 7}));
    EXPECT_EQ(channels(*ga.world, 1, 0), (List{0, 200, 200, 200}));
    EXPECT_TRUE(palette.has_alpha);
    EXPECT_EQ(channels(*palette.world, 0, 0), (List{255, 10, 20, 30}));
    EXPECT_EQ(channels(*palette.world, 2, 0), (List{128, 40, 50, 60}));
}

TEST(PngKinds, DamagedProfileIsLeftOutWithANote) {
    const Folder folder;
    auto picture = qx::test::picture<QX_Pixel8>(4, 4, false, [](int, int) { return QX_Pixel8{255, 1, 2, 3}; });
    picture.icc = qx::test::small_profile();
    write_picture(folder / "a.png", picture, 8);
    EXPECT_TRUE(read_picture(folder / "a.png").notes.empty());
    std::string bytes = qx::test::contents(folder / "a.png");
    bytes.replace(bytes.find("iCCP") + 20, 40, 40, '\xFF');
    qx::test::put_contents(folder / "a.png", bytes);
    const auto damaged = read_picture(folder / "a.png");
    EXPECT_EQ(damaged.notes.size(), 1u);
    EXPECT_TRUE(damaged.icc.empty());
    EXPECT_TRUE(qx::test::same_pixels(*damaged.world, *picture.world));
}

void write_jpeg(const std::string& path, int components, J_COLOR_SPACE space, const std::vector<std::uint8_t>& row) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = static_cast<JDIMENSION>(row.size()) / static_cast<JDIMENSION>(components);
    jpeg.image_height = 1;
    jpeg.input_components = components;
    jpeg.in_color_space = space;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    auto* line = const_cast<JSAMPROW>(row.data());
    jpeg_write_scanlines(&jpeg, &line, 1);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
}

TEST(JpegKinds, GreyIsReadAndCmykRefused) {
    const Folder folder;
    write_jpeg(folder / "grey.jpg", 1, JCS_GRAYSCALE, std::vector<std::uint8_t>(16, 90));
    EXPECT_EQ(channels(*read_picture(folder / "grey.jpg").world, 3, 0), (List{255, 90, 90, 90}));
    write_jpeg(folder / "cmyk.jpg", 4, JCS_CMYK, std::vector<std::uint8_t>(64, 90));
    try {
        read_picture(folder / "cmyk.jpg");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("CMYK"), std::string::npos);
    }
}

TEST(JpegKinds, OrientationAndDamageAreTold) {
    const Folder folder;
    write_jpeg(folder / "a.jpg", 3, JCS_RGB, std::vector<std::uint8_t>(48, 90));
    const std::string whole = qx::test::contents(folder / "a.jpg");
    const auto notes = [&](const std::string& behind_start) {
        qx::test::put_contents(folder / "b.jpg", whole.substr(0, 2) + behind_start + whole.substr(2));
        return read_picture(folder / "b.jpg").notes;
    };
    const auto exif = [&](const std::string& tiff) {
        const std::string block = std::string("Exif\0\0", 6) + tiff;
        return std::string("\xFF\xE1\0", 3) + static_cast<char>(block.size() + 2) + block;
    };
    // One entry: tag 0x0112, type 3, count 1, the value.
    const std::string big("MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0", 22);
    const std::string little("II\x2A\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x01\0\0\0", 22);
    const std::vector<std::string> none;
    EXPECT_EQ(notes(""), none);
    EXPECT_EQ(notes(exif(little)), none) << "1 is as stored";
    EXPECT_EQ(notes(exif(big)), std::vector<std::string>{"is taken as stored, its orientation is not applied"});
    for (std::size_t cut = 0; cut < big.size() - 4; ++cut) EXPECT_EQ(notes(exif(big.substr(0, cut))), none) << cut;
    EXPECT_EQ(notes(std::string("\xFF\xC4\0\x02", 4) + "garbage").size(), 1u);
}

/// A TIFF of 40 x 20 pixels whose sample s at (x, y) is value(x, y, s).
struct TiffKind {
    const char* name;
    int samples, bits, format, photometric, planes, extra;  ///< extra: type of the last sample, or -1
    bool tiled;
};

template <class Sample, class Value>
void write_tiff(const std::string& path, const TiffKind& kind, const Value& value) {
    constexpr std::uint32_t width = 40, height = 20, tile = 16;
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, kind.planes);
    const auto extra = static_cast<std::uint16_t>(kind.extra);
    if (kind.extra >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
    if (kind.tiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 7u);  // the last strip is a short one
    }
    const bool apart = kind.planes == PLANARCONFIG_SEPARATE;
    const int planes = apart ? kind.samples : 1, together = apart ? 1 : kind.samples;
    const std::uint32_t block_width = kind.tiled ? tile : width, block_height = kind.tiled ? tile : 1;
    for (int plane = 0; plane < planes; ++plane) {
        for (std::uint32_t top = 0; top < height; top += block_height) {
            for (std::uint32_t left = 0; left < width; left += block_width) {
                std::vector<Sample> block;
                for (std::uint32_t i = 0; i < block_width * block_height; ++i) {
                    for (int s = 0; s < together; ++s) {
                        block.push_back(value(int(left + i % block_width), int(top + i / block_width), plane + s));
                    }
                }
                if (kind.tiled) {
                    TIFFWriteTile(tiff, block.data(), left, top, 0, static_cast<std::uint16_t>(plane));
                } else {
                    TIFFWriteScanline(tiff, block.data(), top, static_cast<std::uint16_t>(plane));
                }
            }
        }
    }
    TIFFClose(tiff);
}

TEST(TiffKinds, LayoutsGiveTheSamePicture) {
    const Folder folder;
    const auto value = [](int x, int y, int s) { return 5 * x + 2 * y + s + 1; };  // 1 to 238
    const TiffKind kinds[] = {
        {"strips", 3, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, -1, false},
        {"tiles", 3, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, -1, true},
        {"planes", 4, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, EXTRASAMPLE_UNASSALPHA, false},
        {"tiled planes", 4, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, EXTRASAMPLE_UNASSALPHA, true},
        {"unknown extra", 4, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, EXTRASAMPLE_UNSPECIFIED,
         false},
        {"grey alpha", 2, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISBLACK, PLANARCONFIG_CONTIG, EXTRASAMPLE_UNASSALPHA,
         false},
        {"inverse grey", 1, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG, -1, true},
        {"inverse grey alpha", 2, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG,
         EXTRASAMPLE_UNASSALPHA, false},
        {"inverse grey alpha planes", 2, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_SEPARATE,
         EXTRASAMPLE_UNASSALPHA, true}};
    for (const TiffKind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        write_tiff<std::uint8_t>(folder / "k.tif", kind,
                                 [&](int x, int y, int s) { return static_cast<std::uint8_t>(value(x, y, s)); });
        const auto picture = read_picture(folder / "k.tif");
        const bool grey = kind.photometric != PHOTOMETRIC_RGB, alpha = kind.extra == EXTRASAMPLE_UNASSALPHA;
        EXPECT_EQ(picture.has_alpha, alpha);
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 40; ++x) {
                List expected{alpha ? double(value(x, y, grey ? 1 : 3)) : 255};
                for (int s = 0; s < 3; ++s) {
                    const int v = value(x, y, grey ? 0 : s);
                    expected.push_back(kind.photometric == PHOTOMETRIC_MINISWHITE ? 255 - v : v);
                }
                ASSERT_EQ(channels(*picture.world, x, y), expected) << x << "," << y;
            }
        }
    }
}

TEST(TiffKinds, AssociatedAlphaBecomesStraightAtTheFilesPrecision) {
    const Folder folder;
    TiffKind kind{"", 4, 16, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, EXTRASAMPLE_ASSOCALPHA, false};
    const auto alpha = [](int x, int y) { return (x + 40 * y) * 81; };
    write_tiff<std::uint16_t>(folder / "a.tif", kind, [&](int x, int y, int s) {
        return static_cast<std::uint16_t>(s == 3 ? alpha(x, y) : alpha(x, y) / (s + 2));
    });
    const auto integers = read_picture(folder / "a.tif");
    for (int i = 0; i < 800; ++i) {
        const int x = i % 40, y = i / 40, a = alpha(x, y);
        const auto got = channels(*integers.world, x, y);
        for (int s = 0; a > 0 && s < 3; ++s) {
            const auto v = std::lround((a / (s + 2)) * 65535.0 / a);
            ASSERT_EQ(got[static_cast<std::size_t>(s) + 1], std::lround(double(v) * 32768 / 65535)) << i;
        }
    }
    kind.bits = 32;
    kind.format = SAMPLEFORMAT_IEEEFP;
    write_tiff<float>(folder / "f.tif", kind, [](int, int, int s) { return s == 3 ? 0.25f : 0.125f * float(s); });
    EXPECT_EQ(channels(*read_picture(folder / "f.tif").world, 39, 19), (List{0.25, 0, 0.5, 1}));
    kind.bits = 16;
    write_tiff<half>(folder / "h.tif", kind, [](int, int, int s) { return half(s == 3 ? 0.25f : 0.125f * float(s)); });
    EXPECT_EQ(channels(*read_picture(folder / "h.tif").world, 0, 0), (List{0.25, 0, 0.5, 1}));
}

}  // namespace
