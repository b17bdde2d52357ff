// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_Modes.h"
#include "QX/compositing/QX_RowLookup.h"
#include "QX/compositing/QX_Rows.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"

namespace {

using namespace qx;

/// Where a depth's routines stand in the table of slots.
struct DepthSlots {
    int filters, merge, lookups;
};
template <class Pixel> constexpr DepthSlots kSlots{106, 112, 102};
template <> constexpr DepthSlots kSlots<QX_Pixel8>{35, 41, 94};
template <> constexpr DepthSlots kSlots<QX_Pixel16>{72, 78, 98};

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

template <class Pixel> QX_RowFunc<Pixel> look_up(int k, int xfer) {
    if (k < 0 || k > 3) {
        throw report_failed_verification(93, "Something went wrong attempting get the blending function.");
    }
    QX_RowFunc<Pixel> row = nullptr;
    const int code = slot_at<RowLookupFn<Pixel>>(kSlots<Pixel>.lookups + k)(xfer, &row);
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
    const int k = (has_mask ? 2 : 0) + (linear != nullptr ? 1 : 0);
    row = look_up<Pixel>(k, mode.xfer);
    behind_row = look_up<Pixel>(k, xfer_behind);
    alpha_merge = slot_at<MergeFn<Pixel>>(kSlots<Pixel>.merge);

    const Switches* switches = find_switches(mode.xfer, modes::All{});
    if (switches == nullptr) {
        report_unimplemented_mode();
        return;
    }
    behind_first = switches->behind_first;
    keeps_alpha = switches->keeps_alpha;
    merges_alpha = switches->merges_alpha;
    if (switches->pivot != Pivot::none) {
        const int pair = kSlots<Pixel>.filters + 2 * (static_cast<int>(switches->pivot) - 1);
        pre_post = 1;
        pre_filter = slot_at<FilterFn<Pixel>>(pair);
        post_filter = slot_at<FilterFn<Pixel>>(pair + 1);
    }
}

template struct QX_BlendModeDescriptor<QX_Pixel8>;
template struct QX_BlendModeDescriptor<QX_Pixel16>;
template struct QX_BlendModeDescriptor<QX_PixelFloat>;
