// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qx::text {

/// The file of a font that the machine has, by a name such as "DejaVu Sans:bold". Throws Failure, which names the
/// nearest.
std::string file_of_font(const std::string& name);

}  // namespace qx::text
