// SPDX-License-Identifier: Apache-2.0
#include "QX/library/QX_Library.h"

#include <algorithm>
#include <cstdlib>

#include "QX/color/QX_ColourEngine.h"
#include "QX/compositing/QX_SoftLight.h"
#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/library/QX_Acceleration.h"
#include "QX/library/QX_FillSlots.h"
#include "QX/pixelops/QX_Noise.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/world/QX_Chunk.h"
#include "QX/world/QX_WorldX.h"
#include "platform/ALOG.h"
#include "platform/HCL_Registry.h"
#include "platform/M_Tables.h"
#include "platform/TK_CPU.h"

namespace {

constexpr int kMilestone = 10;
constexpr int kStartPixels = 1024;

enum AccelerationSelector { kStart = 0, kStop = 1 };

int call_acceleration(AccelerationSelector selector) {
    return qx::acceleration_entry(
        {.selector = selector,
         .interface_number = qx::kAccelerationInterface,
         .major = qx::kAccelerationMajor,
         .minor = qx::kAccelerationMinor,
         .routines = QXp_G_OverFuncs,
         .message = [](const char* text) { qx::report_failed_verification(qx::Place::birth, text); },
         .ansi = qx::ansi_block(),
         .multiply = QXp_G_fcm_table,
         .divide = QXp_G_fcd_table,
         .calloc = &std::calloc,
         .free = &std::free,
         .malloc = &std::malloc,
         .realloc = &std::realloc,
         .exit = &std::exit});
}

/// The scratch that single calls share, at its size of the start.
int scratch_of_start(bool fresh) {
    QX_ScratchBlock scratch;
    return QXp_ReallocScratch(kStartPixels, 1, fresh, &scratch);
}

void bind_registry(HCL_XIFAddressProc registry) {
    try {
        qx::load_colour_engine(registry);
    } catch (const BRVException&) {
        throw int{kQX_RegistryFailed};
    }
}

}  // namespace

int QX_Birth() {
    ALOG_Log(kMilestone, "QX", "Birth", "QX Birth");
    return qx::guarded([] {
        std::fill_n(QXp_G_OverFuncs, kQX_SlotCount, nullptr);
        qx::reset_live_world_count();
        qx::reset_live_chunk_count();
        qx::throw_if(M_PrepareFCMD(true, false, 0, &QXp_G_fcm_table, &QXp_G_fcd_table));
        qx::throw_if(qx::start_noise());
        qx::build_soft_light_tables();
        qx::throw_if(scratch_of_start(false));
        const auto& flags = TK_G_CPU_DataP->flags;
        qx::fill_slots({.vector = flags[kTK_CPU_Vector] != 0,
                        .faster = flags[kTK_CPU_FasterRows] != 0,
                        .widest = flags[kTK_CPU_WidestRows] != 0});
        qx::throw_if(call_acceleration(kStart));
        HCL_XIFAddressProc registry = nullptr;
        qx::throw_if(HCL_GetXIFAddressProc(&registry));
        bind_registry(registry);
    });
}

int QX_Death() {
    ALOG_Log(kMilestone, "QX", "Death", "QX Death");
    const int tables = M_UnprepareFCMD();
    const int layer = call_acceleration(kStop);
    qx::free_shared_scratch();
    qx::unload_colour_engine();
    return tables != 0 ? tables : layer;
}

int QX_FreeUpSomeMemory() {
    return qx::guarded([] { return scratch_of_start(true); });
}
