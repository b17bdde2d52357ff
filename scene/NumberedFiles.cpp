// SPDX-License-Identifier: Apache-2.0
#include "scene/NumberedFiles.h"

#include <algorithm>
#include <filesystem>

#include "pictures/FileName.h"

namespace qx::scene {

namespace fs = std::filesystem;

std::vector<int> numbers_there(const FramePattern& pattern) {
    std::vector<int> numbers;
    const std::string any = pattern.name(0), layer = any.substr(pictures::file_of(any).size());
    const fs::path folder = fs::path(any).parent_path();
    std::error_code fault;
    for (auto entry = fs::directory_iterator(folder.empty() ? fs::path(".") : folder, fault);
         !fault && entry != fs::directory_iterator(); entry.increment(fault)) {
        if (const auto number = pattern.number_in((folder / entry->path().filename()).string() + layer))
            numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace qx::scene
