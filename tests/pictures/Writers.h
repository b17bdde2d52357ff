// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Files as other programs write them, made through the libraries.
#include <png.h>
#include <tiffio.h>

#include <cstdio>  // before the next header, which needs it

#include <jpeglib.h>

#include "tests/pictures/Support.h"

namespace qx::test {

using Bytes = std::vector<std::uint8_t>;

/// A PNG of one row.
inline void write_png(const std::string& path, std::uint32_t format, std::uint32_t width, const Bytes& pixels,
                      const Bytes& colours = {}) {
    png_image image{nullptr, PNG_IMAGE_VERSION, width, 1, format, 0, png_uint_32(colours.size() / 4), 0, {}};
    ASSERT_NE(png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, colours.data()), 0) << image.message;
}

/// A JPEG whose rows are all the same, stored in the usual way for its space unless told otherwise.
inline void write_jpeg(const std::string& path, int components, J_COLOR_SPACE space, const Bytes& row,
                       JDIMENSION height = 1, bool progressive = false, J_COLOR_SPACE stored = JCS_UNKNOWN) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = static_cast<JDIMENSION>(row.size()) / static_cast<JDIMENSION>(components);
    jpeg.image_height = height;
    jpeg.input_components = components;
    jpeg.in_color_space = space;
    jpeg_set_defaults(&jpeg);
    if (stored != JCS_UNKNOWN) jpeg_set_colorspace(&jpeg, stored);
    jpeg_set_quality(&jpeg, 100, TRUE);
    if (progressive) jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (auto* line = const_cast<JSAMPROW>(row.data()); jpeg.next_scanline < height;)
        jpeg_write_scanlines(&jpeg, &line, 1);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
}

/// A TIFF with these values of tags behind its size and bits.
inline TIFF* new_tiff(const std::string& path, int width, int height, int bits,
                      const std::vector<std::pair<std::uint32_t, int>>& fields) {
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    for (const auto& [tag, value] : fields) TIFFSetField(tiff, tag, value);
    return tiff;
}

}  // namespace qx::test
