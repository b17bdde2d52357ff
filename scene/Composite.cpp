// SPDX-License-Identifier: Apache-2.0
#include "scene/Composite.h"

#include <algorithm>
#include <atomic>

#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_Area.h"
#include "QX/iterate/QX_Bands.h"
#include "platform/M_Geometry.h"
#include "platform/standalone/Host.h"
#include "platform/tesselcore_Threads.h"
#include "scene/RowCount.h"
#include "scene/Transform.h"

namespace qx::scene {
namespace {

/// Modes whose rows are not alone: the seed runs from row to row, or what lies outside the rectangle changes too.
bool must_stay_whole(int mode) {
    return mode == xfer_dissolve || mode == xfer_alpha_multiply || mode == xfer_alpha_multiply_luma;
}

M_LRect bounds_at(const QX_World& world, int x, int y) { return M_OffsetLRect(whole_of(world), x, y); }

/// What the layer covers of the background. @return false when that is nothing
bool clip(const Transfer& t, const QX_World& background, M_LRect* rect) {
    if (!M_SectLRect(bounds_at(*t.layer, t.x, t.y), whole_of(background), rect)) return false;
    const bool clips = t.mask != nullptr && (t.mask_kind & 1) == 0;
    return !clips || M_SectLRect(*rect, bounds_at(*t.mask, t.mask_x, t.mask_y), rect);
}

int transfer_band(const Transfer& t, TransferRecords records, const M_LRect& rect, int depth, RowCount& rows) {
    if (rows.stops()) return kQX_Interrupted;
    OwnScratch scratch;
    int code = scratch.allocate(rect.right - rect.left, depth / 8, false);
    if (code != 0) return code;
    RowPart part(rows, rect.bottom - rect.top);
    const QX_ProgressInfo info = part.info();
    const M_LRect source = M_OffsetLRect(rect, -t.x, -t.y);
    code = QX_TransferRectPlus(&info, 0, 0, t.field, &source, &records.layer, &records.mode, t.tables, records.mask(),
                               scratch.get(), rect.left, rect.top, &records.background);
    if (code == 0) part.finish();
    return code;
}

int transfer(const Transfer& t, QX_World& background, pictures::Watch& watch) {
    M_LRect rect{};
    if (!clip(t, background, &rect)) return 0;
    const int depth = background.Depth();
    const TransferRecords records(t, background);
    RowCount rows(watch, rect.bottom - rect.top);
    const int limit = must_stay_whole(t.mode) ? 1 : std::min(standalone::BandCount(), kMaxBands);
    const Bands bands(rect, limit);
    std::atomic<int> first_code{0};
    const auto task = [&](int i) {
        if (first_code.load() != 0) return;
        const int code = transfer_band(t, records, bands[i], depth, rows);
        int none = 0;
        if (code != 0) first_code.compare_exchange_strong(none, code);
    };
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, bands.count());
    return first_code.load();
}

}  // namespace

int composite(const Transfer& t, QX_World& background, pictures::Watch& watch) {
    return (t.matrices.empty() ? transfer : transform)(t, background, watch);
}

}  // namespace qx::scene
