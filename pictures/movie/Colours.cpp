// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Colours.h"

#include <climits>
#include <cstring>
#include <iterator>

extern "C" {
#include <libavutil/opt.h>
}

namespace qx::movie {
namespace {

/// Where the colours of a format lie beside its luma, in 256ths of a pixel; unsaid means left, as movies have it.
void place_chroma(SwsContext* scaler, const Conversion& conversion) {
    const AVPixFmtDescriptor* planes = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(conversion.from));
    const AVChromaLocation place = conversion.place == AVCHROMA_LOC_UNSPECIFIED ? AVCHROMA_LOC_LEFT : conversion.place;
    constexpr struct { int x, y; } places[] = {{0, 128}, {0, 128}, {128, 128}, {0, 0}, {128, 0}, {0, 256}, {128, 256}};
    if (planes == nullptr || static_cast<std::size_t>(place) >= std::size(places)) return;
    if (planes->log2_chroma_w > 0) av_opt_set_int(scaler, "src_h_chr_pos", places[place].x, 0);
    if (planes->log2_chroma_h > 0) av_opt_set_int(scaler, "src_v_chr_pos", places[place].y, 0);
}

/// A number of the library's lists, which a damaged file may put beyond them: 2, unknown, then.
template <class Enum> int code_of(const Enum& value, int count) {
    static_assert(sizeof value == sizeof(int));
    int code = 0;
    std::memcpy(&code, &value, sizeof code);
    return code >= 0 && code < count ? code : AVCOL_SPC_UNSPECIFIED;
}

AVChromaLocation place_of(const AVFrame& frame) {
    const int place = code_of(frame.chroma_location, INT_MAX);
    return place < AVCHROMA_LOC_NB ? static_cast<AVChromaLocation>(place) : AVCHROMA_LOC_UNSPECIFIED;
}

}  // namespace

const AVPixFmtDescriptor& described(int format) {
    const AVPixFmtDescriptor* found = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    if (found == nullptr) throw Failure("its kind of pixels is not known");
    return *found;
}

int code_of_range(const AVFrame& frame) {
    const int range = code_of(frame.color_range, INT_MAX);
    return range == AVCOL_RANGE_MPEG || range == AVCOL_RANGE_JPEG ? range : static_cast<int>(AVCOL_RANGE_UNSPECIFIED);
}

int code_of_matrix(const AVFrame& frame) { return code_of(frame.colorspace, AVCOL_SPC_NB); }

int code_of_primaries(const AVFrame& frame) { return code_of(frame.color_primaries, AVCOL_PRI_NB); }

int code_of_transfer(const AVFrame& frame) { return code_of(frame.color_trc, AVCOL_TRC_NB); }

bool is_full_range(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const bool by_format = format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
                           format == AV_PIX_FMT_YUVJ444P || format == AV_PIX_FMT_YUVJ440P ||
                           format == AV_PIX_FMT_YUVJ411P;
    return by_format || code_of_range(frame) == AVCOL_RANGE_JPEG;
}

bool is_planes(int format) {
    const AVPixFmtDescriptor* described = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return described != nullptr && (described->flags & AV_PIX_FMT_FLAG_RGB) == 0;
}

int usable_matrix(int told, int height) {
    switch (told) {
        case AVCOL_SPC_BT709:
        case AVCOL_SPC_FCC:
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_SMPTE240M:
        case AVCOL_SPC_BT2020_NCL:
            return told;
        default:
            return height < 720 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
    }
}

Conversion conversion_of(const AVFrame& frame, int to) {
    if (!is_planes(frame.format)) return {frame.width, frame.height, frame.format, to};
    return {frame.width,          frame.height,   frame.format, to, usable_matrix(code_of_matrix(frame), frame.height),
            is_full_range(frame), place_of(frame)};
}

Scaler make_scaler(const Conversion& conversion) {
    Scaler scaler(made(sws_alloc_context()));
    const bool to_rgb = !is_planes(conversion.to);
    const int whole_colours = to_rgb ? SWS_FULL_CHR_H_INT : SWS_FULL_CHR_H_INP;
    av_opt_set_int(scaler.get(), "sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_BITEXACT | whole_colours, 0);
    const std::pair<const char*, int> options[] = {{"srcw", conversion.width},      {"srch", conversion.height},
                                                   {"src_format", conversion.from}, {"dstw", conversion.width},
                                                   {"dsth", conversion.height},     {"dst_format", conversion.to}};
    for (const auto& [name, value] : options) av_opt_set_int(scaler.get(), name, value, 0);
    if (to_rgb) {
        place_chroma(scaler.get(), conversion);
    } else {
        av_opt_set_int(scaler.get(), "dst_h_chr_pos", 0, 0);  // to the left, where readers of movies expect them
    }
    must(sws_init_context(scaler.get(), nullptr, nullptr), "its kind of pixels cannot be converted");
    const int* table = sws_getCoefficients(conversion.matrix);
    constexpr int one = 1 << 16;
    // The library has white at 255 * 256 of 16 bits; by so much more contrast it is 65535.
    const bool falls_short = conversion.to == AV_PIX_FMT_RGBA64 && is_planes(conversion.from);
    const int contrast = falls_short ? one + one / 256 : one;
    const int full = conversion.full_range ? 1 : 0;
    sws_setColorspaceDetails(scaler.get(), table, to_rgb ? full : 1, table, to_rgb ? 1 : full, 0, contrast, one);
    return scaler;
}

// (x, y) is shown at (a x + c y, b x + d y), moved to where nothing is below 0.
namespace {
constexpr struct {
    int a, b, c, d;
} kTurns[] = {{1, 0, 0, 1}, {-1, 0, 0, 1}, {-1, 0, 0, -1}, {1, 0, 0, -1},
              {0, 1, 1, 0}, {0, 1, -1, 0}, {0, -1, -1, 0}, {0, -1, 1, 0}};

int sign(std::int32_t v) { return v > 0 ? 1 : v < 0 ? -1 : 0; }
}  // namespace

DisplayMatrix matrix_of_orientation(int orientation, int width, int height) {
    constexpr int one = 1 << 16;
    const auto& turn = kTurns[orientation - 1];
    const int left = turn.a < 0 ? width : turn.c < 0 ? height : 0;
    const int top = turn.b < 0 ? width : turn.d < 0 ? height : 0;
    return {{turn.a * one, turn.b * one, 0, turn.c * one, turn.d * one, 0, left * one, top * one, 1 << 30}};
}

int orientation_of(const std::int32_t* matrix) {
    for (int i = 0; i < 8; ++i) {
        const auto& turn = kTurns[i];
        if (sign(matrix[0]) == turn.a && sign(matrix[1]) == turn.b && sign(matrix[3]) == turn.c &&
            sign(matrix[4]) == turn.d) {
            return i + 1;
        }
    }
    return 0;
}

}  // namespace qx::movie
