// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Encoder.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/timecode.h>
}

namespace qx::movie {
namespace {

constexpr const char* kQuality = "18";  // of the encoders that have such a scale: hardly to be told from the original

/// The worst quality of an encoder's scale; those of H.264 and H.265 take what is beyond for their worst.
int worst_quality(const AVCodec& codec) { return std::strncmp(codec.name, "libx26", 6) == 0 ? 51 : 63; }

bool takes(const AVOutputFormat& container, const AVCodec& codec) {
    return avformat_query_codec(&container, codec.id, FF_COMPLIANCE_NORMAL) == 1;
}

/// The one that is asked for, else the first there is that the container takes; streams for pipes are not packed.
const AVCodec* encoder_for(const AVOutputFormat& container, const char* asked) {
    if (asked != nullptr) {
        const AVCodec* codec = avcodec_find_encoder_by_name(asked);
        if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO)
            throw BadChoice(std::string("codec ") + asked + ": FFmpeg has no such encoder of video");
        if (!takes(container, *codec))
            throw BadChoice(std::string("codec ") + asked + ": is none that " + container.name +
                            " holds; the name's ending tells the container, mov and mkv hold most");
        return codec;
    }
    if (std::strcmp(container.name, "nut") == 0) return avcodec_find_encoder(AV_CODEC_ID_RAWVIDEO);
    for (const char* name : {"libx264", "mpeg4", "libvpx-vp9", "libvpx"}) {
        const AVCodec* codec = avcodec_find_encoder_by_name(name);
        if (codec != nullptr && takes(container, *codec)) return codec;
    }
    throw Failure("FFmpeg has no encoder for this kind of movie");
}

const AVCodec* lossless_encoder_for(const AVOutputFormat& container) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_FFV1);
    if (codec == nullptr) throw Failure("FFmpeg has no encoder for lossless movies");
    if (std::strcmp(container.name, "matroska") != 0) throw BadChoice("a lossless movie needs a name that ends in mkv");
    return codec;
}

/// The kind of pixels that is asked for, or a usual one that the encoder takes.
AVPixelFormat pixel_format_for(const AVCodec& codec, const char* asked) {
    const AVPixelFormat wanted = asked != nullptr                   ? av_get_pix_fmt(asked)
                                 : codec.id == AV_CODEC_ID_RAWVIDEO ? AV_PIX_FMT_RGB24
                                                                    : AV_PIX_FMT_YUV420P;
    if (wanted == AV_PIX_FMT_NONE)
        throw BadChoice(std::string("pixel-format ") + asked + ": FFmpeg knows no such kind of pixels");
    if (codec.pix_fmts == nullptr) return wanted;
    std::string known;
    for (const AVPixelFormat* format = codec.pix_fmts; *format != AV_PIX_FMT_NONE; ++format) {
        if (*format == wanted) return wanted;
        known += (known.empty() ? "" : ", ") + std::string(av_get_pix_fmt_name(*format));
    }
    if (asked == nullptr) return codec.pix_fmts[0];
    throw BadChoice(std::string("pixel-format ") + asked + ": " + codec.name + " takes " + known);
}

/// Colours that are stored for several pixels together take sides of so many.
void check_sides(const Settings& settings, AVPixelFormat format) {
    const AVPixFmtDescriptor& pixels = described(format);
    if (settings.width % (1 << pixels.log2_chroma_w) == 0 && settings.height % (1 << pixels.log2_chroma_h) == 0) return;
    throw Failure("frames of " + std::to_string(settings.width) + " x " + std::to_string(settings.height) + ": " +
                  pixels.name + " needs even sides, the pixel-format yuv444p does not");
}

/// JPEG, and the kinds of pixels that are named after it, know no other range.
bool is_always_full(const AVCodec& codec, AVPixelFormat format) {
    return codec.id == AV_CODEC_ID_MJPEG || format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
           format == AV_PIX_FMT_YUVJ444P;
}

AVPixelFormat lossless_format(const Settings& settings) {
    if (settings.depth == 8) return settings.alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR0;
    return settings.alpha ? AV_PIX_FMT_GBRAP16 : AV_PIX_FMT_GBRP16;
}

/// A, R, G, B to B, G, R, A in one plane.
void fill_bytes(const unsigned char* from, unsigned char* to, int count) {
    for (int i = 0; i < 4 * count; i += 4) {
        for (int channel = 0; channel < 4; ++channel) to[i + channel] = from[i + 3 - channel];
    }
}

/// What channels of 16 bits become.
struct Levels {
    std::uint32_t white = 65535;  ///< of 65535
    int zeros = 0;                ///< bits behind it
};

/// On its way to luma the scaler has white at 255 * 256; where it comes to red, green and blue of fewer bits it drops
/// the others, so that they are rounded before.
Levels levels_for(AVPixelFormat format) {
    if (is_planes(format)) return {255 * 256, 0};
    const int bits = std::min(described(format).comp[0].depth, 16);  // floats have 32
    return {(1u << bits) - 1, 16 - bits};
}

