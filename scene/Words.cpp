// SPDX-License-Identifier: Apache-2.0
#include "scene/Words.h"

#include <algorithm>

namespace qx::tool {

std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t exchange = diagonal + (a[i - 1] != b[j - 1] ? 1 : 0);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchange});
        }
    }
    return row[b.size()];
}

std::string nearest_word(const std::string& word, const std::vector<std::string>& words) {
    return *std::min_element(words.begin(), words.end(), [&](const std::string& a, const std::string& b) {
        return edit_distance(word, a) < edit_distance(word, b);
    });
}

}  // namespace qx::tool
