// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/AudioCopy.h"

#include "pictures/movie/Demuxer.h"

namespace qx::movie {

AudioCopy::AudioCopy(const char* file, const Ratio& start, AVFormatContext& target)
    : target_(target), source_(open_movie(file)), start_(start) {
    packet_.reset(made(av_packet_alloc()));
    for (unsigned i = 0; i < source_->nb_streams; ++i) {
        AVStream& from = *source_->streams[i];
        AVStream* to = nullptr;
        if (from.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            const bool fits = avformat_query_codec(target.oformat, from.codecpar->codec_id, FF_COMPLIANCE_NORMAL) == 1;
            if (fits) {
                to = made(avformat_new_stream(&target, nullptr));
                must(avcodec_parameters_copy(to->codecpar, from.codecpar), "audio");
                to->codecpar->codec_tag = 0;  // each container has its own
                to->time_base = from.time_base;
                ++taken_;
            } else {
                left_out_.emplace_back(avcodec_get_name(from.codecpar->codec_id));
            }
        }
        if (to == nullptr) from.discard = AVDISCARD_ALL;
        streams_.push_back(to);
    }
}

std::string AudioCopy::note() const {
    if (left_out_.empty()) return "";
    std::string names;
    for (const auto& name : left_out_) names += (names.empty() ? "" : ", ") + name;
    return std::string("its audio (") + names + ") is left out, " + target_.oformat->name + " does not take it";
}

bool AudioCopy::read() {
    while (!ended_) {
        const int code = av_read_frame(source_.get(), packet_.get());
        if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (code < 0) {
            must_have_had_memory();
            ended_ = true;
            break;
        }
        const auto number = static_cast<std::size_t>(packet_->stream_index);
        AVStream* to = number < streams_.size() ? streams_[number] : nullptr;
        if (to == nullptr || packet_->size == 0) {
            av_packet_unref(packet_.get());
            continue;
        }
        const AVRational from_unit = source_->streams[number]->time_base, second{1, 1};
        const std::int64_t start = av_rescale(av_rescale_q(start_.number, second, from_unit), 1, start_.per);
        if (packet_->dts == AV_NOPTS_VALUE) packet_->dts = packet_->pts;
        if (packet_->pts == AV_NOPTS_VALUE) packet_->pts = packet_->dts;
        if (packet_->pts != AV_NOPTS_VALUE) {
            packet_->pts -= start;
            packet_->dts -= start;
        }
        av_packet_rescale_ts(packet_.get(), from_unit, to->time_base);
        packet_->stream_index = to->index;
        packet_->pos = -1;
        return pending_ = true;
    }
    return false;
}

void AudioCopy::write() {
    pending_ = false;
    must(av_interleaved_write_frame(&target_, packet_.get()), "audio");
}

void AudioCopy::write_until(std::int64_t stamp, const AVRational& unit) {
    while (pending_ || read()) {
        const AVRational own = target_.streams[packet_->stream_index]->time_base;
        if (packet_->dts != AV_NOPTS_VALUE && av_compare_ts(packet_->dts, own, stamp, unit) >= 0) return;
        write();
    }
}

void AudioCopy::write_rest() {
    while (pending_ || read()) write();
}

}  // namespace qx::movie
