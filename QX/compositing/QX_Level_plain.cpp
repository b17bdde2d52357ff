// SPDX-License-Identifier: Apache-2.0
// The plain level: one pixel a step, every mode at every depth.
#include <utility>

#include "QX/compositing/QX_Levels.h"
#include "QX/compositing/QX_PixelAccess.h"

#define QX_ISA plain
namespace qx::plain {
constexpr int kStretch = 0;
template <class Pixel> struct Bundles {
    using Middle = Planes<typename DepthOf<Pixel>::Lane>;
    using Tail = Middle;
    using Alphas = void;
};
}  // namespace qx::plain

#include "QX/compositing/QX_FiltersT.h"
#include "QX/compositing/QX_OwnRowsT.h"
#include "QX/compositing/QX_XferRowsT.h"

namespace qx::plain {

template <class M, class D, bool Masked> constexpr QX_RowFunc<typename D::Pixel> pick_row() {
    if constexpr (!modes::is_mode<M>) {
        return nullptr;
    } else if constexpr (std::is_same_v<M, modes::MaskCrossfade>) {
        return &crossfade_row<D>;
    } else if constexpr (std::is_same_v<M, modes::Dissolve>) {
        return &dissolve_row<D, Masked>;
    } else {
        return &blend_row<M, D, Masked>;
    }
}

template <class D, class... Ms> constexpr RowSet<typename D::Pixel> make_rows(modes::List<Ms...>) {
    return {{{pick_row<Ms, D, false>()...}, {pick_row<Ms, D, true>()...}}};
}

const Level level{
    .rows = {make_rows<Depth8>(modes::All{}), make_rows<Depth16>(modes::All{}), make_rows<DepthFloat>(modes::All{})},
    .filters = {filter_set<Depth8>, filter_set<Depth16>, filter_set<DepthFloat>}};

}  // namespace qx::plain
