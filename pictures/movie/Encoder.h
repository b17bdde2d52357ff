// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include "pictures/movie/Module.h"

namespace qx::movie {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <auto Free> struct FreeByAddress {
    template <class T> void operator()(T* p) const { Free(&p); }
};
struct FreeFormat {
    void operator()(AVFormatContext* format) const;
};
struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

/// One movie: frames are converted to the codec's planes, encoded, and put into the container.
class Encoder {
public:
    explicit Encoder(const Settings& settings);
    void add(const unsigned char* pixels, std::ptrdiff_t rowbytes);
    void finish();

private:
    void open_codec(const Settings& settings);
    void open_scaler();
    void encode(const AVFrame* frame);  ///< null flushes

    std::unique_ptr<AVFormatContext, FreeFormat> format_;
    std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>> codec_;
    std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>> frame_;
    std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>> packet_;
    std::unique_ptr<SwsContext, FreeScaler> scaler_;
    AVStream* stream_ = nullptr;
    std::int64_t frames_ = 0;
};

}  // namespace qx::movie
