// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

// What FFmpeg's objects and codes are in this module.
namespace qx::movie {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What was chosen cannot be had. The words name the choice.
struct BadChoice : Failure {
    using Failure::Failure;
};

/// Throws for a code that tells of a fault.
inline void must(int code, const std::string& what) {
    if (code >= 0) return;
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(code, text, sizeof text);
    throw Failure(what + ": " + text);
}

/// Throws once the system has refused memory: the libraries do not tell that of all they leave out.
inline void must_have_had_memory() {
    if (errno == ENOMEM) throw std::bad_alloc();
}

template <class T> T* made(T* thing) {
    if (thing == nullptr) throw std::bad_alloc();
    return thing;
}

template <auto Free> struct FreeByAddress {
    template <class T> void operator()(T* p) const { Free(&p); }
};
struct FreeOutput {
    void operator()(AVFormatContext* format) const {
        avio_closep(&format->pb);
        avformat_free_context(format);
    }
};
struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

using Input = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using Output = std::unique_ptr<AVFormatContext, FreeOutput>;
using Codec = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using Frame = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;

/// A colon in a name tells no protocol.
inline std::string as_file(const char* path) { return std::string("file:") + path; }

}  // namespace qx::movie
