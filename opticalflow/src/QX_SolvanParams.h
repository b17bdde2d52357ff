// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/tesselcore_Guid.h"

enum QX_SolvanMode : std::uint16_t { kQX_Solvan_Nearest = 0, kQX_Solvan_Mix = 1, kQX_Solvan_Tween = 2 };

/// How frames between frames are made. Fractions here; whoever makes a QX_AdvancedFrameBlending of it gives percentages
/// for `vectorDetail`, `convergenceError` and the three weights.
struct QX_Solvan_AlgoParams {
    std::uint16_t interpolationMode = kQX_Solvan_Tween;  ///< 0 to 2
    float vectorDetail = 0.2f;            ///< 0.05 to 1: size of the field of vectors, as a share of the frame's
    float estimatorSmoothness = 500;      ///< -1000 to 1000: smoothness against pixels, for blocks
    float refineSmoothness = 500;         ///< -1000 to 1000: for single pixels
    std::uint16_t refineIterations = 5;   ///< 1 to 50
    float convergenceError = 0.01f;       ///< 0 to 0.1: mean difference that counts as none
    std::uint16_t highQualityFilter = 0;  ///< 0 bilinear, 1 windowed sinc
    std::uint16_t blockSize = 6;          ///< 4 to 40
    double lumaRed = 0.2988804, lumaGreen = 0.58676529, lumaBlue = 0.11435428;  ///< 0 to 1, of sum 1 within 0.02
    float shutterAngle = 180;                                                   ///< 0 to 360 degrees
    std::uint16_t sampleCount = 1;                                              ///< 1 to 20
    std::uint16_t reservedChoice = 0;  ///< 0 to 3; part of the identity of vectors
};
static_assert(sizeof(QX_Solvan_AlgoParams) == 64 && offsetof(QX_Solvan_AlgoParams, vectorDetail) == 4);
static_assert(offsetof(QX_Solvan_AlgoParams, convergenceError) == 20 &&
              offsetof(QX_Solvan_AlgoParams, blockSize) == 26);
static_assert(offsetof(QX_Solvan_AlgoParams, lumaRed) == 32 && offsetof(QX_Solvan_AlgoParams, lumaGreen) == 40);
static_assert(offsetof(QX_Solvan_AlgoParams, lumaBlue) == 48 && offsetof(QX_Solvan_AlgoParams, shutterAngle) == 56);
static_assert(offsetof(QX_Solvan_AlgoParams, sampleCount) == 60 &&
              offsetof(QX_Solvan_AlgoParams, reservedChoice) == 62);

struct QX_Solvan_Time {
    std::int32_t numerator;
    std::uint32_t denominator;
};

/// Which frames, and where between them.
struct QX_Solvan_OtherParams {
    std::uint64_t reserved0, reserved1;  ///< carried
    QX_Solvan_Time firstTime, secondTime;
    Guid firstFrameId, secondFrameId;  ///< equal ids mean equal frames: their vectors are kept by these
    std::int32_t reserved2;            ///< carried
    double position;                   ///< 0 is the first frame, towards 1 the second one
    std::int32_t reserved3;            ///< carried
};
static_assert(sizeof(QX_Solvan_OtherParams) == 88 && offsetof(QX_Solvan_OtherParams, firstTime) == 16);
static_assert(offsetof(QX_Solvan_OtherParams, firstFrameId) == 32 && offsetof(QX_Solvan_OtherParams, reserved2) == 64);
static_assert(offsetof(QX_Solvan_OtherParams, position) == 72 && offsetof(QX_Solvan_OtherParams, reserved3) == 80);

/// Asked now and then, on the render's own thread, whether to go on. A non-zero answer ends the render and becomes its
/// result. A null function polls nobody; null data hands it null.
struct QX_Solvan_InterruptFuncs {
    std::int32_t (*abortFunc)(void* argument) = nullptr;
    void** abortData = nullptr;  ///< where the argument stands
};
static_assert(sizeof(QX_Solvan_InterruptFuncs) == 16 && offsetof(QX_Solvan_InterruptFuncs, abortData) == 8);

/// Pixels without a world: 3 channels are blue, green, red, 4 are alpha, red, green, blue. Of vectors, pairs of floats.
struct YetAnotherImgBuffer {
    std::uint32_t width, height;
    std::uint32_t bits;  ///< a channel: 8, 16 (full scale 32768) or 32 (float)
    std::uint32_t channels;
    std::int32_t rowBytes;
    void* pixels;
};
static_assert(sizeof(YetAnotherImgBuffer) == 32 && offsetof(YetAnotherImgBuffer, pixels) == 24);
