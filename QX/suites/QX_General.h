// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"

/// sqrt(x * x + y * y), without care for overflow.
QX_EXPORT double QX_Hypot(double x, double y);

/// Old services of the host for effects. Selectors: 2 multiply table, 3 divide table, 4 and 5 trigonometry
/// table (stored in `*result`), 6 and 7 end the colour tables, 8 and 9 the trigonometry table. Others do nothing.
/// @return what the host routine returned, else 0
QX_EXPORT int QX_AppCallback(void* ref, int selector, void** result, ...);
