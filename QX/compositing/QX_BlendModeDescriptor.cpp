// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_Modes.h"
#include "QX/compositing/QX_RowLookup.h"
#include "QX/compositing/QX_Rows.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_SlotsOf.h"

namespace {

using namespace qx;

/// Switches of a mode by its number; null for a number that is none.
template <class... Ms> const Switches* find_switches(int xfer, modes::List<Ms...>) {
    static constexpr auto of = []<class M>(M*) {
        if constexpr (modes::is_mode<M>) {
            return M::switches;
        } else {
            return Switches{};
        }
    };
    static constexpr Switches all[] = {of(static_cast<Ms*>(nullptr))...};
    return QX_IsTransferMode(xfer) ? &all[modes::place_of(xfer)] : nullptr;
}

template <class Pixel> QX_RowFunc<Pixel> look_up(bool masked, bool linear, int xfer) {
    QX_RowFunc<Pixel> row = nullptr;
    const int code = lookup_slot<Pixel>(masked, linear)(xfer, &row);
    return code == kQX_NoError ? row : nullptr;
}

}  // namespace

template <class Pixel>
QX_BlendModeDescriptor<Pixel>::QX_BlendModeDescriptor(const QX_BlendingMode<Pixel>& blending, bool has_mask,
                                                      const QX_LinearBlendingTables* linear)
    : mode(blending),
      pre_filter(nullptr),
      post_filter(nullptr),
      pre_post(0),
      behind_first(0),
      keeps_alpha(0),
      merges_alpha(0),
      tables(linear) {
    row = look_up<Pixel>(has_mask, linear != nullptr, mode.xfer);
    behind_row = look_up<Pixel>(has_mask, linear != nullptr, xfer_behind);
    alpha_merge = slot<SlotsOf<Pixel>.merge>();

    const Switches* switches = find_switches(mode.xfer, modes::All{});
    if (switches == nullptr) {
        report_unimplemented_mode();
        return;
    }
    behind_first = switches->behind_first;
    keeps_alpha = switches->keeps_alpha;
    merges_alpha = switches->merges_alpha;
    if (switches->pivot != Pivot::none) {
        pre_post = 1;
        const int pair = static_cast<int>(switches->pivot) - static_cast<int>(Pivot::black);
        pre_filter = filter_slot<Pixel>(filter_place(pair, true));
        post_filter = filter_slot<Pixel>(filter_place(pair, false));
    }
}

template struct QX_BlendModeDescriptor<QX_Pixel8>;
template struct QX_BlendModeDescriptor<QX_Pixel16>;
template struct QX_BlendModeDescriptor<QX_PixelFloat>;
