// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Movies whose packets a test makes itself, and the packets of others.
#include <cstring>
#include <string>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace qx::test {

struct Packed {
    int stream;
    std::int64_t stamp;  ///< in the stream's time base
    std::string bytes;
    std::int64_t duration = 0;
};

/// A stream, as the library's parameters tell it, and its time base.
struct Stream {
    AVCodecID codec;
    AVRational time_base;
    int width = 0, height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    int matrix = AVCOL_SPC_UNSPECIFIED, range = AVCOL_RANGE_UNSPECIFIED;
    int sample_rate = 0;  ///< of audio of one channel
};

/// @return false where the library refuses
inline bool mux(const std::string& path, const std::vector<Stream>& streams, const std::vector<Packed>& packets) {
    AVFormatContext* format = nullptr;
    avformat_alloc_output_context2(&format, nullptr, nullptr, path.c_str());
    for (const Stream& stream : streams) {
        AVStream* made = avformat_new_stream(format, nullptr);
        AVCodecParameters& codec = *made->codecpar;
        codec.codec_type = stream.sample_rate > 0 ? AVMEDIA_TYPE_AUDIO : AVMEDIA_TYPE_VIDEO;
        codec.codec_id = stream.codec;
        codec.width = stream.width;
        codec.height = stream.height;
        codec.format = stream.sample_rate > 0 ? static_cast<int>(AV_SAMPLE_FMT_S16) : static_cast<int>(stream.format);
        codec.color_space = static_cast<AVColorSpace>(stream.matrix);
        codec.color_range = static_cast<AVColorRange>(stream.range);
        codec.codec_tag = stream.codec == AV_CODEC_ID_RAWVIDEO ? avcodec_pix_fmt_to_codec_tag(stream.format) : 0;
        codec.sample_rate = stream.sample_rate;
        if (stream.sample_rate > 0) {
            codec.ch_layout = AV_CHANNEL_LAYOUT_MONO;
            codec.bits_per_coded_sample = 16;
            codec.block_align = 2;
        }
        made->time_base = stream.time_base;
    }
    bool done = avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0;
    done = done && avformat_write_header(format, nullptr) >= 0;
    AVPacket* packet = av_packet_alloc();
    for (const Packed& one : packets) {
        if (!done || av_new_packet(packet, static_cast<int>(one.bytes.size())) < 0) break;
        std::memcpy(packet->data, one.bytes.data(), one.bytes.size());
        packet->pts = packet->dts = one.stamp;
        packet->duration = one.duration;
        packet->stream_index = one.stream;
        packet->flags = AV_PKT_FLAG_KEY;
        const auto number = static_cast<std::size_t>(one.stream);
        av_packet_rescale_ts(packet, streams[number].time_base, format->streams[one.stream]->time_base);
        done = av_interleaved_write_frame(format, packet) >= 0;
    }
    done = done && av_write_trailer(format) >= 0;
    av_packet_free(&packet);
    avio_closep(&format->pb);
    avformat_free_context(format);
    return done;
}

/// The packets of a kind, with their times in seconds.
inline std::vector<std::pair<double, std::string>> packets_of(const std::string& path, AVMediaType kind) {
    std::vector<std::pair<double, std::string>> all;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return all;
    avformat_find_stream_info(format, nullptr);
    AVPacket* packet = av_packet_alloc();
    for (; av_read_frame(format, packet) >= 0; av_packet_unref(packet)) {
        const AVStream& stream = *format->streams[packet->stream_index];
        if (stream.codecpar->codec_type != kind) continue;
        const auto* bytes = reinterpret_cast<const char*>(packet->data);
        all.emplace_back(static_cast<double>(packet->pts) * av_q2d(stream.time_base),
                         std::string(bytes, static_cast<std::size_t>(packet->size)));
    }
    av_packet_free(&packet);
    avformat_close_input(&format);
    return all;
}

}  // namespace qx::test