/// A, R, G, B of 16 bits to planes of G, B, R and, where there is one, A.
void fill_planes(const unsigned char* from, unsigned char* const planes[4], int count, const Levels& levels) {
    constexpr int places[] = {2, 3, 1, 0};  // of the planes' channels
    constexpr std::uint32_t full = 65535;
    for (int plane = 0; plane < 4; ++plane) {
        if (planes[plane] == nullptr) continue;
        for (int i = 0; i < count; ++i) {
            std::uint16_t value = 0;
            std::memcpy(&value, from + 8 * i + 2 * places[plane], sizeof value);
            value = static_cast<std::uint16_t>(((value * levels.white + full / 2) / full) << levels.zeros);
            std::memcpy(planes[plane] + 2 * i, &value, sizeof value);
        }
    }
}

/// All rows of a frame of red, green and blue.
void fill_rows(const AVFrame& frame, const unsigned char* pixels, std::ptrdiff_t rowbytes, const Levels& levels) {
    for (int y = 0; y < frame.height; ++y, pixels += rowbytes) {
        unsigned char* rows[4];
        for (int i = 0; i < 4; ++i) {
            unsigned char* plane = frame.data[i];
            rows[i] = plane == nullptr ? nullptr : plane + std::ptrdiff_t{y} * frame.linesize[i];
        }
        if (rows[1] == nullptr) {
            fill_bytes(pixels, rows[0], frame.width);
        } else {
            fill_planes(pixels, rows, frame.width, levels);
        }
    }
}

}  // namespace

Encoder::Encoder(const Settings& settings) {
    open_container(settings);
    open_codec(settings);
    open_frame();
    open_stream(settings);
    show_as(settings.showing);
    if (settings.time_code != nullptr) count_from(settings.time_code);
    if (settings.audio != nullptr) {
        audio_.emplace(settings.audio, settings.audio_start, *format_);
        say(audio_->note());
        if (audio_->is_empty()) audio_.reset();
    }
    must(avio_open(&format_->pb, as_file(settings.file).c_str(), AVIO_FLAG_WRITE), "cannot be written");
    must(avformat_write_header(format_.get(), nullptr), "its head cannot be written");
    must_have_had_memory();
}

void Encoder::say(const std::string& note) {
    if (!note_.empty() && !note.empty()) note_ += "; ";
    note_ += note;
}

void Encoder::open_container(const Settings& settings) {
    AVFormatContext* format = nullptr;
    must(avformat_alloc_output_context2(&format, nullptr, nullptr, settings.name), "container");
    format_.reset(format);
    format_->flags |= AVFMT_FLAG_BITEXACT;
}

