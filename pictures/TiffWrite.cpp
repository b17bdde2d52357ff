// SPDX-License-Identifier: Apache-2.0
// TIFF in RGB of 8 and 16 bits and float, with straight alpha as an extra sample.
#include "pictures/TiffFormat.h"

#include <cstdio>

#include "pictures/Pixels.h"
#include "pictures/Profiles.h"
#include "pictures/Tiff.h"

namespace qx::pictures {
namespace {

/// Above this the offsets of the classic form may not reach.
constexpr std::uint64_t kClassicLimit = 3'900'000'000u;

OutputFile& file_of(thandle_t handle) { return *static_cast<OutputFile*>(handle); }

tmsize_t on_read(thandle_t handle, void* data, tmsize_t bytes) {
    return static_cast<tmsize_t>(std::fread(data, 1, static_cast<std::size_t>(bytes), file_of(handle).stream()));
}
tmsize_t on_write(thandle_t handle, void* data, tmsize_t bytes) {
    return file_of(handle).write(data, static_cast<std::size_t>(bytes)) ? bytes : -1;
}
toff_t on_seek(thandle_t handle, toff_t place, int whence) {
    OutputFile& file = file_of(handle);
    if (whence != SEEK_SET) std::fseek(file.stream(), static_cast<long>(place), whence);
    if (whence == SEEK_SET) file.seek(place);
    return file.tell();
}
int on_close(thandle_t) { return 0; }
toff_t on_size(thandle_t handle) {
    OutputFile& file = file_of(handle);
    const auto place = file.tell();
    std::fseek(file.stream(), 0, SEEK_END);
    const auto size = file.tell();
    file.seek(place);
    return size;
}

template <class Pixel> bool write_rows(TIFF* tiff, const QX_World& world, int samples, Watch& watch) {
    std::vector<QX_ChannelOf<Pixel>> line(static_cast<std::size_t>(world.width * samples));
    for (int y = 0; y < world.height; ++y) {
        watch.must_next_row(y, world.height);
        const auto* row = row_of<Pixel>(world, y);
        auto* to = line.data();
        for (int x = 0; x < world.width; ++x) {
            const Pixel& p = row[x];
            *to++ = p.red;
            *to++ = p.green;
            *to++ = p.blue;
            if (samples == 4) *to++ = p.alpha;
        }
        if (TIFFWriteScanline(tiff, line.data(), static_cast<std::uint32_t>(y), 0) != 1) return false;
    }
    return true;
}

constexpr const char* kPackings[] = {"none", "lzw", "zip", "packbits"};
constexpr std::uint16_t kNumbers[] = {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                      COMPRESSION_PACKBITS};
constexpr int kZip = 2;

/// @return false when a field was not taken: without it the file would mean something else
bool set_fields(TIFF* tiff, const Picture& picture, int samples, const WriteOptions& options) {
    bool all = true;
    const auto set = [&](std::uint32_t tag, auto... values) { all = TIFFSetField(tiff, tag, values...) == 1 && all; };
    const int depth = picture.world->Depth();
    set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.world->width));
    set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.world->height));
    set(TIFFTAG_BITSPERSAMPLE, depth);
    set(TIFFTAG_SAMPLEFORMAT, depth == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    set(TIFFTAG_SAMPLESPERPIXEL, samples);
    set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const std::uint16_t straight_alpha = EXTRASAMPLE_UNASSALPHA;
    if (samples == 4) {
        set(TIFFTAG_EXTRASAMPLES, 1, &straight_alpha);
        std::uint16_t count = 0, *types = nullptr;  // that there is no memory for it the library does not tell
        all = TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &types) == 1 && types != nullptr && all;
    }
    const std::uint16_t packing = kNumbers[options.packing.value_or(kZip)];
    set(TIFFTAG_COMPRESSION, packing);
    const bool predicts = packing == COMPRESSION_LZW || packing == COMPRESSION_ADOBE_DEFLATE;
    if (predicts) set(TIFFTAG_PREDICTOR, depth == 32 ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    if (!options.mark.empty()) set(TIFFTAG_SOFTWARE, (kMarkKey + (" " + options.mark)).c_str());
    set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    const auto* icc = profile_for(tiff_format(), picture.colours);
    if (icc != nullptr) set(TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(icc->size()), icc->data());
    using Unit = Resolution::Unit;
    const Unit own = picture.resolution.unit;
    const Resolution r = own == Unit::metre ? picture.resolution.in(Unit::centimetre) : picture.resolution;
    if (!(r.x > 0 && r.y > 0)) return all;
    const int unit = r.unit == Unit::inch ? RESUNIT_INCH : r.unit == Unit::none ? RESUNIT_NONE : RESUNIT_CENTIMETER;
    set(TIFFTAG_RESOLUTIONUNIT, unit);
    set(TIFFTAG_XRESOLUTION, r.x);
    set(TIFFTAG_YRESOLUTION, r.y);
    return all;
}

bool write_all(TiffHandle& handle, const Picture& picture, int samples, const WriteOptions& options, Watch& watch) {
    TIFF* const tiff = handle.tiff;
    const QX_World& world = *picture.world;
    if (!set_fields(tiff, picture, samples, options)) {
        handle.abandon();
        return false;
    }
    const bool rows =
        with_pixel_of(world, [&]<class Pixel>() { return write_rows<Pixel>(tiff, world, samples, watch); });
    return rows && TIFFFlush(tiff) == 1;
}

}  // namespace

void write_tiff(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch) {
    const auto pixels =
        static_cast<std::uint64_t>(picture.world->width) * static_cast<std::uint64_t>(picture.world->height);
    const bool big = pixels * picture.world->PixelSize() > kClassicLimit;
    TiffHandle handle;
    handle.tiff = TIFFClientOpenExt(file.path().c_str(), big ? "w8" : "w", &file, on_read, on_write, on_seek, on_close,
                                    on_size, nullptr, nullptr, handle.options());
    const bool done = handle.tiff != nullptr && write_all(handle, picture, with_alpha ? 4 : 3, options, watch);
    handle.close();
    file.check();
    handle.check_memory();
    if (!done && memory_ran_out()) throw std::bad_alloc();
    if (!done) throw Failure(file.path(), std::string("could not be written: ") + handle.error());
}

const Format& tiff_format() {
    static const Format format{
        "TIFF",
        {std::string("II*\0", 4), std::string("MM\0*", 4), std::string("II+\0", 4), std::string("MM\0+", 4)},
        {"tif", "tiff"},
        {8, 16, 32},
        true,
        false,
        kMostIccBytes,
        read_tiff,
        write_tiff,
        nullptr,
        kPackings};
    return format;
}

}  // namespace qx::pictures
