// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/QX_Effect.h"

#ifdef __cplusplus
extern "C" {
#endif
/// Acquires every suite, calls each entry of suites and block once, looks at what it did, and releases all.
/// @param block  straight alpha, best quality
/// @return null, or the line that failed
const char* look_through_c_eyes(const QXE_BasicSuite* basic, const QXE_CallbackBlock* block);
#ifdef __cplusplus
}
#endif
