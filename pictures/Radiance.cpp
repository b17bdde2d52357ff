// SPDX-License-Identifier: Apache-2.0
// Radiance pictures (HDR): light of three mantissas and a common exponent a pixel, whose floats are exact. Of the
// libraries at hand none reads damaged ones to an end.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>

#include "pictures/Format.h"
#include "pictures/Pixels.h"

namespace qx::pictures {
namespace {

using Mantissas = std::array<std::uint8_t, 4>;  // red, green, blue, exponent

/// Value of a mantissa of 1 at an exponent: 1 / 256 at 128.
QX_PixelFloat light_of(const Mantissas& m) {
    if (m[3] == 0) return {1, 0, 0, 0};
    const float unit = std::ldexp(1.0f, int{m[3]} - (128 + 8));
    return {1, float(m[0]) * unit, float(m[1]) * unit, float(m[2]) * unit};
}

class RadianceReader {
public:
    RadianceReader(InputFile& file, Watch& watch) : path_(file.path()), bytes_(file.contents()), watch_(watch) {}

    Picture read(const ReadOptions& options) {
        Picture picture;
        while (!take_line().empty()) take_variable(picture);
        take_line();
        take_resolution(picture);
        if (!make_room(path_, width_, height_, 32, options, watch_, picture)) return picture;
        std::vector<Mantissas> row(static_cast<std::size_t>(width_));
        for (int y = 0; y < height_; ++y) {
            watch_.must_next_row(y, height_);
            read_row(row);
            std::transform(row.begin(), row.end(), row_of<QX_PixelFloat>(*picture.world, y), light_of);
        }
        return picture;
    }

private:
    [[noreturn]] void fail() const { throw Failure(path_, "damaged or cut short HDR"); }

    std::uint8_t take() {
        if (at_ == bytes_.size()) fail();
        return bytes_[at_++];
    }

    /// The next line of the head, into `line_`.
    const std::string& take_line() {
        constexpr std::size_t most = 4096;
        line_.clear();
        for (std::uint8_t byte = take(); byte != '\n'; byte = take()) {
            if (line_.size() == most) fail();
            line_ += static_cast<char>(byte);
        }
        return line_;
    }

    void take_variable(Picture& picture) const {
        constexpr std::string_view format = "FORMAT=", usual = "32-bit_rle_rgbe", exposure = "EXPOSURE=";
        const std::string_view line = line_;
        if (line.starts_with(format) && line.substr(format.size()) != usual)
            throw Failure(path_, "HDR of the kind " + line_.substr(format.size()) + " is not supported");
        if (line.starts_with(exposure)) picture.notes.emplace_back("its exposure is not taken back");
        const auto equals = line_.find('=');
        if (equals != std::string::npos)
            picture.in_file.facts.push_back({line_.substr(0, equals), line_.substr(equals + 1)});
    }

    /// Rows from the top or from the bottom, columns from the left or from the right.
    void take_resolution(Picture& picture) {
        char rows = 0, columns = 0;
        int end = 0;
        const int found = std::sscanf(line_.c_str(), "%cY %d %cX %d%n", &rows, &height_, &columns, &width_, &end);
        if (found != 4 || static_cast<std::size_t>(end) != line_.size()) fail();
        if ((rows != '-' && rows != '+') || (columns != '-' && columns != '+')) fail();
        picture.in_file.orientation = rows == '-' ? (columns == '+' ? 1 : 2) : (columns == '+' ? 4 : 3);
    }

    void read_row(std::span<Mantissas> row) {
        constexpr std::size_t least = 8, most = 32767;  // of rows that are packed by planes
        const bool fits = row.size() >= least && row.size() <= most && bytes_.size() - at_ >= 4;
        const bool planes = fits && bytes_[at_] == 2 && bytes_[at_ + 1] == 2 && bytes_[at_ + 2] < 128;
        if (!planes) return read_pixels(row);
        if (std::size_t{bytes_[at_ + 2]} << 8 != (row.size() & 0xFF00) || bytes_[at_ + 3] != (row.size() & 0xFF))
            fail();
        at_ += 4;
        for (std::size_t plane = 0; plane < 4; ++plane) read_plane(row, plane);
    }

    /// Runs of a byte, and bytes as they are.
    void read_plane(std::span<Mantissas> row, std::size_t plane) {
        for (std::size_t x = 0; x < row.size();) {
            const std::size_t code = take(), count = code > 128 ? code - 128 : code;
            if (count == 0 || count > row.size() - x) fail();
            const std::uint8_t run = code > 128 ? take() : 0;
            for (std::size_t i = 0; i < count; ++i) row[x++][plane] = code > 128 ? run : take();
        }
    }

    /// Pixel by pixel. Mantissas of 1 repeat the pixel before; several in a row are the digits of a number to base 256.
    void read_pixels(std::span<Mantissas> row) {
        constexpr int most_shift = 24;
        int shift = 0;
        for (std::size_t x = 0; x < row.size();) {
            Mantissas pixel{};
            for (auto& byte : pixel) byte = take();
            const bool repeats = pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1;
            if (!repeats) {
                row[x++] = pixel;
                shift = 0;
                continue;
            }
            const std::size_t count = shift > most_shift ? row.size() + 1 : std::size_t{pixel[3]} << shift;
            if (x == 0 || count > row.size() - x) fail();
            std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(x), count, row[x - 1]);
            x += count;
            shift += 8;
        }
    }

    const std::string path_;
    const std::vector<unsigned char> bytes_;
    Watch& watch_;
    std::size_t at_ = 0;
    std::string line_;
    int width_ = 0, height_ = 0;
};

Picture read(InputFile& file, const ReadOptions& options, Watch& watch) {
    return RadianceReader(file, watch).read(options);
}

}  // namespace

const Format& radiance_format() {
    static const Format format{"HDR", {"#?RADIANCE", "#?RGBE"}, {"hdr"}, {}, false, true, 0, read, nullptr};
    return format;
}

}  // namespace qx::pictures
