// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_RowLookup.h"

#include "QX/compositing/QX_LinearRowsT.h"

namespace qx {

namespace {

const Level* best_level = &plain::level;

template <class Pixel, bool Masked> QX_RowFunc<Pixel> stored_row(int place) {
    const QX_RowFunc<Pixel> best = best_level->rows.of<Pixel>().at[Masked][place];
    return best != nullptr ? best : plain::level.rows.of<Pixel>().at[Masked][place];
}

/// Rows in linear light by place; null where a mode copies, which is the same in any light.
template <class M, class D, bool Masked> constexpr QX_RowFunc<typename D::Pixel> pick_linear() {
    if constexpr (modes::is_mode<M>) {
        if constexpr (!M::copies) return &linear_row<M, D, Masked>;
    }
    return nullptr;
}
template <class D, bool Masked, class... Ms>
QX_RowFunc<typename D::Pixel> linear_row_at(int place, modes::List<Ms...>) {
    static constexpr QX_RowFunc<typename D::Pixel> rows[] = {pick_linear<Ms, D, Masked>()...};
    return rows[place];
}

template <class D, bool Masked, bool Linear> int lookup(int xfer, QX_RowFunc<typename D::Pixel>* row) {
    if (!QX_IsTransferMode(xfer)) return report_unimplemented_mode();
    const int place = modes::place_of(xfer);
    QX_RowFunc<typename D::Pixel> found = Linear ? linear_row_at<D, Masked>(place, modes::All{}) : nullptr;
    *row = found != nullptr ? found : stored_row<typename D::Pixel, Masked>(place);
    return kQX_NoError;
}

template <class D>
constexpr RowLookups<typename D::Pixel> lookups{
    {&lookup<D, false, false>, &lookup<D, false, true>, &lookup<D, true, false>, &lookup<D, true, true>}};

}  // namespace

int report_unimplemented_mode() {
    report_text(Place::unimplemented_mode, Text::unimplemented_mode);
    return kQX_UnimplementedMode;
}

void choose_row_levels(const Level* best) { best_level = best; }

const PerDepth<RowLookups> row_lookups{lookups<Depth8>, lookups<Depth16>, lookups<DepthFloat>};

}  // namespace qx
