// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_InverseTable.h"

#include <algorithm>
#include <array>

#include "QX/compositing/QX_LinearLookup.h"

namespace qx {
namespace {

constexpr int kLast = 4096;
constexpr int kUpperHalf = 2049;

using Curve = std::array<std::int32_t, kLast + 1>;

/// The linear value at each multiple of 8, made to rise.
Curve rising_curve(const QX_LinearBlendingTables& tables) {
    Curve curve;
    for (int i = 0; i <= kLast; ++i) {
        const std::int32_t y = to_linear16(tables, 8 * i);
        curve[static_cast<std::size_t>(i)] = i == 0 ? y : std::max(y, curve[static_cast<std::size_t>(i - 1)]);
    }
    return curve;
}

}  // namespace

void invert_to_linear(QX_LinearBlendingTables& tables) {
    const Curve curve = rising_curve(tables);
    std::size_t i = 0;
    for (std::size_t j = 0; j <= kLast; ++j) {
        const auto y = static_cast<std::int32_t>(8 * j);
        while (i < kLast - 1 && (y > curve[i + 1] || (y == curve[i + 1] && i >= kUpperHalf))) ++i;
        const std::int32_t low = curve[i], high = curve[i + 1];
        auto x = static_cast<std::int32_t>(8 * i);
        if (y >= high && i >= kUpperHalf) {
            x += 8;
        } else if (y >= low && high != low) {
            x += ((high - low) / 2 + (y - low) * 8) / (high - low);
        }
        tables.from_linear[j] = static_cast<std::uint16_t>(x);
    }
}

}  // namespace qx
