// SPDX-License-Identifier: Apache-2.0
// TIFF in grey or RGB of 8 and 16 bits, half and float, and CMYK of integers, in strips or tiles, samples together or
// in planes. Other kinds (palette, bilevel, YCbCr) go through the library's own conversion to 8 bits.
#include <Imath/half.h>

#include <algorithm>
#include <memory>
#include <new>

#include "pictures/Format.h"
#include "pictures/Pixels.h"
#include "pictures/Profiles.h"
#include "pictures/Tiff.h"
#include "pictures/TiffFormat.h"

namespace qx::pictures {
namespace {

/// What the directory says about the samples.
struct Layout {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, kind = SAMPLEFORMAT_UINT, photometric = 0, planes = PLANARCONFIG_CONTIG;
    std::uint16_t inks = INKSET_CMYK;
    int alpha = -1;  ///< index of the alpha sample
    bool associated = false;
    bool tiled = false;
    std::uint32_t block_width = 0, block_height = 0;

    bool is_cmyk() const { return photometric == PHOTOMETRIC_SEPARATED && inks == INKSET_CMYK; }
    int colours() const { return is_cmyk() ? 4 : photometric == PHOTOMETRIC_RGB ? 3 : 1; }
    bool is_grey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
    IccSpace space() const { return is_cmyk() ? IccSpace::cmyk : is_grey() ? IccSpace::grey : IccSpace::rgb; }
    bool is_float() const { return kind == SAMPLEFORMAT_IEEEFP; }
    int depth() const { return is_float() ? 32 : bits; }
    bool direct() const {
        const bool integers = kind == SAMPLEFORMAT_UINT && (bits == 8 || bits == 16);
        const bool floats = is_float() && (bits == 16 || bits == 32);
        const bool known = is_grey() || photometric == PHOTOMETRIC_RGB || (is_cmyk() && integers);
        return (integers || floats) && known && samples >= colours();
    }
};

Layout layout_of(TIFF* tiff) {
    Layout l;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &l.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &l.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &l.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &l.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &l.kind);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &l.planes);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &l.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &l.inks);
    if (l.kind == SAMPLEFORMAT_VOID) l.kind = SAMPLEFORMAT_UINT;
    std::uint16_t extras = 0, *types = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extras, &types);
    if (extras > 0 && types == nullptr) throw std::bad_alloc();  // the library had none for them, and went on
    for (int i = 0; i < extras && l.alpha < 0; ++i) {
        if (types[i] == EXTRASAMPLE_UNSPECIFIED) continue;
        l.alpha = l.samples - extras + i;
        l.associated = types[i] == EXTRASAMPLE_ASSOCALPHA;
    }
    l.tiled = TIFFIsTiled(tiff) != 0;
    l.block_width = l.width;
    if (l.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &l.block_width);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &l.block_height);
    } else {
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &l.block_height);
        l.block_height = std::min(l.block_height, l.height);
    }
    return l;
}

// What a file may claim of a strip or a tile before a byte of it is seen: some samples more than the picture needs,
// and a tile that is larger than a small picture.
constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 31, kMostSpare = 16, kLeastBlock = std::uint64_t{1} << 22;

/// A decoded strip or tile. Not cleared, so that a false claim costs no memory.
template <class Sample> struct Block {
    explicit Block(std::size_t n) : size(n), samples(std::make_unique_for_overwrite<Sample[]>(n)) {}
    std::size_t size;
    std::unique_ptr<Sample[]> samples;
};

class TiffReader {
public:
    TiffReader(InputFile& file, Watch& watch) : path_(file.path()), file_bytes_(file.bytes()), watch_(watch) {
        handle_.tiff =
            TIFFOpenExt(file.opened().c_str(), "rm", handle_.options());  // a map of a file that shrinks kills
        if (handle_.tiff == nullptr) fail();
        handle_.check_memory();
        layout_ = layout_of(handle_.tiff);
    }

    Picture read(const ReadOptions& options) {
        Picture picture;
        picture.cmyk = layout_.direct() && layout_.is_cmyk();
        read_profile(picture);
        if (picture.cmyk) begin_cmyk(picture, options.cmyk);
        picture.has_alpha = layout_.alpha >= 0;
        picture.half = layout_.is_float() && layout_.bits == 16;
        picture.associated = layout_.associated;
        read_extras(picture);
        const int depth = layout_.direct() ? layout_.depth() : 8;
        if (!options.pixels) read_facts(picture);
        if (make_room(path_, layout_.width, layout_.height, depth, options, watch_, picture))
            read_pixels(*picture.world);
        handle_.check_memory();
        return picture;
    }

private:
    [[noreturn]] void fail() const {
        if (memory_ran_out()) throw std::bad_alloc();
        const std::string words = handle_.error();
        throw Failure(path_, "damaged or cut short TIFF" + (words.empty() ? "" : ": " + words));
    }

