// SPDX-License-Identifier: Apache-2.0
// Body of the rows of mattes against a colour, for one level: one text for the three depths.
#include "QX/indep/QX_Depth.h"
#include "QX/pixelops/QX_MatteKernels.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// What the colour gave is taken off, and the rest divided.
template <class D, class V> QX_INLINE V separated(V c, V m, V a) {
    const V rest = c - D::mul(m, D::comp(a));
    return D::div_by_alpha(rest < 0 ? V{} : rest, a);
}

template <class D, bool Forward, class Pixel = typename D::Pixel>
void matte_row(std::int32_t count, const Pixel* src, const Pixel& colour, Pixel* dst) {
    using P = Colours<D, kRegister>;
    using V = typename P::Lane;
    Pixel colours[pixels_in<P>];
    for (Pixel& each : colours) each = colour;
    const P matte = load_pixels<P, Channels::as_stored>(colours);
    for_bundles<P, Pixel>(count, src, dst, [&](const Pixel* from, Pixel* to) QX_LAMBDA {
        const P p = load_pixels<P, Channels::as_stored>(from);
        const P made = with_colours(
            p.a, p, matte, [&](V c, V m) QX_LAMBDA { return Forward ? D::mix(m, c, p.a) : separated<D>(c, m, p.a); });
        const auto full = p.a >= D::full, seen = p.a > 0;
        // Nor where alpha is no number.
        store_pixels(to, Forward ? select(full, p, made) : select(seen, select(full, p, made), p));
    });
}

const MatteKernels matte_kernels{{&matte_row<Depth8, true>, &matte_row<Depth8, false>},
                                 {&matte_row<Depth16, true>, &matte_row<Depth16, false>},
                                 {&matte_row<DepthFloat, true>, &matte_row<DepthFloat, false>}};

}  // namespace qx::QX_ISA
