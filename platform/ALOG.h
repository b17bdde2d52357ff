// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"

/// One line for the host's log. Levels rise with detail; 10 is for milestones of a library's life.
PLATFORM_EXPORT void ALOG_Log(int level, const char* module, const char* section, const char* text);
