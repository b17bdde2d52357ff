// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Small files with blocks of bytes in them that the libraries would not write.
#include <zlib.h>

#include <array>

#include "tests/pictures/Writers.h"

namespace qx::test {

inline std::string big_endian(std::size_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift);
    return text;
}

inline std::string png_chunk(const std::string& name, const std::string& data) {
    const std::string summed = name + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(summed.data()), static_cast<uInt>(summed.size()));
    return big_endian(data.size(), 4) + summed + big_endian(sum, 4);
}

inline std::string iccp_chunk(const Bytes& profile) {
    uLongf size = compressBound(static_cast<uLong>(profile.size()));
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, profile.data(), static_cast<uLong>(profile.size()));
    return png_chunk("iCCP", std::string("any name\0\0", 10) + packed.substr(0, size));
}

/// A PNG of one pixel with these chunks behind its header.
inline void put_png(const std::string& path, int colour_type, const std::string& chunks) {
    const bool grey = colour_type == PNG_COLOR_TYPE_GRAY;
    write_png(path, grey ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB, 1, {9, 9, 9});
    std::string file = contents(path);
    file.resize(33);  // the header alone
    uLongf size = 99;
    std::string packed(size, '\0');
    const Bytes row{0, 9, 9, 9};
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, row.data(), grey ? 2 : 4);
    put_contents(path, file + chunks + png_chunk("IDAT", packed.substr(0, size)) + png_chunk("IEND", ""));
}

/// A picture of one pixel of a space with a block in the place of its profile, in the format that the name tells.
inline void put_embedding(const std::string& path, pictures::IccSpace space, const Bytes& block) {
    const auto index = static_cast<std::size_t>(space);  // RGB, grey, CMYK
    const int samples = std::array{3, 1, 4}[index];
    if (path.ends_with("png")) {
        put_png(path, samples == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, iccp_chunk(block));
    } else if (path.ends_with("jpg")) {
        write_jpeg(path, samples, std::array{JCS_RGB, JCS_GRAYSCALE, JCS_CMYK}[index],
                   Bytes(static_cast<std::size_t>(samples), 9));
        const std::string data = std::string("ICC_PROFILE\0\x01\x01", 14) + std::string(block.begin(), block.end());
        put_contents(path, contents(path).insert(2, "\xFF\xE2" + big_endian(data.size() + 2, 2) + data));
    } else {
        const int kind = std::array{PHOTOMETRIC_RGB, PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_SEPARATED}[index];
        TIFF* tiff = new_tiff(path, 1, 1, 8, {{TIFFTAG_SAMPLESPERPIXEL, samples}, {TIFFTAG_PHOTOMETRIC, kind}});
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(block.size()), block.data());
        TIFFWriteScanline(tiff, const_cast<char*>("a row"), 0, 0);
        TIFFClose(tiff);
    }
}

/// The profile of a PNG, as its library sees it.
inline Bytes profile_in_png(const std::string& path) {
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    std::FILE* file = std::fopen(path.c_str(), "rb");
    png_init_io(png, file);
    png_read_info(png, info);
    png_charp name = nullptr;
    png_bytep data = nullptr;
    png_uint_32 size = 0;
    int packing = 0;
    png_get_iCCP(png, info, &name, &packing, &data, &size);
    const Bytes profile(data, data + size);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return profile;
}

}  // namespace qx::test
