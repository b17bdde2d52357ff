// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_LinearBlendingTables.h"

#include <cmath>

void QX_BuildGammaBlendingTables(float gamma, QX_LinearBlendingTables* tables) {
    // Powers in double differ in the last bit between processors; rounded to 16 bits they agree.
    const auto code = [](double v) { return static_cast<std::uint16_t>(v * 32768 + 0.5); };
    const double exponent = static_cast<double>(gamma);
    for (int i = 0; i < 256; ++i) tables->to_linear[i] = code(std::pow(i / 255.0, exponent));
    for (int i = 0; i <= 4096; ++i) tables->from_linear[i] = code(std::pow(i / 4096.0, 1 / exponent));
    tables->reserved = 0;
    tables->to_linear_gamma = gamma;
    tables->from_linear_gamma = 1.0f / gamma;
}