void Encoder::open_codec(const Settings& settings) {
    const AVCodec* codec =
        settings.lossless ? lossless_encoder_for(*format_->oformat) : encoder_for(*format_->oformat, settings.codec);
    codec_.reset(made(avcodec_alloc_context3(codec)));
    codec_->width = settings.width;
    codec_->height = settings.height;
    codec_->framerate = {settings.rate, settings.per};
    codec_->time_base = {settings.per, settings.rate};
    codec_->color_primaries = static_cast<AVColorPrimaries>(settings.tags.primaries);
    codec_->color_trc = static_cast<AVColorTransferCharacteristic>(settings.tags.transfer);
    if (settings.lossless) {
        depth_ = settings.depth;
        codec_->pix_fmt = lossless_format(settings);
        codec_->colorspace = AVCOL_SPC_RGB;
        codec_->color_range = AVCOL_RANGE_JPEG;
        codec_->gop_size = 1;          // any frame can be read by itself
        constexpr int least_side = 3;  // of frames in slices, whose halves the decoder does not take else
        codec_->level = std::min(settings.width, settings.height) < least_side ? 1 : 3;  // 3 has slices with checksums
    } else {
        codec_->pix_fmt = pixel_format_for(*codec, settings.pixel_format);
        check_sides(settings, codec_->pix_fmt);
        codec_->chroma_sample_location = AVCHROMA_LOC_LEFT;
        // What is unsaid stays so, since readers take the same matrix then.
        const int matrix = usable_matrix(settings.tags.matrix, settings.height);
        const bool unsaid = settings.tags.matrix == AVCOL_SPC_UNSPECIFIED;
        codec_->colorspace = static_cast<AVColorSpace>(unsaid ? AVCOL_SPC_UNSPECIFIED : matrix);
        const bool is_full = settings.tags.range == AVCOL_RANGE_JPEG || is_always_full(*codec, codec_->pix_fmt);
        codec_->color_range = is_full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        set_quality(settings);
        depth_ = settings.depth == 16 && described(codec_->pix_fmt).comp[0].depth > 8 ? 16 : 8;
        scaler_ = make_scaler({settings.width, settings.height, depth_ == 16 ? AV_PIX_FMT_GBRP16 : AV_PIX_FMT_ARGB,
                               codec_->pix_fmt, matrix, codec_->color_range == AVCOL_RANGE_JPEG});
    }
    codec_->sample_aspect_ratio = {static_cast<int>(settings.showing.aspect.number),
                                   static_cast<int>(settings.showing.aspect.per)};
    if (format_->oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT;
    if (codec_->priv_data != nullptr)
        av_opt_set(codec_->priv_data, "x265-params", "log-level=none", 0);  // it writes to standard error by itself
    must(avcodec_open2(codec_.get(), codec, nullptr), std::string(codec->name) + " does not take " +
                                                          std::to_string(settings.width) + " x " +
                                                          std::to_string(settings.height) + " pixels of " +
                                                          described(codec_->pix_fmt).name + " as they are asked for");
    must_have_had_memory();
}

void Encoder::set_quality(const Settings& settings) {
    codec_->bit_rate = settings.bits_a_second;
    if (settings.bits_a_second != 0) return;
    const AVCodec& codec = *codec_->codec;
    const std::string quality = settings.crf < 0 ? kQuality : std::to_string(settings.crf);
    if (settings.crf > worst_quality(codec))
        throw BadChoice("crf " + quality + ": " + codec.name + " takes 0 to " + std::to_string(worst_quality(codec)));
    if (codec_->priv_data != nullptr && av_opt_set(codec_->priv_data, "crf", quality.c_str(), 0) >= 0) return;
    if (settings.crf >= 0) throw BadChoice("crf " + quality + ": " + codec.name + " has no such scale, but a bitrate");
    codec_->bit_rate = std::int64_t{settings.width} * settings.height * 8;
}

void Encoder::open_frame() {
    const auto frame_of = [&](AVPixelFormat format) {
        Frame frame(made(av_frame_alloc()));
        frame->width = codec_->width;
        frame->height = codec_->height;
        frame->format = format;
        must(av_frame_get_buffer(frame.get(), 0), "frame");
        return frame;
    };
    frame_ = frame_of(codec_->pix_fmt);
    if (scaler_ && depth_ == 16) wide_ = frame_of(AV_PIX_FMT_GBRP16);
    packet_.reset(made(av_packet_alloc()));
}

void Encoder::open_stream(const Settings& settings) {
    stream_ = made(avformat_new_stream(format_.get(), nullptr));
    stream_->time_base = codec_->time_base;
    stream_->avg_frame_rate = {settings.rate, settings.per};
    stream_->sample_aspect_ratio = codec_->sample_aspect_ratio;
    must(avcodec_parameters_from_context(stream_->codecpar, codec_.get()), "stream");
}

void Encoder::show_as(const Showing& showing) {
    if (showing.orientation == 1) return;
    const std::string container = format_->oformat->name;
    if (container != "mp4" && container != "mov") {
        say(container + " keeps no orientation, its frames are shown as they are stored");
        return;
    }
    const auto matrix = matrix_of_orientation(showing.orientation, codec_->width, codec_->height);
    std::uint8_t* place = made(av_stream_new_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, sizeof matrix.of));
    std::memcpy(place, matrix.of, sizeof matrix.of);
}

void Encoder::count_from(const char* time_code) {
    const std::string container = format_->oformat->name;
    AVTimecode parsed;
    if (container == "avi" || container == "nut") {
        say(container + " keeps no time code");
    } else if (av_timecode_init_from_string(&parsed, stream_->avg_frame_rate, time_code, nullptr) < 0) {
        say(std::string("the time code ") + time_code + " does not go with its rate, and is left out");
    } else {
        must(av_dict_set(&stream_->metadata, "timecode", time_code, 0), "time code");
    }
}

void Encoder::fill(const unsigned char* pixels, std::ptrdiff_t rowbytes) {
    if (!scaler_) return fill_rows(*frame_, pixels, rowbytes, {});
    const unsigned char* planes[] = {pixels, nullptr, nullptr, nullptr};
    int strides[] = {static_cast<int>(rowbytes), 0, 0, 0};
    if (wide_) {
        fill_rows(*wide_, pixels, rowbytes, levels_for(codec_->pix_fmt));
        std::copy_n(wide_->data, 4, planes);
        std::copy_n(wide_->linesize, 4, strides);
    }
    must(sws_scale(scaler_.get(), planes, strides, 0, codec_->height, frame_->data, frame_->linesize), "conversion");
}

void Encoder::add(const unsigned char* pixels, std::ptrdiff_t rowbytes) {
    must(av_frame_make_writable(frame_.get()), "frame");
    fill(pixels, rowbytes);
    frame_->pts = frames_++;
    if (audio_) audio_->write_until(frame_->pts, codec_->time_base);
    encode(frame_.get());
    must_have_had_memory();
}

void Encoder::encode(const AVFrame* frame) {
    must(avcodec_send_frame(codec_.get(), frame), "encoder");
    for (;;) {
        const int code = avcodec_receive_packet(codec_.get(), packet_.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        must(code, "encoder");
        packet_->duration = 1;
        av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        must(av_interleaved_write_frame(format_.get(), packet_.get()), "cannot be written");
    }
}

void Encoder::finish() {
    encode(nullptr);
    if (audio_) audio_->write_rest();
    must(av_write_trailer(format_.get()), "its end cannot be written");
    must_have_had_memory();
    must(avio_closep(&format_->pb), "cannot be written");
}

}  // namespace qx::movie
