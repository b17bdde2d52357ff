// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_UnoKernels.h"

namespace {

const qx::UnoKernels* kernels = &qx::plain::uno_kernels;

}  // namespace

const qx::UnoKernels& qx::chosen_uno_kernels() { return *kernels; }
void qx::choose_uno_kernels(Level level) { kernels = &uno_kernels_of(level); }
