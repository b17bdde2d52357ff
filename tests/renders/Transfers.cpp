// SPDX-License-Identifier: Apache-2.0
// Every mode at every depth: plain, masked, in linear light, with alpha kept and part of the opacity.
#include "Picture.h"

namespace renders {
namespace {

struct Kind {
    const char* name;
    float opacity;
    bool rgb_only;
    int mask;  ///< kind, -1 without one
    bool linear;
    int field;
};
constexpr Kind kKinds[] = {
    {"plain", 1, false, -1, false, 0},          {"partial", 0.6f, true, -1, false, 0},
    {"masked-alpha", 1, false, 0, false, 0},    {"masked-inverse", 0.7f, false, 1, false, 1},
    {"masked-luma", 1, true, 2, false, 2},      {"masked-inverse-luma", 1, false, 3, false, 0},
    {"linear", 1, false, -1, true, 0},          {"linear-partial", 0.6f, true, -1, true, 0},
    {"linear-masked", 0.7f, false, 2, true, 0},
};

/// Rows are longer than the runs of rows in linear light and end in the middle of a register.
template <class Pixel> void one(int xfer, const Kind& kind) {
    const auto seed = static_cast<std::uint64_t>(xfer + 10) * 10;
    Picture<Pixel> layer(301, 40, seed), mask(260, 36, seed + 1), out(290, 41, seed + 2);
    const QX_MaskWorld at = mask.mask(5, 2, kind.mask);
    const QX_CompositeModePlus mode(xfer, kind.opacity, nullptr, kind.rgb_only, 77);
    const bool masked = kind.mask >= 0 || xfer == xfer_mask_crossfade;
    const M_LRect rect{3, 1, 298, 39};
    const int code =
        QX_TransferRect(nullptr, 1, 0, kind.field, &rect, layer.record(), &mode, kind.linear ? gamma_tables() : nullptr,
                        masked ? &at : nullptr, -4, 2, out.record());
    tell("transfer/" + depth_name<Pixel>() + "/" + std::to_string(xfer) + "/" + kind.name, code, out);
}

}  // namespace

void transfers() {
    at_each_depth([]<class Pixel>(Pixel) {
        for (int xfer = kQX_FirstMode; xfer <= kQX_LastMode; ++xfer) {
            if (!QX_IsTransferMode(xfer)) continue;
            for (const Kind& kind : kKinds) one<Pixel>(xfer, kind);
        }
    });
}

}  // namespace renders
