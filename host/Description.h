// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "QX/QX_Effect.h"

namespace qx::host {

/// Checks what a module tells of itself, and gives its parameters. Throws scene::BadText with what is wrong.
std::vector<const QXE_ParameterInfo*> checked_parameters(const QXE_EffectInfo& info);

}  // namespace qx::host
