// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_SoftLight.h"

#include <cmath>

namespace qx {

SoftLightTables soft_light;

namespace {

double soft_up(double x) { return (x <= 0.25 ? ((16 * x - 12) * x + 4) * x : std::sqrt(x)) - x; }
double soft_down(double x) { return (1 - x) * x; }

}  // namespace

void build_soft_light_tables() {
    for (int i = 0; i <= 4096; ++i) {
        const double x = i / 4096.0;
        soft_light.up16[i] = static_cast<std::uint16_t>(soft_up(x) * 32768 + 0.5);
        soft_light.down16[i] = static_cast<std::uint16_t>(soft_down(x) * 32768 + 0.5);
        soft_light.up_float[i] = static_cast<float>(soft_up(x));
        soft_light.down_float[i] = static_cast<float>(soft_down(x));
    }
    for (int i = 0; i < 256; ++i) {
        soft_light.curve8[i] = static_cast<std::uint8_t>(soft_down(i / 255.0) * 255 + 0.5);
        soft_light.curve8[256 + i] = static_cast<std::uint8_t>(soft_up(i / 255.0) * 255 + 0.5);
    }
}

}  // namespace qx
