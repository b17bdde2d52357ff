// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"

/// Registers the suites, which are tables of routines by name and version, with the host's broker, and keeps its basic
/// suite for optical flow. Alone on one thread, after QX_Birth: tables are filled from the slots and the callback block
/// at each call, and follow no later change of a slot. What they hold is told in QX/QX_Effect.h.
/// @return 0, or the code of the first registration that fails, thrown or returned; those before it stay
QX_EXPORT int QX_InstallSuites(void);
