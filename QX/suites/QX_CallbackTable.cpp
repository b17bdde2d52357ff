// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdio>
#include <cstring>

#include "QX/compositing/QX_Blend.h"
#include "QX/drawing/QX_Drawing.h"
#include "QX/filters/QX_GaussianKernel.h"
#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_ColourModels.h"
#include "QX/pixelops/QX_Fill.h"
#include "QX/pixelops/QX_ImagePlanes.h"
#include "QX/pixelops/QX_Premul.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/suites/QX_CallbackBlock.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/suites/QX_General.h"
#include "QX/suites/QX_Handles.h"
#include "QX/suites/QX_SuiteRoutines.h"
#include "QX/world/QX_PixelData.h"
#include "QX/world/QX_VideoFrameFactory.h"
#include "platform/M_Tables.h"

namespace qx {

namespace {

template <class Routine> void* address(Routine* routine) { return reinterpret_cast<void*>(routine); }
/// Picks the form in double of an overloaded function.
void* unary(double (*routine)(double)) { return address(routine); }
void* binary(double (*routine)(double, double)) { return address(routine); }

struct AnsiBlock {
    void* routine[kAnsiCount] = {
        unary(&::atan),      binary(&::atan2),   unary(&::ceil),    unary(&::cos),     unary(&::exp),
        unary(&::fabs),      unary(&::floor),    binary(&::M_fmod), binary(&QX_Hypot), unary(&::log),
        unary(&::log10),     binary(&::pow),     unary(&::sin),     unary(&::sqrt),    unary(&::tan),
        address(&::sprintf), address(&::strcpy), unary(&::asin),    unary(&::acos),    nullptr,
    };
};

}  // namespace

void* const* ansi_block() {
    static const AnsiBlock block;
    return block.routine;
}

void* private_routine(Private routine) {
    static void* const table[] = {
#define X(name, ...) address(&__VA_ARGS__),
        QX_PRIVATE_ROUTINES(X)
#undef X
    };
    return table[static_cast<int>(routine)];
}

}  // namespace qx
