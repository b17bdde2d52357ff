// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstring>
#include <ostream>
#include <sstream>
#include <string>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_LinearBlendingTables.h"

namespace qx::test {

/// Floats agree by their bits, save that one NaN is as good as another.
inline bool same_channel(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}
inline bool same_channel(int a, int b) { return a == b; }

template <class Pixel> bool same_pixel(const Pixel& a, const Pixel& b) {
    return same_channel(a.alpha, b.alpha) && same_channel(a.red, b.red) && same_channel(a.green, b.green) &&
           same_channel(a.blue, b.blue);
}

template <class Pixel> std::string text_of(const Pixel& p) {
    std::ostringstream out;
    out.precision(9);
    out << '(' << +p.alpha << ", " << +p.red << ", " << +p.green << ", " << +p.blue << ')';
    return out.str();
}

inline const char* name_of(int xfer) {
    switch (xfer) {
#define X(number, name) \
    case number:        \
        return #name;
        QX_TRANSFER_MODES(X)
#undef X
        default:
            return "none";
    }
}

inline QX_LinearBlendingTables tables_of_gamma(float gamma) {
    QX_LinearBlendingTables tables;
    QX_BuildGammaBlendingTables(gamma, &tables);
    return tables;
}

}  // namespace qx::test
