// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

namespace failures {

using Words = std::vector<std::string>;
using FilesIn = std::map<std::string, std::string>;  ///< bytes of each file of a folder

/// Whole bytes of a file, none when it is missing.
std::string bytes_of(const std::string& path);

/// What a run of the command left.
struct Outcome {
    int status = 0;      ///< of exit, or 128 and the number of the signal that ended it
    bool hung = false;   ///< ended by the limit of time
    std::string said;    ///< on standard error
    std::string report;  ///< of the failure that happened; empty when none did
    FilesIn files;       ///< in its output folder
};

/// Runs commands in a folder of its own, one at a time. Any number of rooms at once.
class Room {
public:
    /// @param inputs  folder that the commands run in, so that their words name files in it
    Room(std::string folder, std::string inputs, std::string preload);
    /// `words` with OUT/ before the names of what is written; `failure` is a line of environment, or empty.
    Outcome run(const Words& words, const std::string& failure) const;

private:
    const std::string folder_, inputs_, preload_;
};

}  // namespace failures
