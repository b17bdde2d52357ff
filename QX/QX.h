// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Everything that the module QX exports.
#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/compositing/QX_Rows.h"
#include "QX/compositing/QX_SpecialCasePixelBlit.h"
#include "QX/compositing/QX_TransferRect.h"
#include "QX/compositing/QX_XferTables.h"
#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Fill.h"
#include "QX/indep/QX_Frame.h"
#include "QX/indep/QX_Noise.h"
#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_World.h"
#include "QX/indep/QX_WorldDepth.h"
#include "QX/iterate/QX_Bands.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/library/QX_CallbackBlock.h"
#include "QX/library/QX_Library.h"