    void read_pixels(QX_World& world) {
        if (!layout_.direct()) {
            read_converted(world);
        } else if (world.Depth() == 8) {
            read_blocks<std::uint8_t, QX_Pixel8>(world);
        } else if (world.Depth() == 16) {
            read_blocks<std::uint16_t, QX_Pixel16>(world);
        } else if (layout_.bits == 16) {
            read_blocks<Imath::half, QX_PixelFloat>(world);
        } else {
            read_blocks<float, QX_PixelFloat>(world);
        }
    }

    /// Full value of a channel in the file's scale.
    template <class Sample> static constexpr auto full() {
        if constexpr (std::is_integral_v<Sample>) {
            return static_cast<Sample>(-1);
        } else {
            return 1.0f;
        }
    }

    template <class Sample, class Pixel> void read_blocks(QX_World& world) {
        if (layout_.block_width == 0 || layout_.block_height == 0) fail();
        const auto bytes = layout_.tiled ? TIFFTileSize64(handle_.tiff) : TIFFStripSize64(handle_.tiff);
        const std::uint64_t together = layout_.planes == PLANARCONFIG_CONTIG ? layout_.samples : 1;
        const std::uint64_t needed = std::uint64_t{layout_.block_width} * layout_.block_height * together;
        const std::uint64_t pixels = std::uint64_t{layout_.width} * layout_.height;
        if (bytes < needed * sizeof(Sample)) fail();
        if (needed > std::min(kMostSamples, pixels * kMostSpare + kLeastBlock)) {
            throw Failure(path_, "damaged TIFF: its strips or tiles are far larger than the picture");
        }
        Block<Sample> block(static_cast<std::size_t>(bytes / sizeof(Sample)));
        for (std::uint32_t top = 0; top < layout_.height; top += layout_.block_height) {
            watch_.must_next_row(top, layout_.height);
            for (std::uint32_t left = 0; left < layout_.width; left += layout_.block_width) {
                for (std::uint16_t plane = 0; plane < layout_.samples / together; ++plane) {
                    read_block(block, left, top, plane);
                    if (left == 0 && plane == 0) fill_rows(world, top, Pixel{full<Sample>(), 0, 0, 0});
                    store_block<Pixel>(block, world, left, top, plane);
                }
            }
        }
    }

    /// What the samples of a row of blocks leave, once the first of them has shown that there are any.
    template <class Pixel> void fill_rows(QX_World& world, std::uint32_t top, const Pixel& pixel) const {
        for (std::uint32_t y = top; y < std::min(top + layout_.block_height, layout_.height); ++y) {
            auto* row = row_of<Pixel>(world, static_cast<int>(y));
            std::fill(row, row + world.width, pixel);
        }
    }

    template <class Sample>
    void read_block(Block<Sample>& block, std::uint32_t left, std::uint32_t top, std::uint16_t plane) {
        const auto room = static_cast<tmsize_t>(block.size * sizeof(Sample));
        tmsize_t got = 0, expected = room;
        if (layout_.tiled) {
            got = TIFFReadEncodedTile(handle_.tiff, TIFFComputeTile(handle_.tiff, left, top, 0, plane),
                                      block.samples.get(), room);
        } else {
            const std::uint32_t rows = std::min(layout_.block_height, layout_.height - top);
            expected = room / static_cast<tmsize_t>(layout_.block_height) * static_cast<tmsize_t>(rows);
            got = TIFFReadEncodedStrip(handle_.tiff, TIFFComputeStrip(handle_.tiff, top, plane), block.samples.get(),
                                       room);
        }
        if (got < expected) fail();
    }

    template <class Pixel, class Sample>
    void store_block(const Block<Sample>& block, QX_World& world, std::uint32_t left, std::uint32_t top, int plane) {
        const bool together = layout_.planes == PLANARCONFIG_CONTIG;
        const int first = together ? 0 : plane, last = together ? layout_.samples - 1 : plane;
        const std::size_t step = together ? layout_.samples : 1;
        const std::uint32_t columns = std::min(layout_.block_width, layout_.width - left);
        const std::uint32_t rows = std::min(layout_.block_height, layout_.height - top);
        for (int sample = first; sample <= last; ++sample) {
            for (std::uint32_t y = 0; y < rows; ++y) {
                const Sample* from =
                    block.samples.get() + std::size_t{y} * layout_.block_width * step + (sample - first);
                auto* to = row_of<Pixel>(world, static_cast<int>(top + y)) + left;
                store_samples(from, step, to, columns, sample);
            }
        }
    }

