// SPDX-License-Identifier: Apache-2.0
// The cross-module registry: it has the colour engine's procedures, or what a test puts in their place.
#include <atomic>

#include "platform/HCL_Registry.h"
#include "platform/standalone/SH_ColourEngine.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

int registry_error = 0;
std::atomic<std::uint32_t> generation{1};
FindProcedure other_procedures;

void* find_procedure(const char* label, const char* name) {
    if (other_procedures) return other_procedures(label, name);
    return FindColourProcedure(label, name);
}

}  // namespace

void SetRegistryError(int code) { registry_error = code; }

void SetRegistry(const FindProcedure& find) {
    other_procedures = find;
    generation.fetch_add(1, std::memory_order_release);
}

}  // namespace standalone

int HCL_GetXIFAddressProc(HCL_XIFAddressProc* proc) {
    if (standalone::registry_error != 0) return standalone::registry_error;
    *proc = standalone::find_procedure;
    return 0;
}

std::uint32_t HCL_GetXIFGeneration() { return standalone::generation.load(std::memory_order_acquire); }
