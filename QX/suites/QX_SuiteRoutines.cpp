// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_SuiteRoutines.h"

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/world/QX_EffectWorld.h"
#include "QX/world/QX_GPU.h"
#include "platform/TK_CPU.h"

namespace qx {

namespace {

int processor_flag(int index, bool* is_set) {
    if (is_set == nullptr) return report_invalid_parameter(Place::suites);
    *is_set = TK_G_CPU_DataP->flags[index] != 0;
    return kQX_NoError;
}

}  // namespace

int processor_flag0(bool* is_set) { return processor_flag(0, is_set); }
int processor_flag1(bool* is_set) { return processor_flag(1, is_set); }
int processor_flag2(bool* is_set) { return processor_flag(2, is_set); }
int processor_flag3(bool* is_set) { return processor_flag(3, is_set); }

int new_world_by_format(void*, int width, int height, int clear, std::uint32_t format, QX_LayerDef* world) {
    if (world == nullptr) return report_null_world();
    if (vn::qx::GPU::IsPixelFormatGPUSupported(static_cast<int>(format))) return report_gpu_world(Place::suites);
    return guarded([&] {
        int depth = 0;
        throw_if(QXp_PixelFormatToEffectWorldDepth(format, &depth));
        throw_if(QX_NewEffectWorld(width, height, depth, 0, clear != 0 ? 1 : 0, world));
    });
}

int pixel_format_of_world(const QX_LayerDef* world, std::uint32_t* format) {
    if (world == nullptr) {
        return report_failed_verification(Place::suites, "Bad parameter to QXp_SuiteGetPixelFormat()");
    }
    if (format == nullptr) return report_invalid_parameter(Place::suites);
    return guarded([&] {
        std::uint32_t found = kQX_PixelFormat_Bad;
        throw_if(QXp_EffectWorldDepthToPixelFormat(QXp_WorldDepth(world), is_gpu_world(world), &found));
        *format = found;
    });
}

}  // namespace qx
