// SPDX-License-Identifier: Apache-2.0
// The cross-module registry. No module of the stand-alone host has registered a procedure yet.
#include "platform/HCL_Registry.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

int registry_error = 0;

void* FindProcedure(const char*, const char*) { return nullptr; }

}  // namespace

void SetRegistryError(int code) { registry_error = code; }

}  // namespace standalone

int HCL_GetXIFAddressProc(HCL_XIFAddressProc* proc) {
    if (standalone::registry_error != 0) return standalone::registry_error;
    *proc = standalone::FindProcedure;
    return 0;
}
