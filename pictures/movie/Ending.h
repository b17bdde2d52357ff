// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace qx::movie {

/// How many bytes of a file are missing at its end, by what its container tells of its own length: 0 for a whole one.
/// None where the container does not tell.
std::optional<std::int64_t> missing_bytes(const char* file);

}  // namespace qx::movie
