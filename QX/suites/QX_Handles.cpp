// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_Handles.h"

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Places.h"

namespace qx {

TK_Handle new_handle(std::uint64_t bytes) { return TK_AllocateHandleQuiet(bytes); }

void* lock_handle(TK_Handle handle) { return handle != nullptr ? *handle : nullptr; }

void unlock_handle(TK_Handle) {}

void dispose_handle(TK_Handle handle) {
    if (handle != nullptr) TK_FreeHandle(handle);
}

std::uint64_t handle_size(TK_Handle handle) { return handle != nullptr ? TK_GetHandleSize(handle) : 0; }

int resize_handle(std::uint64_t bytes, TK_Handle* handle) {
    if (handle == nullptr || *handle == nullptr) return kQX_BadParameter;
    TK_QuietErrors quiet;
    const int code =
        guarded([&] { return TK_ResizeHandle(site(Place::handles), "effect handle data", bytes, handle); });
    const int ended = quiet.end();
    return code != kQX_NoError ? code : ended;
}

}  // namespace qx
