// SPDX-License-Identifier: Apache-2.0
// Pictures that are stored otherwise than they are to be seen, and heads without pixels.
#include "pictures/Carried.h"
#include "tests/pictures/Writers.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Orientation = InFolder;
using Heads = InFolder;

enum Side { top, bottom, left, right };

/// EXIF 2.32, tag 0x0112: the sides that are seen where row 0 and column 0 are stored.
constexpr std::pair<Side, Side> kSides[] = {{top, left}, {top, right}, {bottom, right}, {bottom, left},
                                            {left, top}, {right, top}, {right, bottom}, {left, bottom}};

/// Where a stored pixel is seen in a picture of these sides, which are those that are seen.
std::pair<int, int> seen(int orientation, int column, int row, int width, int height) {
    int x = 0, y = 0;
    const auto place = [&](Side side, int from_it) {
        if (side == top) y = from_it;
        if (side == bottom) y = height - 1 - from_it;
        if (side == left) x = from_it;
        if (side == right) x = width - 1 - from_it;
    };
    place(kSides[orientation - 1].first, row);
    place(kSides[orientation - 1].second, column);
    return {x, y};
}

void set_orientation(const std::string& path, int orientation) {
    TIFF* tiff = TIFFOpen(path.c_str(), "r+");
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
    TIFFRewriteDirectory(tiff);
    TIFFClose(tiff);
}

/// Pixels other than these are noticed at every place.
template <class Pixel> void check_all(const std::string& path, const std::string& folder_name) {
    const Picture stored = read_picture(path, unwatched(), {.orient = false});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(folder_name + " " + std::to_string(orientation));
        set_orientation(path, orientation);
        const Picture turned = read_picture(path);
        EXPECT_TRUE(same_pixels(read_picture(path, unwatched(), {.orient = false}), stored));
        const int width = turned.world->width, height = turned.world->height;
        const bool exchanged = orientation > 4;
        ASSERT_EQ(width, exchanged ? stored.world->height : stored.world->width);
        ASSERT_EQ(height, exchanged ? stored.world->width : stored.world->height);
        EXPECT_EQ(picture_size(path), (PictureSize{width, height}));
        EXPECT_EQ(turned.resolution.x, exchanged ? stored.resolution.y : stored.resolution.x);
        EXPECT_EQ(turned.notes, Names{});
        ASSERT_EQ(turned.carried == nullptr, stored.carried == nullptr);
        const auto check = [&](const QX_World& from, const QX_World& to) {
            each_pixel<Pixel>(from, [&](Pixel& p, int column, int row) {
                const auto [x, y] = seen(orientation, column, row, width, height);
                ASSERT_EQ(std::memcmp(&p, &row_of<Pixel>(to, y)[x], sizeof p), 0) << column << ", " << row;
            });
        };
        check(*stored.world, *turned.world);
        if (stored.carried) check(*stored.carried, *turned.carried);
    }
}

TEST_F(Orientation, EveryPixelLandsWhereItIsToBeSeen) {
    auto small = picture<QX_Pixel8>(131, 70, true, [](int x, int y) { return argb(200 + x % 7, x, y, x * y); });
    small.resolution = {100, 50, Resolution::Unit::inch};
    write("eight.tif", small);
    check_all<QX_Pixel8>(folder / "eight.tif", "8 bits");
    const auto deep = picture<QX_Pixel16>(5, 3, true, [](int x, int y) {
        return QX_Pixel16{std::uint16_t(30000 + x), std::uint16_t(7000 * y), std::uint16_t(3 * x + 1), 99};
    });
    write("sixteen.tif", deep, 16);
    check_all<QX_Pixel16>(folder / "sixteen.tif", "16 bits");
}

/// What the library itself converts, it would also turn in part.
TEST_F(Orientation, ConvertedKindsAreTurnedOnce) {
    Bytes rows;
    for (int i = 0; i < 12; ++i) rows.push_back(static_cast<std::uint8_t>(i));
    TIFF* tiff = new_tiff(folder / "p.tif", 4, 3, 8, {{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE}});
    std::vector<std::uint16_t> ramp(256);
    for (std::size_t i = 0; i < 256; ++i) ramp[i] = static_cast<std::uint16_t>(i * 257);
    TIFFSetField(tiff, TIFFTAG_COLORMAP, ramp.data(), ramp.data(), ramp.data());
    for (std::uint32_t y = 0; y < 3; ++y) TIFFWriteScanline(tiff, rows.data() + 4 * y, y, 0);
    TIFFClose(tiff);
    check_all<QX_Pixel8>(folder / "p.tif", "palette");
}

/// One entry of an Exif block: tag 0x0112, type 3, count 1, the value.
std::string exif_block(int orientation) {
    const std::string tiff = std::string("MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 19) +
                             static_cast<char>(orientation) + std::string("\0\0", 2);
    return std::string("\xFF\xE1\0", 3) + static_cast<char>(tiff.size() + 8) + std::string("Exif\0\0", 6) + tiff;
}

TEST_F(Orientation, OfJpegIsThatOfItsExif) {
    Bytes row;  // dark on its left, light on its right
    for (int i = 0; i < 32 * 3; ++i) row.push_back(i < 48 ? 20 : 220);
    write_jpeg(folder / "a.jpg", 3, JCS_RGB, row, 16);
    put("b.jpg", bytes("a.jpg").insert(2, exif_block(8)));
    const Picture turned = read("b.jpg");
    EXPECT_EQ(picture_size(folder / "b.jpg"), (PictureSize{16, 32}));
    EXPECT_GT(channels(turned, 8, 4)[1], 200) << "the right side is seen at the top";
    EXPECT_LT(channels(turned, 8, 28)[1], 40);
    put("c.jpg", bytes("a.jpg").insert(2, exif_block(9)));
    EXPECT_TRUE(same_pixels(read("c.jpg"), read("a.jpg"))) << "no orientation";
}

/// By the head alone all is told that the whole file tells, but for what the pixels themselves show.
TEST_F(Heads, TellWhatTheFileTells) {
    auto in = picture<QX_Pixel16>(7, 5, true, [](int x, int y) {
        return QX_Pixel16{32768, 5, 6, std::uint16_t(x + y)};
    });
    in.colours.icc.bytes = small_profile();
    in.resolution = {300, 200, Resolution::Unit::inch};
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.exr"}) {
        in.has_alpha = name != "a.jpg";
        write_picture(folder / name, in, 16, {.mark = "mark"});
        const Picture whole = read(name), head = read_picture(folder / name, unwatched(), {.pixels = false});
        EXPECT_EQ(head.world, nullptr) << name;
        EXPECT_EQ(head.in_file.size, (PictureSize{7, 5})) << name;
        EXPECT_EQ(head.in_file.depth, whole.world->Depth()) << name;
        EXPECT_EQ(head.has_alpha, whole.has_alpha) << name;
        EXPECT_EQ(head.associated, whole.associated) << name;
        EXPECT_EQ(head.precision, whole.precision) << name;
        EXPECT_EQ(head.mark, "mark") << name;
        EXPECT_EQ(head.colours.icc.bytes, whole.colours.icc.bytes) << name;
        EXPECT_EQ(head.resolution.x, whole.resolution.x) << name;
        const std::string cut = bytes(name);
        put("cut", cut.substr(0, cut.size() - 4));
        EXPECT_EQ(picture_size(folder / (name == "a.tif" ? name : "cut")), (PictureSize{7, 5})) << name;
    }
}

}  // namespace
