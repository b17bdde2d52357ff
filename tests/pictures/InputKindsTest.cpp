// SPDX-License-Identifier: Apache-2.0
// Files as other programs write them.
#include <half.h>

#include "pictures/Scale.h"
#include "tests/pictures/Writers.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using PngKinds = InFolder;
using JpegKinds = InFolder;
using TiffKinds = InFolder;

TEST_F(PngKinds, GreyAndPaletteBecomeColours) {
    const std::tuple<std::uint32_t, std::uint32_t, Bytes, Bytes, std::vector<List>> kinds[] = {
        {PNG_FORMAT_GRAY, 2, {7, 200}, {}, {{255, 7, 7, 7}, {255, 200, 200, 200}}},
        {PNG_FORMAT_GA, 2, {7, 40, 200, 0}, {}, {{40, 7, 7, 7}, {0, 200, 200, 200}}},
        {PNG_FORMAT_RGBA_COLORMAP,
         3,
         {0, 1, 1},
         {10, 20, 30, 255, 40, 50, 60, 128},
         {{255, 10, 20, 30}, {128, 40, 50, 60}, {128, 40, 50, 60}}},
    };
    for (const auto& [format, width, pixels, colours, found] : kinds) {
        write_png(folder / "a.png", format, width, pixels, colours);
        EXPECT_EQ(read("a.png").has_alpha, format != PNG_FORMAT_GRAY) << format;
        EXPECT_EQ(first_row(read("a.png")), found) << "format " << format;
    }
}

TEST_F(PngKinds, DamagedProfileIsLeftOutWithANote) {
    auto in = picture<QX_Pixel8>(4, 4, false, [](int, int) { return QX_Pixel8{255, 1, 2, 3}; });
    in.colours.icc.bytes = small_profile();
    write("a.png", in);
    EXPECT_TRUE(read("a.png").notes.empty());
    std::string png = bytes("a.png");
    put("a.png", png.replace(png.find("iCCP") + 20, 40, 40, '\xFF'));
    const auto damaged = read("a.png");
    EXPECT_EQ(damaged.notes.size(), 1u);
    EXPECT_TRUE(damaged.colours.icc.bytes.empty());
    EXPECT_TRUE(same_pixels(damaged, in));
}

TEST_F(JpegKinds, GreyIsRead) {
    write_jpeg(folder / "grey.jpg", 1, JCS_GRAYSCALE, Bytes(16, 90));
    EXPECT_EQ(channels(read("grey.jpg"), 3, 0), (List{255, 90, 90, 90}));
}

TEST_F(JpegKinds, DamageIsToldAndDamagedExifMeansNothing) {
    write_jpeg(folder / "a.jpg", 3, JCS_RGB, Bytes(48, 90));
    const auto notes = [&](const std::string& behind_start) {
        put("b.jpg", bytes("a.jpg").insert(2, behind_start));
        return read("b.jpg").notes;
    };
    const auto exif = [&](const std::string& tiff) {
        return std::string("\xFF\xE1\0", 3) + static_cast<char>(tiff.size() + 8) + std::string("Exif\0\0", 6) + tiff;
    };
    // One entry: tag 0x0112, type 3, count 1, the value.
    const std::string big("MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0", 22);
    const std::string little("II\x2A\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x01\0\0\0", 22);
    EXPECT_EQ(notes(""), Names{});
    EXPECT_EQ(notes(exif(little)), Names{}) << "1 is as stored";
    EXPECT_EQ(notes(exif(big)), Names{});
    EXPECT_EQ(read("b.jpg").world->width, 1) << "turned";
    for (std::size_t cut = 0; cut < big.size() - 4; ++cut) {
        EXPECT_EQ(notes(exif(big.substr(0, cut))), Names{}) << cut;
        EXPECT_EQ(read("b.jpg").world->width, 16) << cut;
    }
    EXPECT_EQ(notes(std::string("\xFF\xC4\0\x02", 4) + "garbage").size(), 1u);
}

