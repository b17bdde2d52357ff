// SPDX-License-Identifier: Apache-2.0
// PNG of 8 and 16 bits. The library leaves by longjmp: what it is called from holds plain variables only.
#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstring>
#include <iterator>
#include <new>

#include "pictures/Format.h"
#include "pictures/Pixels.h"
#include "pictures/PngColours.h"

namespace qx::pictures {
namespace {

struct Fault {
    char text[160] = "";
    const char* bad_chunks[std::size(kPngColourChunks)] = {};  ///< words on those that cannot be read
    bool short_of_memory = false;                              ///< for something that the library goes on without
};

void on_error(png_structp png, png_const_charp text) {
    std::snprintf(static_cast<Fault*>(png_get_error_ptr(png))->text, sizeof(Fault::text), "%s", text);
    png_longjmp(png, 1);
}
void on_warning(png_structp png, png_const_charp text) {
    Fault& fault = *static_cast<Fault*>(png_get_error_ptr(png));
    if (memory_ran_out()) fault.short_of_memory = true;
    for (std::size_t i = 0; i < std::size(kPngColourChunks); ++i) {
        if (std::strncmp(text, kPngColourChunks[i], 4) != 0) continue;
        const bool damaged = std::strstr(text, "CRC") != nullptr;
        fault.bad_chunks[i] = damaged ? "its checksum is wrong" : "it is too large";
    }
}

/// Runs calls of the library. @return false when it gave up
template <class Calls> bool run(png_structp png, const Calls& calls) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    calls();
    return true;
}

class PngReader {
public:
    PngReader(InputFile& file, Watch& watch)
        : file_(file),
          watch_(watch),
          png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &fault_, on_error, on_warning)) {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    Picture read(const ReadOptions& options) {
        if (info_ == nullptr) throw std::bad_alloc();
        checked([this] { begin(); });
        Picture picture;
        picture.has_alpha = alpha_;
        if (!options.pixels) read_facts(picture);
        if (make_room(file_.path(), width_, height_, depth_, options, watch_, picture)) {
            checked([this, &picture] { read_rows(*picture.world); });
            watch_.must_go_on();
        }
        read_extras(picture);
        return picture;
    }

private:
    template <class Calls> void checked(const Calls& calls) {
        const bool done = run(png_, calls);
        if (fault_.short_of_memory || (!done && memory_ran_out())) throw std::bad_alloc();
        if (!done) throw Failure(file_.path(), std::string("damaged or cut short PNG: ") + fault_.text);
    }

    /// Header, and everything brought to alpha, red, green, blue of 8 or 16 bits.
    void begin() {
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // sizes are judged by us, with their own text
        for (const char* name : kPngColourChunks) {
            png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_ALWAYS, reinterpret_cast<png_const_bytep>(name), 1);
        }
        png_init_io(png_, file_.stream());
        png_read_info(png_, info_);
        width_ = png_get_image_width(png_, info_);
        height_ = png_get_image_height(png_, info_);
        depth_ = png_get_bit_depth(png_, info_) == 16 ? 16 : 8;
        grey_ = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) == 0;
        const bool key = png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        alpha_ = key || (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0;
        png_set_expand(png_);
        png_set_gray_to_rgb(png_);
        if (alpha_) {
            png_set_swap_alpha(png_);
        } else {
            png_set_add_alpha(png_, 0xFFFF, PNG_FILLER_BEFORE);
        }
        if (depth_ == 16) png_set_swap(png_);
    }

    void read_rows(QX_World& world) {
        const int passes = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        for (int pass = 0; pass < passes; ++pass) {
            for (int y = 0; y < world.height && watch_.next_row(pass * world.height + y, passes * world.height); ++y) {
                png_read_row(png_, row_of<png_byte>(world, y), nullptr);
            }
        }
        if (!watch_.stops()) png_read_end(png_, info_);
    }

    void read_extras(Picture& picture) {
        read_colours(picture);
        png_textp texts = nullptr;
        const int count = png_get_text(png_, info_, &texts, nullptr);
        const auto* mark =
            std::find_if(texts, texts + count, [](const png_text& t) { return kMarkKey == std::string(t.key); });
        if (mark != texts + count && mark->text != nullptr) picture.mark = mark->text;
        png_uint_32 x = 0, y = 0;
        int unit = 0;
        if (png_get_pHYs(png_, info_, &x, &y, &unit) != 0) {
            const bool metric = unit == PNG_RESOLUTION_METER;
            picture.resolution = {double(x), double(y), metric ? Resolution::Unit::metre : Resolution::Unit::none};
        }
    }

    /// Texts behind the pixels are not looked for.
    void read_facts(Picture& picture) {
        const bool interlaced = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
        const int bits = png_get_bit_depth(png_, info_), channels = png_get_channels(png_, info_);
        const bool palette = png_get_color_type(png_, info_) == PNG_COLOR_TYPE_PALETTE;
        const std::string samples = std::to_string(channels) + " of " + std::to_string(bits) + " bits";
        picture.in_file.facts = {{"samples", samples + (palette ? ", palette" : "")}};
        if (interlaced) picture.in_file.facts.push_back({"stored in", "passes"});
        png_textp texts = nullptr;
        const int count = png_get_text(png_, info_, &texts, nullptr);
        for (int i = 0; i < count; ++i) {
            if (texts[i].text != nullptr) picture.in_file.facts.push_back({texts[i].key, texts[i].text});
        }
    }

    /// Of chunks of a name the first counts, if it stands before the palette and the pixels.
    void read_colours(Picture& picture) {
        png_unknown_chunkp chunks = nullptr;
        const auto count = png_get_unknown_chunks(png_, info_, &chunks);
        for (std::size_t i = 0; i < std::size(kPngColourChunks); ++i) {
            PngChunk found{kPngColourChunks[i], {}, fault_.bad_chunks[i]};
            const auto* chunk = std::find_if(chunks, chunks + count, [&](const png_unknown_chunk& c) {
                return std::memcmp(c.name, found.name, 4) == 0 && c.location == PNG_HAVE_IHDR;
            });
            if (chunk != chunks + count) found.bytes.assign(chunk->data, chunk->data + chunk->size);
            if (chunk != chunks + count || found.fault != nullptr) keep_chunk(picture, found, grey_);
        }
    }

    InputFile& file_;
    Watch& watch_;
    Fault fault_;
    png_structp png_;
    png_infop info_;
    std::uint32_t width_ = 0, height_ = 0;
    int depth_ = 8;
    bool grey_ = false, alpha_ = false;
};

