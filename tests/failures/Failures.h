// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

namespace failures {

using Words = std::vector<std::string>;

/// What a run of the command left.
struct Outcome {
    int status = 0;                              ///< of exit, or 128 and the number of the signal that ended it
    bool hung = false;                           ///< ended by the limit of time
    std::string said;                            ///< on standard error
    std::string report;                          ///< of the failure that happened; empty when none did
    std::map<std::string, std::string> files{};  ///< bytes of each in its output folder
};

/// Runs commands in a folder of its own, one at a time. Any number of rooms at once.
struct Room {
    std::string folder, inputs, preload;  ///< inputs: what the commands run in, so that their words name files in it

    /// `words` with OUT/ before the names of what is written; `failure` is a line of environment, or empty.
    Outcome run(const Words& words, const std::string& failure) const;
};

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
