// SPDX-License-Identifier: Apache-2.0
// What a file claims of its size takes no memory before there are pixels.
#include <gtest/gtest.h>
#include <tiffio.h>

#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::contents;
using qx::test::Folder;
using qx::test::put_contents;

/// A number of the process's state, in bytes.
long state(const std::string& name) {
    const std::string all = contents("/proc/self/status");
    return std::stol(all.substr(all.find(name) + name.size())) * 1024;
}

/// How much memory a call takes at most beyond what there was.
template <class Call> long peak_of(const Call& call) {
    put_contents("/proc/self/clear_refs", "5");  // the peak begins anew
    const long before = state("VmRSS:");
    call();
    return state("VmHWM:") - before;
}

/// Puts a number of some bytes at every place behind a text.
void claim(std::string& bytes, const std::string& behind, std::size_t offset, const std::string& number) {
    for (std::size_t at = 0; (at = bytes.find(behind, at)) != std::string::npos; at += behind.size()) {
        bytes.replace(at + behind.size() + offset, number.size(), number);
    }
}

/// Files of some hundred bytes whose headers claim 12000 x 12000 pixels, which are 576 MB and more.
TEST(Claims, OfSizeTakeNoMemory) {
    const Folder folder;
    constexpr long most = 150'000'000;
    const Picture small =
        qx::test::picture<QX_Pixel8>(16, 16, false, [](int x, int y) { return qx::test::argb(255, x, y, x * y); });
    const std::string side("\x2E\xE0", 2), last("\xDF\x2E\0\0", 4);  // 12000, high byte first; 11999, low byte first
    std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x2E\xE0\0\0\x2E\xE0\x08\x06\0\0\0\x51\x45\x8C\xF1", 33);
    png += std::string("\0\0\x10\0IDAT\x78\x9C\x63\x60", 12);
    put_contents(folder / "a.png", png);
    write_picture(folder / "a.jpg", small, 8);
    std::string jpeg = contents(folder / "a.jpg");
    claim(jpeg, "\xFF\xC0", 3, side + side);
    put_contents(folder / "a.jpg", jpeg);
    write_picture(folder / "a.exr", small, 8);
    std::string exr = contents(folder / "a.exr");
    claim(exr, std::string("Window\0box2i\0", 13), 12, last + last);
    put_contents(folder / "a.exr", exr);
    for (const auto& [photometric, name] : {std::pair{PHOTOMETRIC_RGB, "rgb.tif"}, {PHOTOMETRIC_YCBCR, "ycbcr.tif"}}) {
        TIFF* tiff = TIFFOpen((folder / name).c_str(), "w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 12000);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 12000);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 12000);
        char few[] = "not what the name says";
        TIFFWriteRawStrip(tiff, 0, few, sizeof few);
        TIFFClose(tiff);
    }
    for (const auto& name : folder.names()) {
        EXPECT_LT(peak_of([&] { EXPECT_THROW(read_picture(folder / name), Failure); }), most) << name;
    }
}

}  // namespace
