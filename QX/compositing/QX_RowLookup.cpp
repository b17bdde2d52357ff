// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_RowLookup.h"

#include <algorithm>

#include "QX/compositing/QX_LinearRowsT.h"

namespace qx {

namespace {

const CompositingKernels* kernels = &plain::compositing_kernels;
const PerDepth<LinearSteps>* steps = &plain::linear_steps;

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
    *row = found != nullptr ? found : own_row<typename D::Pixel>(Masked, xfer);
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

void choose_compositing_kernels(Level level) {
    kernels = &compositing_kernels_of(level);
    steps = &linear_steps_of(level);
}

template <class Pixel> const LinearSteps<Pixel>& linear_steps_now() { return steps->of<Pixel>(); }
template const LinearSteps<QX_Pixel8>& linear_steps_now();
template const LinearSteps<QX_Pixel16>& linear_steps_now();
template const LinearSteps<QX_PixelFloat>& linear_steps_now();

template <class Pixel> QX_RowFunc<Pixel> own_row(bool masked, int xfer) {
    const int place = modes::place_of(xfer);
    const QX_RowFunc<Pixel> best = kernels->rows.of<Pixel>().at[masked][place];
    return best != nullptr ? best : plain::compositing_kernels.rows.of<Pixel>().at[masked][place];
}

template <class Pixel> QX_RowFunc<Pixel> one_pass_row(const QX_BlendModeDescriptor<Pixel>& d, bool masked) {
    const QX_RowFunc<Pixel> row = kernels->one_pass.of<Pixel>().at[masked][modes::place_of(d.mode.xfer)];
    if (row == nullptr || d.mode.opacity == 0 || d.mode.opacity > DepthOf<Pixel>::full) return nullptr;
    if (d.row != own_row<Pixel>(masked, d.mode.xfer)) return nullptr;
    if (d.pre_post == 0) return d.behind_row == own_row<Pixel>(masked, xfer_behind) ? row : nullptr;
    const FilterSet<Pixel>& own = kernels->filters.of<Pixel>();
    const auto is_own = [&](QX_FilterFunc<Pixel> filter) {
        return std::find(std::begin(own.filter), std::end(own.filter), filter) != std::end(own.filter);
    };
    return is_own(d.pre_filter) && is_own(d.post_filter) && d.alpha_merge == own.merge ? row : nullptr;
}

template QX_RowFunc<QX_Pixel8> one_pass_row(const QX_BlendModeDescriptor<QX_Pixel8>&, bool);
template QX_RowFunc<QX_Pixel16> one_pass_row(const QX_BlendModeDescriptor<QX_Pixel16>&, bool);
template QX_RowFunc<QX_PixelFloat> one_pass_row(const QX_BlendModeDescriptor<QX_PixelFloat>&, bool);

const PerDepth<RowLookups> row_lookups{lookups<Depth8>, lookups<Depth16>, lookups<DepthFloat>};

}  // namespace qx
