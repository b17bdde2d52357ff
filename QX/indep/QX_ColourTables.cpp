// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_ColourTables.h"

const std::uint8_t* QXp_G_fcm_table = nullptr;
const std::uint8_t* QXp_G_fcd_table = nullptr;
