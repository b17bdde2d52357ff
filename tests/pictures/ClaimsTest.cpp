// SPDX-License-Identifier: Apache-2.0
// What a file claims of its size takes no memory before there are pixels.
#include "tests/pictures/Writers.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Claims = InFolder;

/// How much memory a call takes at most beyond what there was, in bytes.
template <class Call> long peak_of(const Call& call) {
    const auto state = [](const std::string& name) {
        const std::string all = contents("/proc/self/status");
        return std::stol(all.substr(all.find(name) + name.size())) * 1024;
    };
    put_contents("/proc/self/clear_refs", "5");  // the peak begins anew
    const long before = state("VmRSS:");
    call();
    return state("VmHWM:") - before;
}

/// Files of some hundred bytes whose headers claim 12000 x 12000 pixels, which are 576 MB and more.
TEST_F(Claims, OfSizeTakeNoMemory) {
    const std::string side("\x2E\xE0", 2), last("\xDF\x2E\0\0", 4);  // 12000, high byte first; 11999, low byte first
    put("a.png", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x2E\xE0\0\0\x2E\xE0\x08\x06\0\0\0\x51\x45\x8C\xF1"
                             "\0\0\x10\0IDAT\x78\x9C\x63\x60",
                             45));
    const auto claim = [&](const char* name, const std::string& behind, std::size_t offset, const std::string& number) {
        write(
            name, 16, 16, [](int x, int y) { return argb(255, x, y, x * y); }, false);
        std::string all = bytes(name);
        for (std::size_t at = 0; (at = all.find(behind, at)) != std::string::npos; at += behind.size()) {
            all.replace(at + behind.size() + offset, number.size(), number);
        }
        put(name, all);
    };
    claim("a.jpg", "\xFF\xC0", 3, side + side);
    claim("a.exr", std::string("Window\0box2i\0", 13), 12, last + last);
    for (const int photometric : {PHOTOMETRIC_RGB, PHOTOMETRIC_YCBCR}) {
        TIFF* tiff = new_tiff(folder / std::to_string(photometric) + ".tif", 12000, 12000, 8,
                              {{TIFFTAG_SAMPLESPERPIXEL, 3},
                               {TIFFTAG_PHOTOMETRIC, photometric},
                               {TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE},
                               {TIFFTAG_ROWSPERSTRIP, 12000}});
        char few[] = "not what the name says";
        TIFFWriteRawStrip(tiff, 0, few, sizeof few);
        TIFFClose(tiff);
    }
    ASSERT_EQ(folder.names().size(), 5u);
    for (const auto& name : folder.names()) {
        EXPECT_LT(peak_of([&] { EXPECT_THROW(read(name), Failure); }), 150'000'000) << name;
    }
}

}  // namespace
