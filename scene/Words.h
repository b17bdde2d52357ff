// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace qx::tool {

/// Insertions, deletions and exchanges that make one word of the other.
std::size_t edit_distance(const std::string& a, const std::string& b);

/// The first of the words that are most like `word`. There is at least one.
std::string nearest_word(const std::string& word, const std::vector<std::string>& words);

}  // namespace qx::tool
