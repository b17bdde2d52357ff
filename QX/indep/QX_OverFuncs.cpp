// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Slots.h"

void* QXp_G_OverFuncs[kQX_SlotCount];

int QX_SetOverrideFunc(int index, void* routine) {
    if (index < 1 || index >= kQX_SlotCount) return kQX_FailedVerification;
    QXp_G_OverFuncs[index] = routine;
    return kQX_NoError;
}
