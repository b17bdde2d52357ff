// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/GeneralSampler.h"

#include <algorithm>

namespace solvan_of {

TexRun run_of(const TexAxis& axis, std::int32_t from, std::int32_t end) {
    TexRun run{axis.index(from), 0, 1};
    if (from + 1 >= end) return run;
    run.step = axis.index(from + 1) - run.index;
    if (run.step < -1 || run.step > 1) run.step = 0;
    for (std::int32_t at = from + 1, before = run.index; at < end; ++at, ++run.length) {
        const std::int32_t index = axis.index(at);
        if (index != before + run.step || (index < 0) != (run.index < 0)) break;
        before = index;
    }
    return run;
}

}  // namespace solvan_of
