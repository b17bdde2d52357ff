// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_LinearTables.h"

namespace qx {

/// Code i of 8 bits on 0..32768, where `to_linear` is measured.
constexpr std::uint16_t ramp_value(std::uint32_t i) { return static_cast<std::uint16_t>((i * 0x808080 + 33200) >> 16); }

/// Makes `from_linear` the inverse of `to_linear`: from 0 to 32768, and never falling. Where the curve does not rise
/// the inverse is the first value that gives its target in the lower half, the last one in the upper half, so that
/// black and white stay themselves.
QX_EXPORT void invert_to_linear(QX_LinearBlendingTables& tables);

}  // namespace qx
