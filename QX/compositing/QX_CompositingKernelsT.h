// SPDX-License-Identifier: Apache-2.0
// All compositing kernels of one level, but for the steps into linear light.
#include "QX/compositing/QX_FiltersT.h"
#include "QX/compositing/QX_OnePassT.h"
#include "QX/compositing/QX_OwnRowsT.h"
#include "QX/compositing/QX_XferRowsT.h"

namespace qx::QX_ISA {

template <class M, class D, bool Masked> constexpr QX_RowFunc<typename D::Pixel> pick_row() {
    if constexpr (!modes::is_mode<M>) {
        return nullptr;
    } else if constexpr (!modes::has_row_of_its_own<M>) {
        return &blend_row<M, D, Masked>;
    } else if constexpr (kRegister > 0) {
        return nullptr;  // one pixel at a time at every level
    } else if constexpr (std::is_same_v<M, modes::MaskCrossfade>) {
        return &plain::crossfade_row<D>;
    } else {
        return &plain::dissolve_row<D, Masked>;
    }
}

template <class M, class D, bool Masked> constexpr QX_RowFunc<typename D::Pixel> pick_one_pass() {
    if constexpr (modes::is_mode<M>) {
        if constexpr (M::switches.pivot != Pivot::none || M::switches.behind_first) return &one_pass_row<M, D, Masked>;
    }
    return nullptr;
}

template <class D, class... Ms> constexpr RowSet<typename D::Pixel> make_rows(modes::List<Ms...>) {
    return {{{pick_row<Ms, D, false>()...}, {pick_row<Ms, D, true>()...}}};
}
template <class D, class... Ms> constexpr RowSet<typename D::Pixel> make_one_pass(modes::List<Ms...>) {
    return {{{pick_one_pass<Ms, D, false>()...}, {pick_one_pass<Ms, D, true>()...}}};
}

const CompositingKernels compositing_kernels{
    .rows = {make_rows<Depth8>(modes::All{}), make_rows<Depth16>(modes::All{}), make_rows<DepthFloat>(modes::All{})},
    .one_pass = {make_one_pass<Depth8>(modes::All{}), make_one_pass<Depth16>(modes::All{}),
                 make_one_pass<DepthFloat>(modes::All{})},
    .filters = {filter_set<Depth8>, filter_set<Depth16>, filter_set<DepthFloat>}};

}  // namespace qx::QX_ISA
