// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourForms.h"

namespace standalone {

std::unique_ptr<const ColourForm> MakeColourForm(const cmsPipeline*, ColourDepth, ColourDepth, bool) { return nullptr; }

}  // namespace standalone