void write_bytes(png_structp png, png_bytep data, std::size_t bytes) {
    if (!static_cast<OutputFile*>(png_get_io_ptr(png))->write(data, bytes)) png_error(png, "write");
}
void flush_nothing(png_structp) {}

class Writer {
public:
    Writer(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch)
        : file_(file),
          picture_(picture),
          colours_(chunks_of(picture.colours)),
          watch_(watch),
          alpha_(with_alpha),
          options_(options),
          png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, &fault_, on_error, on_warning)) {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    }
    ~Writer() { png_destroy_write_struct(&png_, &info_); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void write() {
        if (info_ == nullptr) throw std::bad_alloc();
        const bool done = run(png_, [this] {
            begin();
            write_rows();
        });
        file_.check();
        watch_.must_go_on();
        if (fault_.short_of_memory || (!done && memory_ran_out())) throw std::bad_alloc();
        if (!done) throw Failure(file_.path(), std::string("could not be written: ") + fault_.text);
    }

private:
    void begin() {
        const QX_World& world = *picture_.world;
        png_set_benign_errors(png_, 1);
        png_set_write_fn(png_, &file_, write_bytes, flush_nothing);
        png_set_compression_level(png_, options_.compression);
        png_set_IHDR(png_, info_, png_uint_32(world.width), png_uint_32(world.height), world.Depth(),
                     alpha_ ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        write_resolution();
        write_mark();
        png_write_info_before_PLTE(png_, info_);
        for (const PngChunk& chunk : colours_) {
            png_write_chunk(png_, reinterpret_cast<png_const_bytep>(chunk.name), chunk.bytes.data(),
                            chunk.bytes.size());
        }
        png_write_info(png_, info_);
        if (alpha_) {
            png_set_swap_alpha(png_);
        } else {
            png_set_filler(png_, 0, PNG_FILLER_BEFORE);
        }
        if (world.Depth() == 16) png_set_swap(png_);
    }

    void write_mark() {
        if (options_.mark.empty()) return;
        std::string key = kMarkKey, words = options_.mark;
        png_text text{};
        text.compression = PNG_TEXT_COMPRESSION_NONE;
        text.key = key.data();
        text.text = words.data();
        png_set_text(png_, info_, &text, 1);
    }

    void write_resolution() {
        const Resolution& own = picture_.resolution;
        const bool none = own.unit == Resolution::Unit::none;
        const Resolution r = none ? own.whole() : own.in(Resolution::Unit::metre);
        if (!(r.x > 0 && r.y > 0)) return;
        png_set_pHYs(png_, info_, png_uint_32(std::lround(r.x)), png_uint_32(std::lround(r.y)),
                     none ? PNG_RESOLUTION_UNKNOWN : PNG_RESOLUTION_METER);
    }

    void write_rows() {
        const QX_World& world = *picture_.world;
        for (int y = 0; y < world.height && watch_.next_row(y, world.height); ++y) {
            png_write_row(png_, row_of<png_byte>(world, y));
        }
        if (!watch_.stops()) png_write_end(png_, info_);
    }

    OutputFile& file_;
    const Picture& picture_;
    const std::vector<PngChunk> colours_;
    Watch& watch_;
    bool alpha_;
    const WriteOptions& options_;
    Fault fault_;
    png_structp png_;
    png_infop info_;
};

Picture read(InputFile& file, const ReadOptions& options, Watch& watch) { return PngReader(file, watch).read(options); }

void write(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch) {
    Writer(file, picture, with_alpha, options, watch).write();
}

}  // namespace

const Format& png_format() {
    static const Format format{"PNG", {"\x89PNG\r\n\x1A\n"}, {"png"}, {8, 16}, true, false, kMostIccBytes, read, write};
    return format;
}

}  // namespace qx::pictures
