// SPDX-License-Identifier: Apache-2.0
#include "pictures/Failure.h"

#include <algorithm>

namespace qx::pictures {

std::string one_line(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 127; }, ' ');
    return text;
}

}  // namespace qx::pictures