    template <class Sample, class Pixel>
    void store_samples(const Sample* from, std::size_t step, Pixel* to, std::uint32_t count, int sample) {
        using Channel = QX_ChannelOf<Pixel>;
        Channel Pixel::*const channels[] = {&Pixel::alpha, &Pixel::red, &Pixel::green, &Pixel::blue};
        const auto* const own = layout_.is_cmyk() ? channels : channels + 1;  // of the first sample
        const bool grey = layout_.colours() == 1;
        const bool inverse = layout_.photometric == PHOTOMETRIC_MINISWHITE && sample == 0;
        if (sample != layout_.alpha && sample >= layout_.colours()) return;
        for (std::uint32_t x = 0; x < count; ++x, from += step) {
            auto value = static_cast<Channel>(*from);
            if (inverse) value = static_cast<Channel>(full<Sample>() - value);
            if (sample == layout_.alpha) {
                to[x].alpha = value;
            } else if (grey) {
                to[x].red = to[x].green = to[x].blue = value;
            } else {
                to[x].*own[sample] = value;
            }
        }
    }

    /// The library clears a whole strip or tile before it decodes it: one that the file is too short for is refused. No
    /// form of these packs more than some 1,500 bytes into one; of other compressions there is no such limit.
    void check_backed() const {
        constexpr std::uint64_t most_packed = 4096;
        std::uint16_t packing = COMPRESSION_NONE;
        TIFFGetFieldDefaulted(handle_.tiff, TIFFTAG_COMPRESSION, &packing);
        const bool limited = packing == COMPRESSION_NONE || packing == COMPRESSION_LZW ||
                             packing == COMPRESSION_PACKBITS || packing == COMPRESSION_DEFLATE ||
                             packing == COMPRESSION_ADOBE_DEFLATE;
        const auto bytes = layout_.tiled ? TIFFTileSize64(handle_.tiff) : TIFFStripSize64(handle_.tiff);
        if (limited && bytes / most_packed > file_bytes_) {
            throw Failure(path_, "damaged or cut short TIFF: it is too short for its strips or tiles");
        }
    }

    /// The library cuts a palette of 16 bits to 8. Here it is rounded before, in a form that cutting does not change.
    /// One whose values all fit 8 bits is of 8 bits, for the library too.
    void round_palette() {
        constexpr std::uint32_t full = 65535;
        std::uint16_t* channels[3] = {};
        if (layout_.photometric != PHOTOMETRIC_PALETTE ||
            TIFFGetField(handle_.tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) == 0) {
            return;
        }
        std::vector<std::uint16_t> rounded[3];
        bool fits = true;
        for (int i = 0; i < 3; ++i) {
            for (std::size_t c = 0; c < std::size_t{1} << layout_.bits; ++c) {
                const std::uint32_t value = channels[i][c];
                fits = fits && value < 256;
                rounded[i].push_back(static_cast<std::uint16_t>((value * 255 + full / 2) / full << 8));
            }
        }
        if (fits) return;
        TIFFSetField(handle_.tiff, TIFFTAG_COLORMAP, rounded[0].data(), rounded[1].data(), rounded[2].data());
    }

    void read_converted(QX_World& world) {
        char why[1024] = "";
        const bool cmyk = layout_.photometric == PHOTOMETRIC_SEPARATED;
        const bool integers = layout_.kind == SAMPLEFORMAT_UINT && layout_.bits <= 8;  // others would lose values
        const bool possible = integers && !cmyk && layout_.alpha < 0 && TIFFRGBAImageOK(handle_.tiff, why) != 0;
        if (!possible) throw Failure(path_, "this kind of TIFF is not supported (grey and RGB of 8, 16 bits, float)");
        check_backed();
        round_palette();
        TIFFSetField(handle_.tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);  // some of the turns it makes itself
        const Block<std::uint32_t> raster(std::size_t{layout_.width} * layout_.height);
        if (TIFFReadRGBAImageOriented(handle_.tiff, layout_.width, layout_.height, raster.samples.get(),
                                      ORIENTATION_TOPLEFT, 1) == 0) {
            fail();
        }
        const std::uint32_t* from = raster.samples.get();
        each_pixel<QX_Pixel8>(world, [&](QX_Pixel8& p, int, int) {
            p = {255, static_cast<std::uint8_t>(TIFFGetR(*from)), static_cast<std::uint8_t>(TIFFGetG(*from)),
                 static_cast<std::uint8_t>(TIFFGetB(*from))};
            ++from;
        });
    }

