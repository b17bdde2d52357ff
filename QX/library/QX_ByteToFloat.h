// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

namespace qx {
/// Entry i is the float value i.
extern const std::array<float, 256> byte_to_float;
}  // namespace qx
