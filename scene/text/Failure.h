// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace qx::text {

/// What a text cannot be set for, in plain words.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace qx::text
