// SPDX-License-Identifier: Apache-2.0
#include "scene/Faults.h"

#include "QX/indep/QX_Errors.h"
#include "pictures/Watch.h"

namespace qx::scene {

void must(int code, const std::string& subject) {
    if (code == kQX_Interrupted) throw pictures::Stopped{};
    if (code != 0) throw WorkFault(subject, code);
}

std::int32_t stop_code(void* watch) {
    return static_cast<const pictures::Watch*>(watch)->stops() ? std::int32_t{kQX_Interrupted} : 0;
}

}  // namespace qx::scene
