// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Levels.h"

namespace qx {

/// How much of a mask comes through, and up to where its growth goes: samples.
struct UnoStrength {
    std::int32_t opacity, limit;
};

/// Rows of samples of one type. A row may be its own source, sample by sample.
template <class Sample> struct UnoRows {
    using Combine = void(std::int32_t count, const Sample* src, Sample* dst);

    Combine* combine[7];  ///< operators 1 to 7 at full strength
    void (*add)(std::int32_t count, std::int32_t opacity, const Sample* src, Sample* dst);
    void (*grow)(std::int32_t count, const UnoStrength& strength, const Sample* src, Sample* dst);
    /// The same with `noise` where products are rounded. What lies beside samples that do not grow is not used.
    void (*grow_noisily)(std::int32_t count, const UnoStrength& strength, const Sample* src, const Sample* noise,
                         Sample* dst);
    void (*transfer)(std::int32_t count, const Sample* coverage, const Sample* src, Sample* dst);
    void (*fade)(std::int32_t count, std::int32_t opacity, Sample* dst);
    void (*invert)(std::int32_t count, std::int32_t opacity, Sample* dst);
    /// Deep samples less `shift` bits, to the nearest, of which the low ones are kept.
    void (*shift)(std::int32_t count, std::int32_t shift, const std::uint16_t* src, Sample* dst);
};

struct UnoKernels {
    UnoRows<std::uint8_t> rows8;
    UnoRows<std::uint16_t> rows16;
    void (*transfer_float)(std::int32_t count, const float* coverage, const float* src, float* dst);
    void (*add_widened)(std::int32_t count, std::int32_t opacity, const std::uint8_t* src, std::uint16_t* dst);
    void (*scale_to_float)(std::int32_t count, float factor, const std::uint16_t* src, float* dst);

    template <class Sample> const UnoRows<Sample>& rows() const {
        if constexpr (sizeof(Sample) == 1) {
            return rows8;
        } else {
            return rows16;
        }
    }
};
QX_DECLARE_LEVELS(UnoKernels, uno_kernels)

/// Those that routines on mask buffers use. They are chosen at the library's start, until which they are the plain
/// ones.
const UnoKernels& chosen_uno_kernels();
void choose_uno_kernels(Level level);

}  // namespace qx
