// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_LinearBlendingTables.h"

#include <cmath>

#include "QX/compositing/QX_InverseTable.h"

void QX_BuildGammaBlendingTables(float gamma, QX_LinearBlendingTables* tables) {
    // As a profile holds it, so that tables by a profile of this power are the same.
    const double exponent = std::floor(static_cast<double>(gamma) * 65536 + 0.5) / 65536;
    for (std::uint32_t i = 0; i < 256; ++i) {
        // Powers in double differ in the last bit between processors; rounded to 16 bits they agree.
        const auto light = static_cast<float>(std::pow(qx::ramp_value(i) / 32768.0, exponent));
        tables->to_linear[i] = static_cast<std::uint16_t>(static_cast<double>(light) * 32768 + 0.5);
    }
    qx::invert_to_linear(*tables);
    tables->reserved = 0;
    tables->to_linear_gamma = static_cast<float>(exponent);
    tables->from_linear_gamma = 1.0f / tables->to_linear_gamma;
}
