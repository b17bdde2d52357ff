// SPDX-License-Identifier: Apache-2.0
// Body of a vector level: the including file names it by QX_ISA and gives `Wide` and `WideFloat`, the vector types of
// its registers. It brings what the benches show a gain for: at 8 bits every mode that has a frame, the filters and
// the alpha merges; at float xfer_over without a mask.

#include "QX/compositing/QX_Levels.h"
#include "QX/compositing/QX_PixelAccess.h"

namespace qx::QX_ISA {

constexpr int kStretch = 32;

template <class Pixel> struct Bundles {
    using Middle = Register<WideFloat>;
    using Tail = Register<Float4>;
    using Alphas = AlphaLanesFloat<WideFloat>;
};
template <> struct Bundles<QX_Pixel8> {
    using Middle = Planes<Wide>;
    using Tail = Planes<std::int32_t>;
    using Alphas = AlphaLanes8<Wide>;
};
template <> struct Bundles<QX_Pixel16> {
    using Middle = Planes<std::int32_t>;
    using Tail = Planes<std::int32_t>;
    using Alphas = AlphaLanes16<Wide>;
};

}  // namespace qx::QX_ISA

#include "QX/compositing/QX_FiltersT.h"
#include "QX/compositing/QX_XferRowsT.h"

namespace qx::QX_ISA {

/// With four lanes the division of the black filter gains nothing over the table of the plain form.
constexpr FilterSet<QX_Pixel8> filters8() {
    FilterSet<QX_Pixel8> set = filter_set<Depth8>;
    set.filter[0] = &multiply_row8;
    if (sizeof(Wide) == 16) set.filter[1] = nullptr;
    return set;
}

/// True for the modes that this level brings a row of its own for.
template <class M, class D, bool Masked> constexpr bool has_vector_row() {
    if constexpr (!modes::is_mode<M> || modes::has_row_of_its_own<M>) {
        return false;
    } else {
        return D::number == 8 || (std::is_same_v<M, modes::Over> && !Masked);
    }
}

template <class M, class D, bool Masked> constexpr QX_RowFunc<typename D::Pixel> pick_row() {
    if constexpr (has_vector_row<M, D, Masked>()) {
        return &blend_row<M, D, Masked>;
    } else {
        return nullptr;
    }
}

template <class D, class... Ms> constexpr RowSet<typename D::Pixel> make_rows(modes::List<Ms...>) {
    return {{{pick_row<Ms, D, false>()...}, {pick_row<Ms, D, true>()...}}};
}

constexpr Level make_level() {
    return {.rows = {make_rows<Depth8>(modes::All{}), {}, make_rows<DepthFloat>(modes::All{})},
            .filters = {filters8(), {{}, &merge_row<Depth16>}, {{}, &merge_row<DepthFloat>}}};
}

}  // namespace qx::QX_ISA
