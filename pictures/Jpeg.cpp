// SPDX-License-Identifier: Apache-2.0
// JPEG, grey, RGB and CMYK. The library leaves by longjmp: what it is called from holds plain variables only.
#include <cstdio>  // before the library's header, which needs it

#include <jpeglib.h>

#include <jerror.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdlib>
#include <new>

#include "pictures/Exif.h"
#include "pictures/Format.h"
#include "pictures/Profiles.h"

namespace qx::pictures {
namespace {

constexpr int kMostScans = 100;  // usual are 10; a scan for each bit of each channel makes some 40
constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr std::size_t kMostProfile = std::size_t{255} * 65519;  // in as many markers as a byte counts

struct Fault {
    jpeg_error_mgr manager;  // first, so that the library's pointer to it is one to this
    std::jmp_buf back;
    char text[JMSG_LENGTH_MAX] = "";
    bool cut_short = false;
    char warning[JMSG_LENGTH_MAX] = "";  ///< the first one
};

Fault& fault_of(j_common_ptr jpeg) { return *reinterpret_cast<Fault*>(jpeg->err); }

void on_error(j_common_ptr jpeg) {
    Fault& fault = fault_of(jpeg);
    fault.manager.format_message(jpeg, fault.text);
    std::longjmp(fault.back, 1);
}

void on_message(j_common_ptr jpeg, int level) {
    if (level >= 0) return;
    Fault& fault = fault_of(jpeg);
    const int code = fault.manager.msg_code;
    if (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER) {  // else the library makes up all that is missing
        fault.cut_short = true;
        std::longjmp(fault.back, 1);
    }
    if (fault.warning[0] == '\0') fault.manager.format_message(jpeg, fault.warning);
}

jpeg_error_mgr* prepare(Fault& fault) {
    jpeg_std_error(&fault.manager);
    fault.manager.error_exit = on_error;
    fault.manager.emit_message = on_message;
    return &fault.manager;
}

/// After a failure. Throws if it came from a want of memory.
void check_memory(const Fault& fault) {
    if (fault.manager.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
}

template <class Calls> bool run(Fault& fault, const Calls& calls) {
    if (setjmp(fault.back) != 0) return false;
    calls();
    return true;
}

/// A file of many scans over a large picture would keep a reader busy for hours, and a signal must stop it.
void watch_scans(j_common_ptr jpeg) {
    const auto* reader = reinterpret_cast<j_decompress_ptr>(jpeg);
    const auto* watch = static_cast<const Watch*>(jpeg->client_data);
    if (reader->input_scan_number <= kMostScans && !watch->stops()) return;
    Fault& fault = fault_of(jpeg);
    std::snprintf(fault.text, sizeof fault.text, "it has more than %d scans", kMostScans);
    std::longjmp(fault.back, 1);
}

class JpegReader {
public:
    JpegReader(InputFile& file, Watch& watch) : file_(file), watch_(watch) { jpeg_.err = prepare(fault_); }
    ~JpegReader() {
        jpeg_destroy_decompress(&jpeg_);
        std::free(profile_);
    }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    Picture read(const ReadOptions& options) {
        checked([this] { begin(); });
        Picture picture;
        picture.cmyk = space() == IccSpace::cmyk;
        read_profile(picture);
        if (picture.cmyk && !options.cmyk) refuse_cmyk(file_.path(), picture);
        read_extras(picture);
        if (!options.pixels) read_facts(picture);
        if (make_room(file_.path(), jpeg_.image_width, jpeg_.image_height, 8, options, watch_, picture)) {
            checked([this, &picture] { read_rows(*picture.world); });
            watch_.must_go_on();
        }
        if (fault_.warning[0] != '\0') picture.notes.push_back(std::string("is damaged in part: ") + fault_.warning);
        return picture;
    }

private:
    IccSpace space() const {
        if (jpeg_.jpeg_color_space == JCS_CMYK || jpeg_.jpeg_color_space == JCS_YCCK) return IccSpace::cmyk;
        return jpeg_.jpeg_color_space == JCS_GRAYSCALE ? IccSpace::grey : IccSpace::rgb;
    }

    void read_profile(Picture& picture) const {
        if (profile_ != nullptr) keep_profile(picture, profile_, profile_bytes_, space());
    }

    void read_extras(Picture& picture) const {
        picture.mark = mark_;
        picture.in_file.orientation = orientation_;
        constexpr Resolution::Unit units[] = {Resolution::Unit::none, Resolution::Unit::inch,
                                              Resolution::Unit::centimetre};
        if (jpeg_.saw_JFIF_marker != 0 && jpeg_.density_unit <= 2) {
            picture.resolution = {double(jpeg_.X_density), double(jpeg_.Y_density), units[jpeg_.density_unit]};
        }
    }

    void read_facts(Picture& picture) const {
        const char* const kind = space() == IccSpace::grey ? "grey" : space() == IccSpace::cmyk ? "inks" : "colours";
        auto& facts = picture.in_file.facts;
        facts.push_back({"samples", std::to_string(jpeg_.num_components) + " of 8 bits, " + kind});
        if (jpeg_.progressive_mode != 0) facts.push_back({"stored in", "scans"});
        if (jpeg_.num_components < 3) return;
        const auto &luma = jpeg_.comp_info[0], &chroma = jpeg_.comp_info[1];
        const int wide = luma.h_samp_factor / chroma.h_samp_factor, high = luma.v_samp_factor / chroma.v_samp_factor;
        facts.push_back({"pixels of a colour sample", std::to_string(wide) + " x " + std::to_string(high)});
    }

    template <class Calls> void checked(const Calls& calls) {
        if (run(fault_, calls)) return;
        watch_.must_go_on();
        if (fault_.cut_short) throw Failure(file_.path(), "damaged or cut short JPEG");
        check_memory(fault_);
        throw Failure(file_.path(), std::string("damaged JPEG: ") + fault_.text);
    }

    void begin() {
        jpeg_create_decompress(&jpeg_);
        jpeg_stdio_src(&jpeg_, file_.stream());
        jpeg_save_markers(&jpeg_, kExifMarker, 0xFFFF);
        jpeg_save_markers(&jpeg_, JPEG_APP0 + 2, 0xFFFF);
        jpeg_save_markers(&jpeg_, JPEG_COM, kMostMark);
        jpeg_read_header(&jpeg_, TRUE);
        for (auto* marker = jpeg_.marker_list; marker != nullptr; marker = marker->next) {
            if (marker->marker == JPEG_COM) keep_mark(reinterpret_cast<const char*>(marker->data), marker->data_length);
            if (marker->marker == kExifMarker) see_exif(marker->data, marker->data_length);
        }
        jpeg_read_icc_profile(&jpeg_, &profile_, &profile_bytes_);
        jpeg_.out_color_space = space() == IccSpace::cmyk ? JCS_CMYK : JCS_EXT_ARGB;  // sets every alpha to 255
    }

    /// Of several blocks the first that turns the picture counts.
    void see_exif(const unsigned char* data, std::size_t bytes) {
        if (orientation_ == 1) orientation_ = exif_orientation(data, bytes);
    }

    /// Of a fixed length, since the library's jumps leave nothing to be freed.
    void keep_mark(const char* words, std::size_t length) {
        const std::string_view comment(words, length), key(kMarkKey);
        if (!comment.starts_with(key) || length <= key.size() || length - key.size() >= sizeof mark_) return;
        std::snprintf(mark_, sizeof mark_, "%.*s", static_cast<int>(length - key.size() - 1), words + key.size() + 1);
    }

    void read_rows(QX_World& world) {
        jpeg_.progress = &scans_;
        jpeg_.client_data = &watch_;
        jpeg_start_decompress(&jpeg_);
        const bool inverse = space() == IccSpace::cmyk && jpeg_.saw_Adobe_marker != 0;  // 255 is no ink then
        while (jpeg_.output_scanline < jpeg_.output_height &&
               watch_.next_row(jpeg_.output_scanline, jpeg_.output_height)) {
            JSAMPROW row = row_of<JSAMPLE>(world, static_cast<int>(jpeg_.output_scanline));
            jpeg_read_scanlines(&jpeg_, &row, 1);
            if (inverse) std::transform(row, row + 4 * world.width, row, [](JSAMPLE v) { return JSAMPLE(255 - v); });
        }
        if (!watch_.stops()) jpeg_finish_decompress(&jpeg_);
    }

    InputFile& file_;
    Watch& watch_;
    Fault fault_;
    jpeg_decompress_struct jpeg_{};
    jpeg_progress_mgr scans_{watch_scans, 0, 0, 0, 0};
    int orientation_ = 1;  ///< as the picture is meant to be shown; the library forgets markers when it is done
    JOCTET* profile_ = nullptr;
    unsigned int profile_bytes_ = 0;
    char mark_[kMostMark] = "";
};

class Writer {
public:
    Writer(OutputFile& file, const Picture& picture, const WriteOptions& options, Watch& watch)
        : file_(file), picture_(picture), watch_(watch), quality_(options.jpeg_quality) {
        if (!options.mark.empty()) comment_ = std::string(kMarkKey) + " " + options.mark;
        jpeg_.err = prepare(fault_);
    }
    ~Writer() { jpeg_destroy_compress(&jpeg_); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void write() {
        const bool done = run(fault_, [this] {
            begin();
            write_rows();
        });
        watch_.must_go_on();
        if (std::ferror(file_.stream()) != 0) file_.commit();  // throws with the system's words
        if (!done) check_memory(fault_);
        if (!done) throw Failure(file_.path(), std::string("could not be written: ") + fault_.text);
    }

private:
    void begin() {
        jpeg_create_compress(&jpeg_);
        jpeg_stdio_dest(&jpeg_, file_.stream());
        jpeg_.image_width = static_cast<JDIMENSION>(picture_.world->width);
        jpeg_.image_height = static_cast<JDIMENSION>(picture_.world->height);
        jpeg_.input_components = 4;
        jpeg_.in_color_space = JCS_EXT_XRGB;
        jpeg_set_defaults(&jpeg_);
        jpeg_set_quality(&jpeg_, quality_, TRUE);
        jpeg_.comp_info[0].h_samp_factor = jpeg_.comp_info[0].v_samp_factor = 1;  // colour as fine as light
        set_resolution();
        jpeg_start_compress(&jpeg_, TRUE);
        const auto* icc = profile_for(jpeg_format(), picture_.colours);
        if (!comment_.empty()) {
            jpeg_write_marker(&jpeg_, JPEG_COM, reinterpret_cast<const JOCTET*>(comment_.data()),
                              static_cast<unsigned>(comment_.size()));
        }
        if (icc != nullptr) jpeg_write_icc_profile(&jpeg_, icc->data(), static_cast<unsigned>(icc->size()));
    }

    void set_resolution() {
        using Unit = Resolution::Unit;
        const Unit own = picture_.resolution.unit;
        const Resolution r = own == Unit::metre ? picture_.resolution.in(Unit::inch) : picture_.resolution.whole();
        if (!(r.x >= 1 && r.y >= 1 && r.x < 65535 && r.y < 65535)) return;
        jpeg_.density_unit = r.unit == Unit::inch ? 1 : r.unit == Unit::centimetre ? 2 : 0;
        jpeg_.X_density = static_cast<UINT16>(std::lround(r.x));
        jpeg_.Y_density = static_cast<UINT16>(std::lround(r.y));
    }

    void write_rows() {
        while (jpeg_.next_scanline < jpeg_.image_height && watch_.next_row(jpeg_.next_scanline, jpeg_.image_height)) {
            JSAMPROW row = row_of<JSAMPLE>(*picture_.world, static_cast<int>(jpeg_.next_scanline));
            jpeg_write_scanlines(&jpeg_, &row, 1);
        }
        if (!watch_.stops()) jpeg_finish_compress(&jpeg_);
    }

    OutputFile& file_;
    const Picture& picture_;
    Watch& watch_;
    const int quality_;
    Fault fault_;
    std::string comment_;
    jpeg_compress_struct jpeg_{};
};

Picture read(InputFile& file, const ReadOptions& options, Watch& watch) {
    return JpegReader(file, watch).read(options);
}

void write(OutputFile& file, const Picture& picture, bool, const WriteOptions& options, Watch& watch) {
    Writer(file, picture, options, watch).write();
}

}  // namespace

const Format& jpeg_format() {
    static const Format format{"JPEG", {"\xFF\xD8\xFF"}, {"jpg", "jpeg"}, {8}, false, false, kMostProfile, read, write};
    return format;
}

}  // namespace qx::pictures
