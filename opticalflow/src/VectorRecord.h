// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "opticalflow/src/LuminanceFrame.h"
#include "opticalflow/src/QX_SolvanParams.h"
#include "opticalflow/src/TweeningParameters.h"

namespace solvan_of {

/// What is known of a pair of frames: the vectors at both, and the luminance that pictures between them are chosen by.
struct SolvanVectorRecord {
    FieldTexture forwardVectors;   ///< at frame 0, into frame 1
    FieldTexture backwardVectors;  ///< at frame 1, into frame 0
    FloatTexture mask;             ///< of the second way in alone
    std::int32_t width = 0, height = 0;
    FloatTexture firstFrame, secondFrame;
    FloatTexture firstMask, secondMask;
    bool has_luminance = false;
};

/// Makes a record's vectors from its luminance. A code that stops it is in the state.
void make_vectors(InterruptState& state, const QX_Solvan_AlgoParams& algo, SolvanVectorRecord& record);

/// Both luminance frames, at the field's size.
template <class Pixel>
void make_luminance(InterruptState& state, const QX_Solvan_AlgoParams& algo, const FnTexture<Pixel>& first,
                    const FnTexture<Pixel>& second, SolvanVectorRecord& record) {
    const FieldSize size = field_size(first, algo.vectorDetail);
    const LumaOf luma{algo.lumaRed, algo.lumaGreen, algo.lumaBlue};
    record.width = size.width;
    record.height = size.height;
    make_working_frame(state, first, luma, size, record.firstFrame);
    if (!state.is_stopped()) make_working_frame(state, second, luma, size, record.secondFrame);
    record.has_luminance = !state.is_stopped();
}

/// The vectors of a pair at a time between its frames.
struct TweenedVectors {
    FieldTexture to_second, to_first;
    IntTexture map;
    FnMotionEstimateGradientTweeningParameters parameters;
};
/// @param t  as tween_position gives it
void tween(InterruptState& state, const QX_Solvan_AlgoParams& algo, SolvanVectorRecord& record, float t,
           TweenedVectors& tweened);

}  // namespace solvan_of
