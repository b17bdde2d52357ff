// SPDX-License-Identifier: Apache-2.0
// Files that cannot be read or written: a clear fault that names them, and nothing left behind.
#include <sys/stat.h>

#include "pictures/Files.h"
#include "pictures/Tiff.h"
#include "tests/pictures/Embedding.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using BadInput = InFolder;
using BadOutput = InFolder;

TEST_F(BadInput, NamesTheFileAndTheFault) {
    put("empty.png", "");
    put("text.png", "no picture at all, but long enough to look like one\n");
    put("short.png", "\x89PNG");
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    write_png(folder / "wide.png", PNG_FORMAT_GRAY, 30001, Bytes(30001, 9));
    const std::pair<const char*, const char*> cases[] = {
        {"missing.png", "No such file"},
        {".", "is a folder"},
        {"empty.png", "is empty"},
        {"text.png", "is no picture of a known format"},
        {"short.png", "is no picture of a known format"},
        {"wide.png", "30001 x 1 pixels: a side has 1 to 30000"},
    };
    for (const auto& [name, words] : cases) {
        EXPECT_TRUE(fault(name).starts_with(folder / name + ": " + words)) << fault(name);
    }
    EXPECT_EQ(fault("pipe.png"), folder / "pipe.png" + ": is not a regular file");
    EXPECT_THROW(new_world("big", 30000, 30000, 16), Failure);
}

/// Damage anywhere may go unseen where a format has no checks, but ends in a picture or a fault of ours.
TEST_F(BadInput, CutFilesFailAndDamagedOnesDoNoWorse) {
    std::mt19937 random(7);
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.exr"}) {
        SCOPED_TRACE(name);
        write(name, noise(60, 40));
        const std::string whole = bytes(name);
        for (std::size_t part = 1; part <= 20; ++part) {
            put(name, whole.substr(0, whole.size() * part / 21));
            EXPECT_TRUE(fault(name).starts_with(folder / name)) << part;
        }
        put(name, whole.substr(0, whole.size() - 2));
        EXPECT_NE(fault(name), "") << "the last two bytes are missing";
        for (int round = 0; round < 60; ++round) {
            std::string damaged = whole;
            const std::size_t reach = round % 2 == 0 ? std::min<std::size_t>(400, whole.size()) : whole.size();
            for (int i = 0; i < 4; ++i) damaged[random() % reach] = static_cast<char>(random());
            put(name, damaged);
            static_cast<void>(fault(name));
        }
    }
}

TEST_F(BadInput, DamagedCmykDoesNoWorse) {
    std::mt19937 random(8);
    for (const char* name : {"a.jpg", "a.tif"}) {
        put_embedding(folder / name, IccSpace::cmyk, profile_of("CMYK"));
        const std::string whole = bytes(name);
        for (int round = 0; round < 200; ++round) {
            std::string damaged = whole.substr(0, round % 4 ? whole.size() : random() % whole.size() + 1);
            for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
            put(name, damaged);
            const auto words = fault_of<Failure>([&] { read_inks(folder / name); });
            EXPECT_TRUE(words.empty() || words.starts_with(folder / name));
        }
    }
}

