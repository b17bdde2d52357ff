// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Levels.h"

namespace qx {

/// What the library's start chooses forms by.
struct Processor {
    bool vector;  ///< it has the vector unit (SSE4.1)
    bool faster;  ///< the faster rows are to be used (AVX2)
    bool widest;  ///< and the widest registers (AVX-512)

    constexpr Level level() const {
        if (faster) return widest ? Level::avx512 : Level::avx2;
        return vector ? Level::sse4 : Level::plain;
    }
};

}  // namespace qx
