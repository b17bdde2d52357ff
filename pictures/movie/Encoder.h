// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "pictures/movie/AudioCopy.h"
#include "pictures/movie/Colours.h"
#include "pictures/movie/Module.h"

namespace qx::movie {

/// One movie: frames are converted to the codec's planes, encoded, and put into the container.
class Encoder {
public:
    explicit Encoder(const Settings& settings);
    int depth() const { return depth_; }  ///< of the channels that come
    void add(const unsigned char* pixels, std::ptrdiff_t rowbytes);
    void finish();
    /// What the movie lacks of its settings; empty where it has all.
    const std::string& note() const { return note_; }

private:
    void open_container(const Settings& settings);
    void open_codec(const Settings& settings);
    void set_quality(const Settings& settings);
    void open_frame();
    void open_stream(const Settings& settings);
    void show_as(const Showing& showing);
    void count_from(const char* time_code);
    void fill(const unsigned char* pixels, std::ptrdiff_t rowbytes);  ///< the planes of `frame_`
    void encode(const AVFrame* frame);                                ///< null flushes
    void say(const std::string& note);

    Output format_;
    Codec codec_;
    Frame frame_;
    Packet packet_;
    Scaler scaler_;  ///< of a movie that is not lossless
    Frame wide_;     ///< what it takes where channels of 16 bits come
    int depth_ = 8;
    std::optional<AudioCopy> audio_;
    AVStream* stream_ = nullptr;
    std::int64_t frames_ = 0;
    std::string note_;
};

}  // namespace qx::movie