/// The marker of Adobe tells that 255 is no ink, and that inks may be stored as light and black.
TEST_F(JpegKinds, CmykHasThePolarityOfItsMarker) {
    const List inks[] = {{10, 60, 120, 200}, {255, 0, 128, 0}};
    Bytes row;
    for (int i = 0; i < 32 * 4; ++i) row.push_back(static_cast<std::uint8_t>(inks[i / 64][std::size_t(i % 4)]));
    for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
        write_jpeg(folder / "a.jpg", 4, JCS_CMYK, row, 16, false, stored);
        std::string file = bytes("a.jpg");
        const auto marker = file.find("\xFF\xEE");
        ASSERT_EQ(file.substr(marker + 4, 5), "Adobe");
        put("b.jpg", file.erase(marker, 16));
        for (const char* name : {"a.jpg", "b.jpg"}) {
            if (stored == JCS_YCCK && name[0] == 'b') continue;  // only the marker tells of it
            const auto in = read_inks(folder / name);
            EXPECT_TRUE(in.cmyk && !in.has_alpha);
            for (const int x : {5, 21}) {  // away from the edge, over which colours run
                const auto found = channels(in, x, 15);
                for (std::size_t i = 0; i < 4; ++i) {
                    const double ink = inks[x / 16][i];
                    ASSERT_NEAR(found[i], name[0] == 'a' ? 255 - ink : ink, 3) << name << stored << " " << x;
                }
            }
        }
    }
}

/// A TIFF of 40 x 20 pixels whose sample s at (x, y) is value(x, y, s).
struct TiffKind {
    const char* name;
    int samples, photometric, extra;  ///< extra: type of the last sample, or -1
    bool apart, tiled;
};
constexpr int kWidth = 40, kHeight = 20;

