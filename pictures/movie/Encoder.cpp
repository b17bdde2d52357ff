// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Encoder.h"

#include <initializer_list>
#include <new>

extern "C" {
#include <libavutil/opt.h>
}

namespace qx::movie {
namespace {

constexpr const char* kQuality = "18";  // of the encoders that have such a scale: hardly to be told from the original

void must(int code, const char* what) {
    if (code >= 0) return;
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(code, text, sizeof text);
    throw Failure(std::string(what) + ": " + text);
}

template <class T> T* made(T* thing) {
    if (thing == nullptr) throw std::bad_alloc();
    return thing;
}

/// The first encoder there is that the container takes.
const AVCodec* encoder_for(const AVOutputFormat& container) {
    for (const char* name : {"libx264", "mpeg4", "libvpx-vp9", "libvpx"}) {
        const AVCodec* codec = avcodec_find_encoder_by_name(name);
        if (codec != nullptr && avformat_query_codec(&container, codec->id, FF_COMPLIANCE_NORMAL) == 1) return codec;
    }
    throw Failure("FFmpeg has no encoder for this kind of movie");
}

}  // namespace

void FreeFormat::operator()(AVFormatContext* format) const {
    avio_closep(&format->pb);
    avformat_free_context(format);
}

Encoder::Encoder(const Settings& settings) {
    av_log_set_level(AV_LOG_QUIET);  // what matters comes back as a code
    AVFormatContext* format = nullptr;
    must(avformat_alloc_output_context2(&format, nullptr, nullptr, settings.name), "container");
    format_.reset(format);
    open_codec(settings);
    open_scaler();
    stream_ = made(avformat_new_stream(format, nullptr));
    stream_->time_base = codec_->time_base;
    stream_->avg_frame_rate = codec_->framerate;
    must(avcodec_parameters_from_context(stream_->codecpar, codec_.get()), "stream");
    const std::string file = std::string("file:") + settings.file;  // a colon in a name tells no protocol
    must(avio_open(&format->pb, file.c_str(), AVIO_FLAG_WRITE), "file");
    must(avformat_write_header(format, nullptr), "head of the file");
}

void Encoder::open_codec(const Settings& settings) {
    const AVCodec* codec = encoder_for(*format_->oformat);
    codec_.reset(made(avcodec_alloc_context3(codec)));
    codec_->width = settings.width;
    codec_->height = settings.height;
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    codec_->framerate = {settings.rate, settings.per};
    codec_->time_base = {settings.per, settings.rate};
    codec_->colorspace = AVCOL_SPC_BT709;
    codec_->color_primaries = static_cast<AVColorPrimaries>(settings.primaries);
    codec_->color_trc = static_cast<AVColorTransferCharacteristic>(settings.transfer);
    codec_->color_range = AVCOL_RANGE_MPEG;
    codec_->bit_rate = std::int64_t{settings.width} * settings.height * 8;
    if (av_opt_set(codec_->priv_data, "crf", kQuality, 0) >= 0) codec_->bit_rate = 0;
    if (format_->oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT;
    format_->flags |= AVFMT_FLAG_BITEXACT;
    must(avcodec_open2(codec_.get(), codec, nullptr), codec->name);
}

void Encoder::open_scaler() {
    frame_.reset(made(av_frame_alloc()));
    frame_->width = codec_->width;
    frame_->height = codec_->height;
    frame_->format = codec_->pix_fmt;
    must(av_frame_get_buffer(frame_.get(), 0), "frame");
    packet_.reset(made(av_packet_alloc()));
    constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_BITEXACT;
    scaler_.reset(made(sws_getContext(codec_->width, codec_->height, AV_PIX_FMT_ARGB, codec_->width, codec_->height,
                                      codec_->pix_fmt, flags, nullptr, nullptr, nullptr)));
    const int* table = sws_getCoefficients(SWS_CS_ITU709);
    constexpr int one = 1 << 16;
    sws_setColorspaceDetails(scaler_.get(), table, 1, table, 0, 0, one, one);
}

void Encoder::add(const unsigned char* pixels, std::ptrdiff_t rowbytes) {
    must(av_frame_make_writable(frame_.get()), "frame");
    const unsigned char* const planes[] = {pixels, nullptr, nullptr, nullptr};
    const int strides[] = {static_cast<int>(rowbytes), 0, 0, 0};
    must(sws_scale(scaler_.get(), planes, strides, 0, codec_->height, frame_->data, frame_->linesize), "conversion");
    frame_->pts = frames_++;
    encode(frame_.get());
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
        must(av_interleaved_write_frame(format_.get(), packet_.get()), "file");
    }
}

void Encoder::finish() {
    encode(nullptr);
    must(av_write_trailer(format_.get()), "end of the file");
    must(avio_closep(&format_->pb), "file");
}

}  // namespace qx::movie
