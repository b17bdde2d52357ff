// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Format.h"

namespace qx::pictures {

/// R, G, B, A of any depth on the way out. Files of it are read only where `ReadOptions` tell what is in them.
const Format& raw_format();

}  // namespace qx::pictures
