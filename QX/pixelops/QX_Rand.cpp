// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_Rand.h"

std::int32_t QX_Rand(std::uint32_t* seed) { return qx::next_random(*seed); }
