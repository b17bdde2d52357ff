// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/library/QX_Library.h"
#include "platform/standalone/Standalone.h"

namespace qx::bench {

/// The library, born anew whenever a bench asks for another processor level. Called by one thread at a time, while no
/// other uses the library.
inline void be_born(standalone::ProcessorLevel level) {
    static int current = -1;
    if (current == static_cast<int>(level)) return;
    if (current >= 0) QX_Death();
    standalone::SetProcessorLevel(level);
    QX_Birth();
    current = static_cast<int>(level);
}

inline const char* name_of(standalone::ProcessorLevel level) {
    constexpr const char* names[] = {"plain", "sse4", "avx2", "avx512"};
    return names[static_cast<int>(level)];
}

}  // namespace qx::bench
