// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Multiply and divide of 8-bit channels by an 8-bit alpha: entry (alpha * 256 + channel), 65536 bytes each.
/// The host's; set by QX_Birth. Row 0 of the divide table is 255.
QX_EXPORT extern const std::uint8_t* QXp_G_fcm_table;
QX_EXPORT extern const std::uint8_t* QXp_G_fcd_table;
