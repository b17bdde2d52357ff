// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"

/// Chains of curves, a matrix and curves over runs of pixels, and what they read. One text gives the kernels of every
/// level, all with the same results.
namespace qx {

/// A pixel as it lies in memory. Kernels move floats as their bits.
template <class Channel> struct ColourPixel { Channel alpha, red, green, blue; };

using FloatBits = std::int32_t;

/// Terms of the polynomials of powers: those that 16 bits and floats need, and those that 8 bits do.
inline constexpr int kPowerTerms = 7, kPowerTerms8 = 4;

/// From `limit` on (x + shift) ^ exponent * scale + lift, below it slope * x + foot.
///
/// The base is 2 ^ e * (1 + u), with 1 + u between the roots of a half and of two. The power of 1 + u is
/// 1 + u * polynomial(u), that of 2 ^ e, with the scale, is scales[e + 126].
struct PowerCurve {
    float limit, slope, foot, shift, lift;
    float terms[kPowerTerms];  ///< from the constant one on
    /// Nothing up to this place is above zero. Registers hold scales from here on.
    std::int32_t first;
    float scales[256];
};

/// A curve of the library that is a table tells 65,536 numbers apart.
inline constexpr int kSteps = 65536;

/// Curves of the three colours.
struct ColourCurves {
    const PowerCurve* powers[3];
    const float* values[3];  ///< one a code of an integer source, or one a step
    /// What no curve is made for, infinities say, becomes `outside`. Only float sources have such numbers.
    float lowest, highest, outside;
};

struct ColourChain {
    ColourCurves in, out;
    /// A row has its sum, and the factors of the colours that follow its own, in a circle.
    float matrix[3][3], offset[3];
    bool clip;  ///< limits floats to 0..1
};

/// How curves are worked out. `line` leaves what lies within its bounds as it is; `codes` are of integer sources.
enum class CurveKind { line, power, steps, codes };

using ColourRun = void (*)(const ColourChain& chain, std::int64_t count, const void* src, void* dst);

/// Places of depths: 8 bits, 16 bits on 0..32768, float.
struct ColourKernels {
    /// From pixels of one depth, by the depth of the destination and the kind of curve out.
    struct Runs {
        ColourRun to[3][3];
    };
    Runs from_codes[2];   ///< by the depth of the source
    Runs from_floats[3];  ///< by the kind of curve in
    /// A curve at some numbers, with as many terms.
    void (*power)(const PowerCurve& curve, int terms, std::int64_t count, const float* x, float* y);
};

QX_DECLARE_LEVELS(ColourKernels, colour_kernels)

}  // namespace qx
