// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx::pictures {

/// Opens a module of the command's own, which lies in a folder of libraries beside that of the command, or where the
/// system looks. It is kept once it is loaded: its libraries do not stand being unloaded. @return null, and `dlerror`
/// why
void* open_own_module(const char* name);

}  // namespace qx::pictures
