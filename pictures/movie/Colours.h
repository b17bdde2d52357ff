// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/movie/Libraries.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

// Between the planes of movies and red, green, blue.
namespace qx::movie {

/// What is known of a kind of pixels. Throws Failure for one that is not known.
const AVPixFmtDescriptor& described(int format);

/// What a frame says of its values, where a damaged file may put numbers beyond the lists: unknown, then.
int code_of_range(const AVFrame& frame);
int code_of_matrix(const AVFrame& frame);
int code_of_primaries(const AVFrame& frame);
int code_of_transfer(const AVFrame& frame);
bool is_full_range(const AVFrame& frame);

/// True for luma, with colours or without, in place of red, green, blue.
bool is_planes(int format);

/// The matrix that is meant: the told one where it can be used, else that of BT.601 below 720 lines and BT.709 from
/// there on.
int usable_matrix(int told, int height);

/// Of frames of one size; of the two formats one is RGB.
struct Conversion {
    int width = 0, height = 0;
    int from = AV_PIX_FMT_NONE, to = AV_PIX_FMT_NONE;
    int matrix = AVCOL_SPC_BT709;
    bool full_range = false;                            ///< of the planes
    AVChromaLocation place = AVCHROMA_LOC_UNSPECIFIED;  ///< of halved colours in what is read
    bool operator==(const Conversion&) const = default;
};

/// Of a frame as it says itself.
Conversion conversion_of(const AVFrame& frame, int to);

/// A converter whose bits no processor changes.
Scaler make_scaler(const Conversion& conversion);

/// The display matrix of an orientation, 1 to 8, for frames of a size; and back: 0 for what is none.
struct DisplayMatrix {
    std::int32_t of[9];
};
DisplayMatrix matrix_of_orientation(int orientation, int width, int height);
int orientation_of(const std::int32_t* matrix);

}  // namespace qx::movie
