// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <exception>

#include "platform/Platform_Export.h"

/// Finds a procedure in the cross-module registry by the label of its interface and its name.
/// @return its address, or null when no module has registered it
using HCL_XIFAddressProc = void* (*)(const char* label, const char* name);

/// @return 0 with the registry's procedure in `*proc`, or an error code.
PLATFORM_EXPORT int HCL_GetXIFAddressProc(HCL_XIFAddressProc* proc);

/// Changes whenever what is registered changes: what was found before has to be asked for again. Any thread.
PLATFORM_EXPORT std::uint32_t HCL_GetXIFGeneration();

/// An interface that could not be had. The text is static.
class BRVException : public std::exception {
public:
    explicit BRVException(const char* text) : text_(text) {}
    const char* what() const noexcept override { return text_; }

private:
    const char* text_;
};
