// SPDX-License-Identifier: Apache-2.0
#include "scene/NumberedFiles.h"

#include <algorithm>
#include <filesystem>

namespace qx::scene {

namespace fs = std::filesystem;

std::vector<int> numbers_there(const FramePattern& pattern) {
    std::vector<int> numbers;
    const fs::path folder = fs::path(pattern.name(0)).parent_path();
    std::error_code fault;
    for (auto entry = fs::directory_iterator(folder.empty() ? fs::path(".") : folder, fault);
         !fault && entry != fs::directory_iterator(); entry.increment(fault)) {
        if (const auto number = pattern.number_in((folder / entry->path().filename()).string()))
            numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace qx::scene
