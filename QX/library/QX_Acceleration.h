// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"

namespace qx {

/// What the acceleration layer is handed, in the form of a plug-in module's entry.
struct AccelerationRecord {
    std::int32_t selector;  ///< 0 starts, 1 stops (which does nothing)
    std::int32_t interface_number;
    std::int16_t major, minor;
    void** routines;                    ///< the table of slots
    void (*message)(const char* text);  ///< called with the text of a refusal
    void* const* ansi;                  ///< 19 math and text functions
    const std::uint8_t *multiply, *divide;
    void* (*calloc)(std::size_t, std::size_t);
    void (*free)(void*);
    void* (*malloc)(std::size_t);
    void* (*realloc)(void*, std::size_t);
    void (*exit)(int);
};

inline constexpr int kAccelerationInterface = 2, kAccelerationMajor = 2, kAccelerationMinor = 1;

/// The layer's one entry. Started, it keeps a copy of the table and writes wrappers that run the kept routines in
/// bands on the host's processors. With fewer than two bands it leaves the table alone.
/// @return 0 or the host's code
QX_EXPORT int acceleration_entry(const AccelerationRecord& record);

}  // namespace qx
