// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/MultiProcessor.h"

namespace solvan_of {

void FnMultiProcessor::process() {
    initialise();
    run();
    finish();
}

// A stop ends its pass alone, so that all passes are walked through quickly.
void FnMultiProcessor::run() {
    for (pass_ = 0; pass_ < pass_count_; ++pass_) {
        if (interrupted(0)) continue;
        prePass();
        if (interrupted(0)) continue;
        if ((options_ & kParallel) != 0) {
            flags_ |= kInParallel;
            run_parts<FnMultiProcessor, &FnMultiProcessor::run_part>(state(), *this);
            flags_ &= ~kInParallel;
        } else {
            processPart(0);
        }
        postPass();
    }
}

}  // namespace solvan_of