template <class Sample, class Value>
void write_tiff(const std::string& path, const TiffKind& kind, int format, const Value& value) {
    constexpr int tile = 16;
    TIFF* tiff = new_tiff(path, kWidth, kHeight, static_cast<int>(8 * sizeof(Sample)),
                          {{TIFFTAG_SAMPLESPERPIXEL, kind.samples},
                           {TIFFTAG_SAMPLEFORMAT, format},
                           {TIFFTAG_PHOTOMETRIC, kind.photometric},
                           {TIFFTAG_PLANARCONFIG, kind.apart ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG},
                           // The last strip is a short one.
                           {kind.tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, kind.tiled ? tile : 7}});
    const auto extra = static_cast<std::uint16_t>(kind.extra);
    if (kind.extra >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
    if (kind.tiled) TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
    const int planes = kind.apart ? kind.samples : 1, together = kind.samples / planes;
    const int wide = kind.tiled ? tile : kWidth, high = kind.tiled ? tile : 1;
    for (int plane = 0; plane < planes; ++plane) {
        for (int top = 0; top < kHeight; top += high) {
            for (int left = 0; left < kWidth; left += wide) {
                std::vector<Sample> block;
                for (int i = 0; i < wide * high * together; ++i) {
                    const int x = left + i / together % wide, y = top + i / together / wide;
                    block.push_back(static_cast<Sample>(value(x, y, plane + i % together)));
                }
                const auto x = std::uint32_t(left), y = std::uint32_t(top);
                if (kind.tiled) TIFFWriteTile(tiff, block.data(), x, y, 0, std::uint16_t(plane));
                if (!kind.tiled) TIFFWriteScanline(tiff, block.data(), y, std::uint16_t(plane));
            }
        }
    }
    TIFFClose(tiff);
}

TEST_F(TiffKinds, LayoutsGiveTheSamePicture) {
    const auto value = [](int x, int y, int s) { return 5 * x + 2 * y + s + 1; };  // 1 to 238
    constexpr int rgb = PHOTOMETRIC_RGB, black = PHOTOMETRIC_MINISBLACK, white = PHOTOMETRIC_MINISWHITE;
    const TiffKind kinds[] = {
        {"strips", 3, rgb, -1, false, false},
        {"tiles", 3, rgb, -1, false, true},
        {"planes", 4, rgb, EXTRASAMPLE_UNASSALPHA, true, false},
        {"tiled planes", 4, rgb, EXTRASAMPLE_UNASSALPHA, true, true},
        {"unknown extra", 4, rgb, EXTRASAMPLE_UNSPECIFIED, false, false},
        {"grey alpha", 2, black, EXTRASAMPLE_UNASSALPHA, false, false},
        {"inverse grey", 1, white, -1, false, true},
        {"inverse grey alpha", 2, white, EXTRASAMPLE_UNASSALPHA, false, false},
        {"inverse grey alpha planes", 2, white, EXTRASAMPLE_UNASSALPHA, true, true},
    };
    for (const TiffKind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        write_tiff<std::uint8_t>(folder / "k.tif", kind, SAMPLEFORMAT_UINT, value);
        const auto picture = read("k.tif");
        const bool grey = kind.photometric != rgb, alpha = kind.extra == EXTRASAMPLE_UNASSALPHA;
        EXPECT_EQ(picture.has_alpha, alpha);
        for (int i = 0; i < kWidth * kHeight; ++i) {
            const int x = i % kWidth, y = i / kWidth;
            List expected{alpha ? double(value(x, y, grey ? 1 : 3)) : 255};
            for (int s = 0; s < 3; ++s) {
                const int v = value(x, y, grey ? 0 : s);
                expected.push_back(kind.photometric == white ? 255 - v : v);
            }
            ASSERT_EQ(channels(picture, x, y), expected) << x << "," << y;
        }
    }
}

TEST_F(TiffKinds, CmykGivesInksInTheOrderOfTheirMemory) {
    const auto value = [](int x, int y, int s) { return 5 * x + 2 * y + s + 1; };
    const auto value16 = [&](int x, int y, int s) { return 257 * value(x, y, s); };
    constexpr int inks = PHOTOMETRIC_SEPARATED;
    const TiffKind kinds[] = {
        {"strips", 4, inks, -1, false, false},
        {"tiles", 4, inks, -1, false, true},
        {"planes", 4, inks, -1, true, false},
        {"tiled planes", 4, inks, -1, true, true},
        {"alpha", 5, inks, EXTRASAMPLE_UNASSALPHA, false, false},
        {"unknown extra", 5, inks, EXTRASAMPLE_UNSPECIFIED, true, true},
    };
    for (const TiffKind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        write_tiff<std::uint8_t>(folder / "a.tif", kind, SAMPLEFORMAT_UINT, value);
        write_tiff<std::uint16_t>(folder / "b.tif", kind, SAMPLEFORMAT_UINT, value16);
        const auto eight = read_inks(folder / "a.tif"), sixteen = read_inks(folder / "b.tif");
        EXPECT_TRUE(eight.cmyk && sixteen.cmyk && !eight.has_alpha && !sixteen.has_alpha && !sixteen.carried);
        EXPECT_EQ(eight.notes, kind.samples == 4     ? Names{}
                               : kind.name[0] == 'a' ? Names{"its alpha is left out, CMYK is read without"}
                                                     : Names{"its further channels are left out"});
        for (int i = 0; i < kWidth * kHeight; ++i) {
            const int x = i % kWidth, y = i / kWidth;
            for (int s = 0; s < 4; ++s) {
                ASSERT_EQ(channels(eight, x, y)[std::size_t(s)], value(x, y, s)) << x << "," << y;
                ASSERT_EQ(channels(sixteen, x, y)[std::size_t(s)], std::lround(value(x, y, s) * 32768 / 255.0)) << i;
            }
        }
        EXPECT_EQ(fault("b.tif"), folder / "b.tif" + ": " + kCmykIsUnknown);
        EXPECT_THROW(write("c.tif", eight), Failure);
    }
    write_tiff<std::uint8_t>(folder / "a.tif", {"", 5, inks, EXTRASAMPLE_ASSOCALPHA, false, false}, SAMPLEFORMAT_UINT,
                             value);
    EXPECT_THROW(read_inks(folder / "a.tif"), Failure);
    write_tiff<float>(folder / "a.tif", kinds[0], SAMPLEFORMAT_IEEEFP, value);
    EXPECT_THROW(read_inks(folder / "a.tif"), Failure);
}

TEST_F(TiffKinds, FurtherChannelsAndPagesAreTold) {
    const auto value = [](int x, int, int) { return x; };
    const auto notes = [&](int samples, int extra) {
        write_tiff<std::uint8_t>(folder / "k.tif", {"", samples, PHOTOMETRIC_RGB, extra, false, false},
                                 SAMPLEFORMAT_UINT, value);
        return read("k.tif").notes;
    };
    EXPECT_EQ(notes(4, EXTRASAMPLE_UNASSALPHA), Names{});
    EXPECT_EQ(notes(4, EXTRASAMPLE_UNSPECIFIED), Names{"its further channels are left out"});
    TIFF* tiff = TIFFOpen((folder / "k.tif").c_str(), "a");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFWriteScanline(tiff, const_cast<char*>("page"), 0, 0);
    TIFFClose(tiff);
    EXPECT_EQ(read("k.tif").notes, (Names{"its further channels are left out", "only its first page is used"}));
}

TEST_F(TiffKinds, PalettesAreRounded) {
    for (const int full : {65535, 255}) {  // one of 8 bits is taken as it is
        std::vector<std::uint16_t> map[3];
        for (int i = 0; i < 3 * 256; ++i)
            map[i / 256].push_back(static_cast<std::uint16_t>(i * 7919 * 53 % (full + 1)));
        TIFF* tiff = new_tiff(folder / "p.tif", 256, 1, 8, {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE}});
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
        Bytes row;
        for (int i = 0; i < 256; ++i) row.push_back(static_cast<std::uint8_t>(i));
        TIFFWriteScanline(tiff, row.data(), 0, 0);
        TIFFClose(tiff);
        const auto found = first_row(read("p.tif"));
        for (std::size_t i = 0; i < 3 * 256; ++i) {
            ASSERT_EQ(found[i % 256][1 + i / 256], std::round(map[i / 256][i % 256] * 255.0 / full))
                << full << " " << i;
        }
    }
}

