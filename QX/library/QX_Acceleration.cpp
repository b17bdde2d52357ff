// SPDX-License-Identifier: Apache-2.0
#include "QX/library/QX_Acceleration.h"

#include <algorithm>

#include "QX/geometry/QX_GeometrySlots.h"
#include "QX/iterate/QX_IterateSlots.h"
#include "QX/iterate/QX_ParallelRun.h"
#include "QX/pixelops/QX_PixelopsSlots.h"
#include "platform/TK_CPU.h"

namespace qx {

namespace {

constexpr int kStart = 0;
constexpr const char* kRefusal = "The generic acceleration module does not work with this version of Vanteon";

/// Each family hands in its own wrappers.
void write_wrappers(void** routines) {
    add_iterate_bands(routines);
    add_premul_bands(routines);
    add_transform_bands(routines);
}

}  // namespace

int acceleration_entry(const AccelerationRecord& record) {
    if (record.selector != kStart) return 0;
    if (record.interface_number != kAccelerationInterface || record.major != kAccelerationMajor) {
        if (record.message != nullptr) record.message(kRefusal);
        return 0;
    }
    std::int32_t count = 0;
    if (const int code = TK_GetNumThreads(&count)) return code;
    acceleration.bands = std::min(count, kMaxBands);
    std::copy_n(record.routines, kQX_SlotCount, acceleration.saved);
    if (acceleration.bands >= 2) write_wrappers(record.routines);
    return 0;
}

}  // namespace qx
