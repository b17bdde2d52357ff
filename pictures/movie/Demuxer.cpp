// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Demuxer.h"

#include <vector>

#include "pictures/movie/Ending.h"

namespace qx::movie {
namespace {

/// Containers of movies, and of sound, which are told apart by what they hold: lists of other files, texts and devices
/// are none.
constexpr const char* kContainers =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpeg,mpegts,mxf,flv,asf,ogg,nut,dv,yuv4mpegpipe,wav,mp3,flac,aac,aiff";

/// Options in the library's form.
class Options {
public:
    Options() = default;
    ~Options() { av_dict_free(&all); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    void set(const char* name, const char* value) { must(av_dict_set(&all, name, value, 0), "options"); }
    AVDictionary* all = nullptr;
};

Input open_input(const char* file) {
    Options options;
    options.set("format_whitelist", kContainers);
    options.set("protocol_whitelist", "file");
    AVFormatContext* format = nullptr;
    const int code = avformat_open_input(&format, as_file(file).c_str(), nullptr, &options.all);
    Input opened(format);
    must_have_had_memory();
    if (code == AVERROR_INVALIDDATA || code == AVERROR(EINVAL) || code == AVERROR_EOF) {
        if (missing_bytes(file).value_or(0) > 0) throw Failure(kNothingLeft);
        throw Failure("is no movie of a known kind, or a damaged one");
    }
    must(code, "cannot be opened");
    return opened;
}

/// The library looks at first packets to tell what the streams are, with decoders of its own.
void find_streams(AVFormatContext& format, std::int64_t most_pixels) {
    std::vector<Options> options(format.nb_streams);
    std::vector<AVDictionary*> lists;
    for (Options& one : options) {
        one.set("max_pixels", std::to_string(most_pixels).c_str());
        one.set("threads", "1");
        lists.push_back(one.all);
    }
    const int code = avformat_find_stream_info(&format, lists.data());
    for (std::size_t i = 0; i < lists.size(); ++i) options[i].all = lists[i];
    must(code, "its streams cannot be told");
}

}  // namespace

Input open_movie(const char* file, std::int64_t most_pixels) {
    Input format = open_input(file);
    find_streams(*format, most_pixels);
    must_have_had_memory();
    return format;
}

Demuxer::Demuxer(const char* file, std::int64_t most_pixels)
    : file_(file), missing_(missing_bytes(file)), format_(open_movie(file, most_pixels)) {
    if (is_cut()) format_->flags |= AVFMT_FLAG_DISCARD_CORRUPT;  // half of a packet, where the file ends
    const int number = av_find_best_stream(format_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (number >= 0) video_ = format_->streams[number];
    if (video_ == nullptr || (video_->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        refuse("has no video");
    }
    const AVCodecParameters& codec = *video_->codecpar;
    const std::string size = std::to_string(codec.width) + " x " + std::to_string(codec.height) + " pixels";
    if (codec.width < 1 || codec.height < 1) refuse("does not tell the size of its frames");
    if (std::int64_t{codec.width} * codec.height > most_pixels) throw Failure("frames of " + size + " are too large");
}

const char* Demuxer::time_code() const {
    const auto told = [](const AVDictionary* words) -> const char* {
        const AVDictionaryEntry* const entry = av_dict_get(words, "timecode", nullptr, 0);
        return entry != nullptr ? entry->value : nullptr;
    };
    if (const char* own = told(video_->metadata)) return own;
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        if (const char* beside = told(format_->streams[i]->metadata)) return beside;
    }
    return told(format_->metadata);
}

bool Demuxer::has_audio() const {
    return av_find_best_stream(format_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) >= 0;
}

void Demuxer::read_video_alone() {
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        AVStream* stream = format_->streams[i];
        stream->discard = stream == video_ ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

bool Demuxer::next(AVPacket* packet) {
    const int code = av_read_frame(format_.get(), packet);
    if (code >= 0) return true;
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    must_have_had_memory();
    if (code != AVERROR_EOF || (format_->pb != nullptr && format_->pb->error < 0)) damaged_ = true;
    return false;
}

bool Demuxer::next_of_video(AVPacket* packet) {
    while (next(packet)) {
        if (packet->stream_index == video_->index) return true;
        av_packet_unref(packet);
    }
    return false;
}

bool Demuxer::seek(std::int64_t stamp) {
    return av_seek_frame(format_.get(), video_->index, stamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

}  // namespace qx::movie
