// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "pictures/Failure.h"

namespace qx::scene {

/// What a scene file says cannot be: "FILE: PLACE plain words".
class SceneFault : public pictures::Failure {
public:
    /// @param place  in the scene, such as /layers/2/mode; empty for the file as a whole
    SceneFault(const std::string& file, const std::string& place, const std::string& words)
        : Failure(file, place.empty() ? words : place + " " + words) {}
};

/// A routine of the library has not done the work on something.
class WorkFault : public std::runtime_error {
public:
    WorkFault(const std::string& what, int code)
        : std::runtime_error(pictures::one_line(what + " (code " + std::to_string(code) + ")")),
          subject_(what),
          code_(code) {}
    const std::string& subject() const { return subject_; }  ///< on what
    int code() const { return code_; }                       ///< one of QX_Errors.h

private:
    std::string subject_;
    int code_;
};

/// Throws what a routine's code means: nothing for 0, Stopped for the user's wish, else WorkFault.
void must(int code, const std::string& subject);

/// What the engine of optical flow asks between parts of its work: 0, or the code of the user's wish.
/// @param watch  a pictures::Watch
std::int32_t stop_code(void* watch);

}  // namespace qx::scene