/// What a TIFF says of its tiles is judged before there is memory for one.
TEST_F(BadInput, FalseTilesAreRefused) {
    TIFF* tiff = new_tiff(folder / "a.tif", 40, 20, 8,
                          {{TIFFTAG_SAMPLESPERPIXEL, 1},
                           {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                           {TIFFTAG_TILEWIDTH, 32768},
                           {TIFFTAG_TILELENGTH, 32768}});
    std::uint8_t few[100] = {};
    TIFFWriteRawTile(tiff, 0, few, sizeof few);
    TIFFClose(tiff);
    EXPECT_HOLDS(fault("a.tif"), "far larger than the picture");
}

/// A TIFF of 4 x 4 pixels without alpha whose names of inks are too few: the library tells of that in two lines, as an
/// error that begins with "Warning", and goes on. Its rows lie at `offset`.
std::string inks(std::uint32_t offset) {
    const struct {
        std::uint16_t tag, type;
        std::uint32_t count, value;
    } entries[] = {{TIFFTAG_IMAGEWIDTH, TIFF_SHORT, 1, 4},       {TIFFTAG_IMAGELENGTH, TIFF_SHORT, 1, 4},
                   {TIFFTAG_BITSPERSAMPLE, TIFF_SHORT, 1, 8},    {TIFFTAG_COMPRESSION, TIFF_SHORT, 1, COMPRESSION_NONE},
                   {TIFFTAG_PHOTOMETRIC, TIFF_SHORT, 1, 2},      {TIFFTAG_STRIPOFFSETS, TIFF_LONG, 1, offset},
                   {TIFFTAG_SAMPLESPERPIXEL, TIFF_SHORT, 1, 4},  {TIFFTAG_ROWSPERSTRIP, TIFF_SHORT, 1, 4},
                   {TIFFTAG_STRIPBYTECOUNTS, TIFF_SHORT, 1, 64}, {TIFFTAG_INKNAMES, TIFF_ASCII, 2, 'k'}};
    return std::string("II*\0\x08\0\0\0\x0A\0", 10) +
           std::string(reinterpret_cast<const char*>(entries), sizeof entries) + std::string(4, '\0');
}

TEST_F(BadInput, AWarningIsNotTheReason) {
    put("a.tif", inks(8));
    TiffHandle handle;
    handle.tiff = TIFFOpenExt((folder / "a.tif").c_str(), "rm", handle.options());
    ASSERT_NE(handle.tiff, nullptr);
    EXPECT_EQ(handle.error(), "");
    EXPECT_EQ(fault("a.tif"), "");
    put("a.tif", inks(99999));
    const std::string start = folder / "a.tif" + ": damaged or cut short TIFF: ";
    EXPECT_TRUE(fault("a.tif").starts_with(start) && fault("a.tif").size() > start.size()) << fault("a.tif");
    EXPECT_PRED_FORMAT2(testing::IsNotSubstring, "arning", fault("a.tif"));
}

TEST_F(BadInput, AMessageIsOneLine) {
    EXPECT_STREQ(Failure("a\nb\x7F.png", "words\r\n\tof a\x1B library").what(), "a b .png: words   of a  library");
    put("two\nlines.png", "no picture");
    EXPECT_EQ(fault("two\nlines.png"), folder / "two lines.png" +
                                           ": is no picture of a known format (PNG, JPEG, TIFF, OpenEXR, BMP, GIF, "
                                           "WebP, TGA, DPX, HDR)");
}

TEST_F(BadInput, JpegOfCountlessScansIsRefused) {
    write_jpeg(folder / "a.jpg", 1, JCS_GRAYSCALE, {1, 200, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 16, true);
    EXPECT_EQ(fault("a.jpg"), "");
    std::string jpeg = bytes("a.jpg");
    const std::string last = jpeg.substr(jpeg.rfind("\xFF\xDA"), jpeg.size() - 2 - jpeg.rfind("\xFF\xDA"));
    for (int i = 0; i < 200; ++i) jpeg.insert(jpeg.size() - 2, last);
    put("a.jpg", jpeg);
    EXPECT_HOLDS(fault("a.jpg"), "more than 100 scans");
}

TEST_F(BadOutput, LeavesNothingAndKeepsWhatWasThere) {
    std::filesystem::create_directory(folder / "dir.png");
    for (const char* name : {"no/a.png", "a.xyz", "png", "dir.png"}) {
        EXPECT_THROW(write(name, noise(20, 20)), Failure) << name;
    }
    EXPECT_EQ(folder.names(), Names{"dir.png"});
}

TEST_F(BadOutput, ALinkStaysAndItsFileIsReplaced) {
    namespace fs = std::filesystem;
    put("file.png", "old");
    fs::permissions(folder / "file.png", fs::perms::owner_all);
    fs::create_symlink("file.png", folder / "link.png");
    write("link.png", noise(8, 8));
    EXPECT_TRUE(fs::is_symlink(folder / "link.png"));
    EXPECT_EQ(read("file.png").world->width, 8);
    EXPECT_EQ(fs::status(folder / "file.png").permissions(), fs::perms::owner_all);
    EXPECT_EQ(folder.names(), (Names{"file.png", "link.png"}));
}

}  // namespace