    void read_facts(Picture& picture) {
        constexpr std::pair<std::uint16_t, const char*> packings[] = {
            {COMPRESSION_NONE, "none"},         {COMPRESSION_LZW, "lzw"},   {COMPRESSION_PACKBITS, "packbits"},
            {COMPRESSION_ADOBE_DEFLATE, "zip"}, {COMPRESSION_JPEG, "jpeg"}, {COMPRESSION_DEFLATE, "zip"}};
        std::uint16_t packing = COMPRESSION_NONE;
        TIFFGetFieldDefaulted(handle_.tiff, TIFFTAG_COMPRESSION, &packing);
        const auto* known = std::ranges::find(packings, packing, &std::pair<std::uint16_t, const char*>::first);
        const std::string number = std::to_string(packing);
        picture.in_file.facts = {{"compression", known != std::end(packings) ? known->second : number},
                                 {"stored in", layout_.tiled ? "tiles" : "strips"},
                                 {"samples", std::to_string(layout_.samples) + " of " + std::to_string(layout_.bits) +
                                                 (layout_.is_float() ? " bits, float" : " bits")}};
        constexpr std::pair<std::uint32_t, const char*> texts[] = {{TIFFTAG_IMAGEDESCRIPTION, "description"},
                                                                   {TIFFTAG_MAKE, "make"},
                                                                   {TIFFTAG_MODEL, "model"},
                                                                   {TIFFTAG_SOFTWARE, "software"},
                                                                   {TIFFTAG_DATETIME, "date"},
                                                                   {TIFFTAG_ARTIST, "artist"},
                                                                   {TIFFTAG_COPYRIGHT, "copyright"}};
        for (const auto& [tag, name] : texts) {
            const char* text = nullptr;
            if (TIFFGetField(handle_.tiff, tag, &text) != 0) picture.in_file.facts.push_back({name, text});
        }
    }

    /// Four inks take all of a pixel, so that there is no place for alpha.
    void begin_cmyk(Picture& picture, bool takes_cmyk) {
        if (!takes_cmyk) refuse_cmyk(path_, picture);
        if (layout_.associated) throw Failure(path_, "CMYK with associated alpha is not supported");
        if (layout_.alpha >= 0) picture.notes.emplace_back("its alpha is left out, CMYK is read without");
        has_lost_alpha_ = layout_.alpha >= 0;
        layout_.alpha = -1;
    }

    void read_profile(Picture& picture) {
        std::uint32_t bytes = 0;
        void* profile = nullptr;
        if (TIFFGetField(handle_.tiff, TIFFTAG_ICCPROFILE, &bytes, &profile) != 0) {
            keep_profile(picture, static_cast<const unsigned char*>(profile), bytes, layout_.space());
        }
    }

    void read_extras(Picture& picture) {
        const char* software = nullptr;
        const std::string key = std::string(kMarkKey) + " ";
        if (TIFFGetField(handle_.tiff, TIFFTAG_SOFTWARE, &software) != 0 &&
            std::string_view(software).starts_with(key)) {
            picture.mark = software + key.size();
        }
        float x = 0, y = 0;
        std::uint16_t unit = RESUNIT_INCH;
        TIFFGetFieldDefaulted(handle_.tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
        if (TIFFGetField(handle_.tiff, TIFFTAG_XRESOLUTION, &x) != 0 &&
            TIFFGetField(handle_.tiff, TIFFTAG_YRESOLUTION, &y) != 0) {
            using Unit = Resolution::Unit;
            picture.resolution = {x, y,
                                  unit == RESUNIT_INCH   ? Unit::inch
                                  : unit == RESUNIT_NONE ? Unit::none
                                                         : Unit::centimetre};
        }
        std::uint16_t orientation = ORIENTATION_TOPLEFT;
        TIFFGetFieldDefaulted(handle_.tiff, TIFFTAG_ORIENTATION, &orientation);
        if (orientation >= 1 && orientation <= 8) picture.in_file.orientation = orientation;
        const int alphas = layout_.alpha >= 0 || has_lost_alpha_ ? 1 : 0;
        if (layout_.direct() && layout_.samples > layout_.colours() + alphas) {
            picture.notes.emplace_back("its further channels are left out");
        }
        if (TIFFLastDirectory(handle_.tiff) == 0) picture.notes.emplace_back("only its first page is used");
    }

    const std::string path_;
    const std::uint64_t file_bytes_;
    Watch& watch_;
    TiffHandle handle_;
    Layout layout_;
    bool has_lost_alpha_ = false;
};

}  // namespace

Picture read_tiff(InputFile& file, const ReadOptions& options, Watch& watch) {
    return TiffReader(file, watch).read(options);
}

}  // namespace qx::pictures
