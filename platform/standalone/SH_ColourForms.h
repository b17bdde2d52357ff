// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include <cstdint>
#include <memory>

#include "platform/Platform_Export.h"

/// Transforms of curves, a matrix and curves in a form of their own, many times as fast as the colour library's exact
/// one.
namespace standalone {

/// The depth of the pixels of a format: alpha, red, green and blue of 8 bits, of 16 bits on 0..32768, or floats.
enum class ColourDepth { eight, sixteen, real };

/// Read-only once it is made: any number of threads may run it.
class ColourForm {
public:
    virtual ~ColourForm() = default;
    /// Colours of `count` pixels; alphas of the destination stay as they are. Both may be the same memory where the
    /// depths are alike.
    virtual void run(const void* src, void* dst, std::int64_t count) const = 0;
};

/// @param law   what has to come out: an unoptimised pipeline from three floats to three
/// @param clip  limits float results to 0..1
/// @return null where the pipeline is no such chain: then it has to be evaluated itself. Throws std::bad_alloc.
PLATFORM_EXPORT std::unique_ptr<const ColourForm> MakeColourForm(const cmsPipeline* law, ColourDepth src,
                                                                 ColourDepth dst, bool clip);

}  // namespace standalone
