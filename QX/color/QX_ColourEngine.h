// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "platform/HCL_CMX.h"
#include "platform/HCL_Registry.h"

/// The procedures of the host's colour engine that the library calls.
namespace qx {

#define QX_CMX_PROCEDURES(X) \
    X(ProfileFromCode)       \
    X(MainMonitorProfile)    \
    X(MonitorProfileN)       \
    X(MakeColorTransform)    \
    X(ReferenceTransform)    \
    X(UnReferenceTransform)  \
    X(ApplyTransform)        \
    X(ConcatTransforms)      \
    X(OptimizeTransform)     \
    X(ExtractCalRGB)

struct ColourEngine {
#define X(name) CMX::name* name = nullptr;
    QX_CMX_PROCEDURES(X)
#undef X
    std::uint32_t generation = 0;          ///< of the registry that they are from
    const ColourEngine* before = nullptr;  ///< other threads may still use it
};

/// Asks a registry for all procedures, from the last to the first. Throws BRVException where one is missing.
/// @return what others find too until the registry changes
QX_EXPORT const ColourEngine* load_colour_engine(HCL_XIFAddressProc registry);
/// Nothing may be using it. The next call of the engine loads it again.
QX_EXPORT void unload_colour_engine();

/// The engine as the registry now has it; null where it has none, and before the library's start. Any thread.
QX_EXPORT const ColourEngine* colour_engine() noexcept;

/// Calls a procedure: call_colour_engine(&ColourEngine::ApplyTransform, ...). An engine that is not there has failed.
template <class... Parameters, class... Arguments>
CMX_Error call_colour_engine(CMX_Error (*ColourEngine::*procedure)(Parameters...), Arguments... arguments) {
    const ColourEngine* const engine = colour_engine();
    return engine != nullptr ? (engine->*procedure)(arguments...) : kCMX_NotLoaded;
}
/// The same for all that throws the engine's errors.
template <class... Parameters, class... Arguments>
void must_call_colour_engine(CMX_Error (*ColourEngine::*procedure)(Parameters...), Arguments... arguments) {
    HCL_CMX_ETX(call_colour_engine(procedure, arguments...));
}

}  // namespace qx
