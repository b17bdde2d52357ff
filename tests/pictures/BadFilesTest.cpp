// SPDX-License-Identifier: Apache-2.0
// Files that cannot be read or written: a clear fault that names them, and nothing left behind.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <cstdio>  // before the next header, which needs it

#include <jpeglib.h>

#include <filesystem>

#include "pictures/Files.h"
#include "pictures/Tiff.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::contents;
using qx::test::Folder;
using qx::test::put_contents;

std::string fault_of(const std::string& path) {
    try {
        read_picture(path);
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

Picture noise(int width, int height) {
    unsigned state = 1;
    return qx::test::picture<QX_Pixel8>(width, height, false, [=](int, int) mutable {
        state = state * 1664525u + 1013904223u;
        const auto c = [&](int shift) { return static_cast<std::uint8_t>(state >> shift); };
        return QX_Pixel8{255, c(8), c(16), c(24)};
    });
}

const char* const kNames[] = {"a.png", "a.jpg", "a.tif", "a.exr"};

TEST(BadInput, NamesTheFileAndTheFault) {
    const Folder folder;
    put_contents(folder / "empty.png", "");
    put_contents(folder / "text.png", "no picture at all, but long enough to look like one\n");
    put_contents(folder / "short.png", "\x89PNG");
    const struct {
        std::string path, words;
    } cases[] = {{folder / "missing.png", "No such file"},
                 {folder / ".", "is a folder"},
                 {folder / "empty.png", "is empty"},
                 {folder / "text.png", "is no picture of a known format"},
                 {folder / "short.png", "is no picture of a known format"}};
    for (const auto& c : cases) {
        const std::string fault = fault_of(c.path);
        EXPECT_EQ(fault.rfind(c.path + ": ", 0), 0u) << fault;
        EXPECT_NE(fault.find(c.words), std::string::npos) << fault;
    }
}

TEST(BadInput, CutFilesFailAtEveryLength) {
    const Folder folder;
    for (const char* name : kNames) {
        SCOPED_TRACE(name);
        write_picture(folder / name, noise(80, 60), 8);
        const std::string whole = contents(folder / name);
        for (std::size_t part = 1; part <= 20; ++part) {
            put_contents(folder / name, whole.substr(0, whole.size() * part / 21));
            EXPECT_EQ(fault_of(folder / name).rfind(folder / name, 0), 0u) << part;
        }
        put_contents(folder / name, whole.substr(0, whole.size() - 2));
        EXPECT_NE(fault_of(folder / name), "") << "the last two bytes are missing";
    }
}

/// Damage anywhere may go unseen where a format has no checks, but ends in a picture or a fault of ours.
TEST(BadInput, DamagedBytesNeverDoWorseThanAFault) {
    const Folder folder;
    unsigned state = 7;
    const auto random = [&] { return (state = state * 1664525u + 1013904223u) >> 8; };
    for (const char* name : kNames) {
        SCOPED_TRACE(name);
        write_picture(folder / name, noise(40, 30), 8);
        const std::string whole = contents(folder / name);
        for (int round = 0; round < 60; ++round) {
            std::string damaged = whole;
            const std::size_t reach = round % 2 == 0 ? std::min<std::size_t>(400, whole.size()) : whole.size();
            for (int i = 0; i < 4; ++i) damaged[random() % reach] = static_cast<char>(random());
            put_contents(folder / name, damaged);
            static_cast<void>(fault_of(folder / name));
        }
    }
}

/// What a TIFF says of its tiles is judged before there is memory for one.
TEST(BadInput, FalseTilesAreRefused) {
    const Folder folder;
    TIFF* tiff = TIFFOpen((folder / "a.tif").c_str(), "w");
    for (const auto& [tag, value] :
         std::initializer_list<std::pair<std::uint32_t, int>>{{TIFFTAG_IMAGEWIDTH, 40},
                                                              {TIFFTAG_IMAGELENGTH, 20},
                                                              {TIFFTAG_BITSPERSAMPLE, 8},
                                                              {TIFFTAG_SAMPLESPERPIXEL, 1},
                                                              {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                                                              {TIFFTAG_TILEWIDTH, 32768},
                                                              {TIFFTAG_TILELENGTH, 32768}}) {
        TIFFSetField(tiff, tag, value);
    }
    std::uint8_t few[100] = {};
    TIFFWriteRawTile(tiff, 0, few, sizeof few);
    TIFFClose(tiff);
    EXPECT_NE(fault_of(folder / "a.tif").find("far larger than the picture"), std::string::npos)
        << fault_of(folder / "a.tif");
}

/// A TIFF of 4 x 4 pixels without alpha whose names of inks are too few: the library tells of that in two lines, as an
/// error that begins with "Warning", and goes on. Its rows lie at `offset`.
void write_inks(const std::string& path, std::uint32_t offset) {
    const struct {
        std::uint16_t tag, type;
        std::uint32_t count, value;
    } entries[] = {{TIFFTAG_IMAGEWIDTH, TIFF_SHORT, 1, 4},       {TIFFTAG_IMAGELENGTH, TIFF_SHORT, 1, 4},
                   {TIFFTAG_BITSPERSAMPLE, TIFF_SHORT, 1, 8},    {TIFFTAG_COMPRESSION, TIFF_SHORT, 1, COMPRESSION_NONE},
                   {TIFFTAG_PHOTOMETRIC, TIFF_SHORT, 1, 2},      {TIFFTAG_STRIPOFFSETS, TIFF_LONG, 1, offset},
                   {TIFFTAG_SAMPLESPERPIXEL, TIFF_SHORT, 1, 4},  {TIFFTAG_ROWSPERSTRIP, TIFF_SHORT, 1, 4},
                   {TIFFTAG_STRIPBYTECOUNTS, TIFF_SHORT, 1, 64}, {TIFFTAG_INKNAMES, TIFF_ASCII, 2, 'k'}};
    std::string bytes("II*\0\x08\0\0\0\x0A\0", 10);
    for (const auto& entry : entries) bytes.append(reinterpret_cast<const char*>(&entry), sizeof entry);
    put_contents(path, bytes + std::string(4, '\0'));
}

TEST(BadInput, AWarningIsNotTheReason) {
    const Folder folder;
    write_inks(folder / "a.tif", 8);
    TiffHandle handle;
    handle.tiff = TIFFOpenExt((folder / "a.tif").c_str(), "rm", handle.options());
    ASSERT_NE(handle.tiff, nullptr);
    EXPECT_EQ(handle.error(), "");
    EXPECT_EQ(fault_of(folder / "a.tif"), "");
    write_inks(folder / "a.tif", 99999);
    const std::string fault = fault_of(folder / "a.tif"), start = (folder / "a.tif") + ": damaged or cut short TIFF: ";
    EXPECT_EQ(fault.rfind(start, 0), 0u) << fault;
    EXPECT_GT(fault.size(), start.size());
    EXPECT_EQ(fault.find("arning"), std::string::npos) << fault;
}

TEST(BadInput, AMessageIsOneLine) {
    EXPECT_STREQ(Failure("a\nb\x7F.png", "words\r\n\tof a\x1B library").what(), "a b .png: words   of a  library");
    const Folder folder;
    put_contents(folder / "two\nlines.png", "no picture");
    EXPECT_EQ(fault_of(folder / "two\nlines.png"),
              (folder / "two lines.png") + ": is no picture of a known format (PNG, JPEG, TIFF, OpenEXR)");
}

TEST(BadInput, JpegOfCountlessScansIsRefused) {
    const Folder folder;
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* file = std::fopen((folder / "a.jpg").c_str(), "wb");
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = jpeg.image_height = 16;
    jpeg.input_components = 1;
    jpeg.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    JSAMPLE grey[16] = {1, 200, 3};
    for (JSAMPROW row = grey; jpeg.next_scanline < 16;) jpeg_write_scanlines(&jpeg, &row, 1);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
    EXPECT_EQ(fault_of(folder / "a.jpg"), "");
    std::string bytes = contents(folder / "a.jpg");
    const std::string last = bytes.substr(bytes.rfind("\xFF\xDA"), bytes.size() - 2 - bytes.rfind("\xFF\xDA"));
    for (int i = 0; i < 200; ++i) bytes.insert(bytes.size() - 2, last);
    put_contents(folder / "a.jpg", bytes);
    EXPECT_NE(fault_of(folder / "a.jpg").find("more than 100 scans"), std::string::npos) << fault_of(folder / "a.jpg");
}

TEST(BadInput, PipesAreRefusedAtOnce) {
    const Folder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    EXPECT_EQ(fault_of(folder / "pipe.png"), (folder / "pipe.png") + ": is not a regular file");
}

TEST(BadInput, TooLargePicturesAreRefusedBySize) {
    const Folder folder;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 30001;
    image.height = 1;
    image.format = PNG_FORMAT_GRAY;
    const std::vector<std::uint8_t> row(30001, 9);
    ASSERT_NE(png_image_write_to_file(&image, (folder / "wide.png").c_str(), 0, row.data(), 0, nullptr), 0);
    EXPECT_NE(fault_of(folder / "wide.png").find("30001 x 1 pixels: a side has 1 to 30000"), std::string::npos);
    EXPECT_THROW(new_world("big", 30000, 30000, 16), Failure);
}

TEST(BadOutput, LeavesNothingAndKeepsWhatWasThere) {
    const Folder folder;
    const auto picture = noise(20, 20);
    EXPECT_THROW(write_picture(folder / "no/a.png", picture, 8), Failure);
    EXPECT_THROW(write_picture(folder / "a.xyz", picture, 8), Failure);
    EXPECT_THROW(write_picture(folder / "png", picture, 8), Failure);
    std::filesystem::create_directory(folder / "dir.png");
    EXPECT_THROW(write_picture(folder / "dir.png", picture, 8), Failure);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"dir.png"});
}

TEST(BadOutput, WhatIsUnfinishedCanBeRemovedFromOutside) {
    const Folder folder;
    put_contents(folder / "b.png", "old");
    OutputFile done(folder / "a.png"), left(folder / "b.png");
    EXPECT_EQ(folder.names().size(), 3u);
    done.commit();
    remove_unfinished();
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.png", "b.png"}));
    EXPECT_EQ(contents(folder / "b.png"), "old");
}

TEST(BadOutput, ALinkStaysAndItsFileIsReplaced) {
    const Folder folder;
    put_contents(folder / "file.png", "old");
    std::filesystem::permissions(folder / "file.png", std::filesystem::perms::owner_all);
    std::filesystem::create_symlink("file.png", folder / "link.png");
    write_picture(folder / "link.png", noise(8, 8), 8);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_EQ(read_picture(folder / "file.png").world->width, 8);
    EXPECT_EQ(std::filesystem::status(folder / "file.png").permissions(), std::filesystem::perms::owner_all);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"file.png", "link.png"}));
}

}  // namespace
