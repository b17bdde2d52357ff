// SPDX-License-Identifier: Apache-2.0
// Pictures by FFmpeg's decoders. Values of few bits become those of 8 or 16 by the nearest; the libraries would repeat
// bits or leave them out.
#include "pictures/movie/Still.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <vector>

#include "pictures/movie/Colours.h"

namespace qx::movie {
namespace {

AVCodecID codec_of(StillKind kind) {
    constexpr AVCodecID codecs[] = {AV_CODEC_ID_BMP, AV_CODEC_ID_GIF, AV_CODEC_ID_WEBP, AV_CODEC_ID_TARGA,
                                    AV_CODEC_ID_DPX};
    return codecs[static_cast<int>(kind)];
}

/// `value` of so many bits, in as many as a channel of `Value` has.
template <class Value> Value widened(std::uint32_t value, int bits) {
    const std::uint64_t most = (std::uint64_t{1} << bits) - 1;
    return static_cast<Value>((value * std::uint64_t{std::numeric_limits<Value>::max()} + most / 2) / most);
}

/// Of numbers 0xAARRGGBB.
bool some_is_clear(const std::uint8_t* colours, int count) {
    for (int i = 0; i < count; ++i) {
        std::uint32_t colour = 0;
        std::memcpy(&colour, colours + 4 * std::ptrdiff_t{i}, sizeof colour);
        if (colour >> 24 != 0xFF) return true;
    }
    return false;
}

}  // namespace

DecodedStill::DecodedStill(StillKind kind, const unsigned char* bytes, std::int64_t count, std::int64_t most_bytes) {
    open_decoder(codec_of(kind), most_bytes / 4);
    decode(bytes, count);
    const AVPixFmtDescriptor& kind_of_pixels = described(frame_->format);
    facts.width = frame_->width;
    facts.height = frame_->height;
    facts.depth = kind_of_pixels.comp[0].depth > 8 ? 16 : 8;
    facts.has_alpha = (kind_of_pixels.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    if (frame_->format == AV_PIX_FMT_PAL8) facts.has_alpha = some_is_clear(frame_->data[1], AVPALETTE_COUNT);
    if (kind == StillKind::gif && frame_->format == AV_PIX_FMT_BGRA) facts.has_alpha = some_pixel_is_clear();
    if ((kind_of_pixels.flags & AV_PIX_FMT_FLAG_FLOAT) != 0) throw Failure("floats of this kind are not known");
    if (kind == StillKind::webp && code_of_matrix(*frame_) == AVCOL_SPC_UNSPECIFIED)
        frame_->colorspace = AVCOL_SPC_SMPTE170M;  // by its definition
    const AVFrameSideData* profile = av_frame_get_side_data(frame_.get(), AV_FRAME_DATA_ICC_PROFILE);
    if (profile != nullptr) {
        facts.icc = profile->data;
        facts.icc_bytes = static_cast<std::int64_t>(profile->size);
    }
}

void DecodedStill::read(unsigned char* pixels, std::ptrdiff_t rowbytes) {
    const AVPixFmtDescriptor& kind = described(frame_->format);
    const bool is_luma = is_planes(frame_->format) && kind.nb_components >= 3;
    if (is_luma) return read_converted(pixels, rowbytes);
    for (int y = 0; y < frame_->height; ++y, pixels += rowbytes) {
        if (facts.depth == 8) {
            read_row<std::uint8_t>(kind, y, pixels);
        } else {
            read_row<std::uint16_t>(kind, y, pixels);
        }
    }
}

void DecodedStill::open_decoder(AVCodecID id, std::int64_t most_pixels) {
    const AVCodec* codec = avcodec_find_decoder(id);
    if (codec == nullptr) throw Failure(std::string("FFmpeg has no decoder for ") + avcodec_get_name(id));
    codec_.reset(made(avcodec_alloc_context3(codec)));
    codec_->max_pixels = most_pixels;
    codec_->thread_count = 1;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT;
    codec_->err_recognition = AV_EF_EXPLODE;
    must(avcodec_open2(codec_.get(), codec, nullptr), "decoder");
}

/// GIF has a place for clear pixels, whether there are any or not.
bool DecodedStill::some_pixel_is_clear() const {
    for (int y = 0; y < frame_->height; ++y) {
        const std::uint8_t* row = frame_->data[0] + std::ptrdiff_t{y} * frame_->linesize[0];
        if (some_is_clear(row, frame_->width)) return true;
    }
    return false;
}

/// The whole file is one packet.
void DecodedStill::decode(const unsigned char* bytes, std::int64_t count) {
    if (count > INT_MAX - AV_INPUT_BUFFER_PADDING_SIZE) throw Failure("the file is too large");
    Packet packet(made(av_packet_alloc()));
    must(av_new_packet(packet.get(), static_cast<int>(count)), "packet");
    std::memcpy(packet->data, bytes, static_cast<std::size_t>(count));
    packet->flags |= AV_PKT_FLAG_KEY;
    frame_.reset(made(av_frame_alloc()));
    int code = avcodec_send_packet(codec_.get(), packet.get());
    if (code >= 0) code = avcodec_receive_frame(codec_.get(), frame_.get());
    if (code == AVERROR(EAGAIN)) {
        must(avcodec_send_packet(codec_.get(), nullptr), "decoder");
        code = avcodec_receive_frame(codec_.get(), frame_.get());
    }
    must_have_had_memory();
    if (code == AVERROR_PATCHWELCOME) throw Failure("this kind is not supported");
    must(code < 0 && code != AVERROR(ENOMEM) ? AVERROR_INVALIDDATA : code, "damaged or cut short");
    if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0)
        throw Failure("damaged or cut short");
}

/// Palettes, greys, and red, green, blue with or without alpha.
template <class Value> void DecodedStill::read_row(const AVPixFmtDescriptor& kind, int y, unsigned char* to) {
    const auto width = static_cast<std::size_t>(frame_->width);
    const bool palette = (kind.flags & AV_PIX_FMT_FLAG_PAL) != 0, alpha = (kind.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const int components = palette ? 1 : kind.nb_components;
    samples_.resize(width);
    for (int c = 0; c < components; ++c) {
        const std::uint8_t* planes[4] = {frame_->data[0], frame_->data[1], frame_->data[2], frame_->data[3]};
        av_read_image_line2(samples_.data(), planes, frame_->linesize, &kind, 0, y, c, frame_->width, 0, 2);
        if (palette) return look_up(to);
        const bool is_alpha = alpha && c == components - 1, is_grey = components < 3 && !is_alpha;
        for (std::size_t x = 0; x < width; ++x) {
            const auto value = widened<Value>(samples_[x], kind.comp[c].depth);
            Value* const pixel = reinterpret_cast<Value*>(to) + 4 * x;
            if (c == 0 && !alpha) pixel[0] = std::numeric_limits<Value>::max();
            if (is_grey) {
                std::fill(pixel + 1, pixel + 4, value);
            } else {
                pixel[is_alpha ? 0 : c + 1] = value;
            }
        }
    }
}

/// Colours of a palette are numbers of 0xAARRGGBB.
void DecodedStill::look_up(unsigned char* to) const {
    for (const std::uint16_t sample : samples_) {
        std::uint32_t colour = 0;
        std::memcpy(&colour, frame_->data[1] + 4 * std::size_t{sample}, sizeof colour);
        for (int shift = 24; shift >= 0; shift -= 8) *to++ = static_cast<unsigned char>(colour >> shift);
    }
}

/// Luma and differences of colours.
void DecodedStill::read_converted(unsigned char* pixels, std::ptrdiff_t rowbytes) {
    if (facts.depth != 8) throw Failure("luma of more than 8 bits is not supported");
    const Scaler scaler = make_scaler(conversion_of(*frame_, AV_PIX_FMT_ARGB));
    Frame converted(made(av_frame_alloc()));
    converted->width = frame_->width;
    converted->height = frame_->height;
    converted->format = AV_PIX_FMT_ARGB;
    must(av_frame_get_buffer(converted.get(), 0), "frame");
    must(sws_scale(scaler.get(), frame_->data, frame_->linesize, 0, frame_->height, converted->data,
                   converted->linesize),
         "conversion");
    for (int y = 0; y < frame_->height; ++y) {
        std::memcpy(pixels + y * rowbytes, converted->data[0] + std::ptrdiff_t{y} * converted->linesize[0],
                    static_cast<std::size_t>(frame_->width) * 4);
    }
}

}  // namespace qx::movie