TEST_F(TiffKinds, AssociatedAlphaBecomesStraightAtTheFilesPrecision) {
    const TiffKind kind{"", 4, PHOTOMETRIC_RGB, EXTRASAMPLE_ASSOCALPHA, false, false};
    const auto alpha = [](int x, int y) { return (x + kWidth * y) * 81; };
    write_tiff<std::uint16_t>(folder / "a.tif", kind, SAMPLEFORMAT_UINT,
                              [&](int x, int y, int s) { return alpha(x, y) / (s == 3 ? 1 : s + 2); });
    const auto integers = read("a.tif");
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const int a = alpha(i, 0);
        const auto got = channels(integers, i % kWidth, i / kWidth);
        for (int s = 0; a > 0 && s < 3; ++s) {
            const auto v = std::lround((a / (s + 2)) * 65535.0 / a);
            ASSERT_EQ(got[static_cast<std::size_t>(s) + 1], std::lround(double(v) * 32768 / 65535)) << i;
        }
    }
    EXPECT_EQ(integers.notes, Names{});
    write_tiff<std::uint8_t>(folder / "b.tif", kind, SAMPLEFORMAT_UINT, [](int, int, int s) { return 100 + s % 3; });
    EXPECT_EQ(read("b.tif").notes, Names{"its associated colours above their alpha are cut"});
    const auto real = [](int, int, int s) { return s == 3 ? 0.25f : 0.125f * float(s); };
    write_tiff<float>(folder / "f.tif", kind, SAMPLEFORMAT_IEEEFP, real);
    write_tiff<half>(folder / "h.tif", kind, SAMPLEFORMAT_IEEEFP, real);
    EXPECT_EQ(channels(read("f.tif"), 39, 19), (List{0.25, 0, 0.5, 1}));
    EXPECT_EQ(channels(read("h.tif"), 0, 0), (List{0.25, 0, 0.5, 1}));
}

}  // namespace
