// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Decoder.h"

#include <cstring>

namespace qx::movie {
namespace {

constexpr int kBitsOfSmall = 8;

/// R, G, B, A of 16 bits to A, R, G, B. The library shifts alphas of fewer bits, which leaves full ones short of full.
void turn_row(const unsigned char* from, unsigned char* to, int count, int alpha_bits) {
    const auto most = (1u << alpha_bits) - 1;
    for (int i = 0; i < 8 * count; i += 8) {
        std::uint16_t channels[4];
        std::memcpy(channels, from + i, sizeof channels);
        const std::uint32_t alpha = static_cast<std::uint32_t>(channels[3]) >> (16 - alpha_bits);
        const auto full_alpha = static_cast<std::uint16_t>((alpha * 65535u + most / 2) / most);
        const std::uint16_t turned[] = {full_alpha, channels[0], channels[1], channels[2]};
        std::memcpy(to + i, turned, sizeof turned);
    }
}

std::string size_words(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

}  // namespace

Decoder::Decoder(const char* file, int threads, std::int64_t most_bytes)
    : most_pixels_(most_bytes / 4), movie_(std::make_unique<Demuxer>(file, most_pixels_)) {
    packet_.reset(made(av_packet_alloc()));
    frame_.reset(made(av_frame_alloc()));
    std::int64_t last_duration = 0;
    index_ = make_index(*movie_, &last_duration);
    open_codec(threads);
    if (index_.numbered) count_frames();
    look_at_first_frame();
    const std::int64_t depth_bytes = depth_ == kBitsOfSmall ? 4 : 8;
    if (std::int64_t{width_} * height_ > most_bytes / depth_bytes) {
        throw Failure("frames of " + size_words(width_, height_) + " pixels are too large");
    }
    if (!index_.numbered) {
        index_.begin_at(last_);
        index_.find_rate(movie_->video(), last_duration);
    }
    stamps_ = index_.stamps(movie_->video(), &time_base_);
    must_have_had_memory();
}

void Decoder::open_codec(int threads) {
    const AVStream& video = movie_->video();
    const AVCodec* codec = avcodec_find_decoder(video.codecpar->codec_id);
    if (codec == nullptr) {
        throw Failure(std::string("FFmpeg has no decoder for its codec, ") +
                      avcodec_get_name(video.codecpar->codec_id));
    }
    codec_.reset(made(avcodec_alloc_context3(codec)));
    must(avcodec_parameters_to_context(codec_.get(), video.codecpar), "codec");
    codec_->pkt_timebase = video.time_base;
    codec_->max_pixels = most_pixels_;
    codec_->thread_count = threads;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT;
    must(avcodec_open2(codec_.get(), codec, nullptr), std::string("the decoder of ") + codec->name);
    must_have_had_memory();
}

bool Decoder::feed() {
    if (draining_) return false;
    int code = 0;
    if (movie_->next_of_video(packet_.get())) {
        const Index::Shown* shown = index_.numbered ? nullptr : index_.frame_at(packet_->pts);
        if (shown != nullptr) fed_ = shown->order + 1;
        code = packet_->size > 0 ? avcodec_send_packet(codec_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
    } else {
        draining_ = true;
        code = avcodec_send_packet(codec_.get(), nullptr);
    }
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    return true;  // what it cannot use it leaves out, and goes on with what comes behind
}

bool Decoder::next_frame() {
    constexpr int most_faults = 1000;  // of a decoder that would tell them for ever
    for (int faults = 0; faults < most_faults;) {
        const int code = avcodec_receive_frame(codec_.get(), frame_.get());
        if (code >= 0) {
            const std::int64_t stamp = frame_->pts != AV_NOPTS_VALUE ? frame_->pts : frame_->best_effort_timestamp;
            last_ = index_.numbered ? given_ : stamp;
            ++given_;
            return true;
        }
        if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (code == AVERROR_EOF) return false;
        if (code == AVERROR(EAGAIN)) {
            if (!feed()) return false;
            continue;
        }
        ++faults;
    }
    return false;
}

void Decoder::begin_again() {
    const std::string file = movie_->file();
    movie_ = std::make_unique<Demuxer>(file.c_str(), most_pixels_);
    movie_->read_video_alone();
    avcodec_flush_buffers(codec_.get());
    last_ = AV_NOPTS_VALUE;
    given_ = 0;
    fed_ = 0;
    draining_ = false;
}

/// Containers seek by stamps of showing or of decoding, and not all land where they should: what comes is looked at.
bool Decoder::begin_at(const Index::Key& key) {
    for (const std::int64_t stamp : {key.stamp, key.decode_stamp}) {
        if (stamp == AV_NOPTS_VALUE || !movie_->seek(stamp)) continue;
        avcodec_flush_buffers(codec_.get());
        last_ = AV_NOPTS_VALUE;
        given_ = 0;
        draining_ = false;
        if (!movie_->next_of_video(packet_.get())) continue;
        const bool is_key = (packet_->flags & AV_PKT_FLAG_KEY) != 0;
        const Index::Shown* shown = index_.frame_at(packet_->pts);
        const bool lands = is_key && shown != nullptr && shown->order <= key.order;
        const int code = lands ? avcodec_send_packet(codec_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
        if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (!lands || code < 0) continue;
        fed_ = shown->order + 1;
        return true;
    }
    return false;
}

bool Decoder::go_on_to(std::int64_t stamp) {
    if (last_ == stamp) return true;
    while (next_frame()) {
        if (last_ == stamp) return true;
        if (last_ != AV_NOPTS_VALUE && last_ > stamp) return false;
    }
    return false;
}

void Decoder::show(std::int64_t number) {
    const Index::Shown& frame = index_.frames[static_cast<std::size_t>(number)];
    if (last_ == frame.stamp) return;
    const bool is_ahead = last_ != AV_NOPTS_VALUE && last_ < frame.stamp;
    const Index::Key* key = index_.numbered ? nullptr : index_.key_for(frame);
    const bool near = is_ahead && (key == nullptr || key->order < fed_);
    if (near && go_on_to(frame.stamp)) return;
    if (key != nullptr && begin_at(*key) && go_on_to(frame.stamp)) return;
    begin_again();
    if (go_on_to(frame.stamp)) return;
    throw Failure("frame " + std::to_string(number) + " cannot be decoded");
}

void Decoder::count_frames() {
    begin_again();
    std::int64_t count = 0;
    while (count <= kMostFrames && next_frame()) ++count;
    if (count == 0) movie_->refuse("none of its frames can be decoded");
    if (count > kMostFrames) throw Failure("has more than " + std::to_string(kMostFrames) + " frames");
    index_.number(count, movie_->video());
    begin_again();
}

void Decoder::look_at_first_frame() {
    begin_again();
    do {
        if (!next_frame()) movie_->refuse("none of its frames can be decoded");
    } while (!index_.numbered && index_.frame_at(last_) == nullptr);
    const AVStream& video = movie_->video();
    const AVPixFmtDescriptor& pixels = described(frame_->format);
    width_ = frame_->width;
    height_ = frame_->height;
    depth_ = pixels.comp[0].depth > kBitsOfSmall ? 16 : 8;
    has_alpha_ = (pixels.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    has_audio_ = movie_->has_audio();
    if (const char* told = movie_->time_code()) time_code_ = told;
    tags_ = {code_of_primaries(*frame_), code_of_transfer(*frame_), code_of_matrix(*frame_),
             is_full_range(*frame_) ? AVCOL_RANGE_JPEG : code_of_range(*frame_)};
    const AVRational aspect = av_guess_sample_aspect_ratio(&movie_->format(), &movie_->video(), frame_.get());
    if (aspect.num > 0 && aspect.den > 0) showing_.aspect = {aspect.num, aspect.den};
    std::size_t bytes = 0;
    const std::uint8_t* matrix = av_stream_get_side_data(&video, AV_PKT_DATA_DISPLAYMATRIX, &bytes);
    if (matrix != nullptr && bytes >= sizeof(DisplayMatrix)) {
        DisplayMatrix told{};
        std::memcpy(told.of, matrix, sizeof told.of);
        const int orientation = orientation_of(told.of);
        rotated_ = orientation == 0;
        showing_.orientation = rotated_ ? 1 : orientation;
    }
}

Facts Decoder::facts() const {
    Facts facts{};
    facts.width = width_;
    facts.height = height_;
    facts.depth = depth_;
    facts.has_alpha = has_alpha_;
    facts.has_audio = has_audio_;
    facts.tags = tags_;
    facts.showing = showing_;
    facts.rate = index_.rate;
    facts.time_base = time_base_;
    facts.stamps = stamps_.data();
    facts.frames = static_cast<std::int64_t>(index_.frames.size());
    facts.regular = index_.regular;
    facts.rotated = rotated_;
    facts.numbered = index_.numbered;
    facts.codec = avcodec_get_name(movie_->video().codecpar->codec_id);
    facts.time_code = time_code_.empty() ? nullptr : time_code_.c_str();
    return facts;
}

void Decoder::check_size(std::int64_t frame) const {
    if (frame_->width == width_ && frame_->height == height_) return;
    throw Failure("frame " + std::to_string(frame) + " has " + size_words(frame_->width, frame_->height) +
                  " pixels, those before it have " + size_words(width_, height_));
}

Conversion Decoder::conversion() const {
    const int to = depth_ == kBitsOfSmall ? AV_PIX_FMT_ARGB : AV_PIX_FMT_RGBA64;
    return conversion_of(*frame_, to);
}

void Decoder::convert(unsigned char* pixels, std::ptrdiff_t rowbytes) {
    const Conversion wanted = conversion();
    if (!scaled_ || *scaled_ != wanted) {
        scaled_.reset();
        scaler_ = make_scaler(wanted);
        scaled_ = wanted;
    }
    if (!converted_) {  // of its own, since rows are written in whole registers
        Frame target(made(av_frame_alloc()));
        target->width = width_;
        target->height = height_;
        target->format = wanted.to;
        must(av_frame_get_buffer(target.get(), 0), "frame");
        converted_ = std::move(target);
    }
    must(sws_scale(scaler_.get(), frame_->data, frame_->linesize, 0, height_, converted_->data, converted_->linesize),
         "conversion");
    const auto row_bytes = static_cast<std::size_t>(width_) * (depth_ == kBitsOfSmall ? 4 : 8);
    const AVPixFmtDescriptor& pixels_of_file = described(frame_->format);
    const bool has_few_alphas = has_alpha_ && is_planes(frame_->format) && pixels_of_file.comp[3].depth < 16;
    const int alpha_bits = has_few_alphas ? pixels_of_file.comp[3].depth : 16;
    for (int y = 0; y < height_; ++y) {
        unsigned char* to = pixels + y * rowbytes;
        const unsigned char* from = converted_->data[0] + std::ptrdiff_t{y} * converted_->linesize[0];
        if (depth_ == kBitsOfSmall) {
            std::memcpy(to, from, row_bytes);
        } else {
            turn_row(from, to, width_, alpha_bits);
        }
    }
}

void Decoder::read(std::int64_t frame, unsigned char* pixels, std::ptrdiff_t rowbytes, std::string& note) {
    if (frame < 0 || frame >= static_cast<std::int64_t>(index_.frames.size())) throw Failure("has no such frame");
    try {
        show(frame);
        check_size(frame);
        convert(pixels, rowbytes);
        must_have_had_memory();
    } catch (...) {
        last_ = AV_NOPTS_VALUE;  // what comes next begins anew
        throw;
    }
    if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0) {
        note = "frame " + std::to_string(frame) + " is damaged";
    }
}

}  // namespace qx::movie
