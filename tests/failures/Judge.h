// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tests/failures/Run.h"

namespace failures {

enum class Verdict {
    untouched,  ///< nothing failed: the run is over
    ok,         ///< the very files of a run without failure
    refused,    ///< status 1, one line that says why, nothing that is not whole
    foreign,    ///< a crash that a library is at fault for
    ours
};

struct Judgement {
    Verdict verdict;
    std::string reason;  ///< of the last two: what happened, and where
};

/// @param clean  the outcome without failure
Judgement judge(const Outcome& outcome, const Outcome& clean);

}  // namespace failures
