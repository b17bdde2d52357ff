// SPDX-License-Identifier: Apache-2.0
#include "scene/Composite.h"

#include <algorithm>
#include <atomic>

#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_Errors.h"
#include "QX/iterate/QX_Bands.h"
#include "platform/M_Geometry.h"
#include "platform/standalone/Standalone.h"
#include "platform/tesselcore_Threads.h"
#include "scene/Transform.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Progress.h"

namespace qx::tool {
namespace {

/// Modes whose rows are not alone: the seed runs from row to row, or what lies outside the rectangle changes too.
bool must_stay_whole(int mode) {
    return mode == xfer_dissolve || mode == xfer_alpha_multiply || mode == xfer_alpha_multiply_luma;
}

M_LRect bounds(const QX_World& world, int x, int y) { return M_OffsetLRect({0, 0, world.width, world.height}, x, y); }

/// What the layer covers of the background. @return false when that is nothing
bool clip(const Transfer& t, const QX_World& background, M_LRect* rect) {
    if (!M_SectLRect(bounds(*t.layer, t.x, t.y), bounds(background, 0, 0), rect)) return false;
    const bool clips = t.mask != nullptr && (t.mask_kind & 1) == 0;
    return !clips || M_SectLRect(*rect, bounds(*t.mask, t.mask_x, t.mask_y), rect);
}

/// One band's part in the progress of all.
struct BandProgress {
    Progress* all;
    int rows;  ///< told so far

    static int advance(void* refcon, std::int32_t count, std::int32_t) {
        auto& band = *static_cast<BandProgress*>(refcon);
        band.tell(count);
        return interrupted() ? kQX_Interrupted : 0;
    }
    static int abort(void*) { return interrupted() ? kQX_Interrupted : 0; }
    void tell(int count) {
        if (all != nullptr) all->advance(count - rows);
        rows = count;
    }
};

class Run {
public:
    Run(const Transfer& transfer, QX_World& background, Progress* progress)
        : transfer_(transfer),
          mode_(transfer.mode, transfer.opacity, nullptr, transfer.rgb_only, transfer.seed),
          progress_(progress) {
        transfer.layer->FillOutEffectWorld(&layer_);
        background.FillOutEffectWorld(&background_);
        if (transfer.mask == nullptr) return;
        transfer.mask->FillOutEffectWorld(&mask_.world);
        mask_.x = transfer.mask_x;
        mask_.y = transfer.mask_y;
        mask_.flags = transfer.mask_kind;
    }

    int band(const M_LRect& rect, int depth) {
        if (interrupted()) return kQX_Interrupted;
        OwnScratch scratch;
        const int code = scratch.allocate(rect.right - rect.left, depth / 8, false);
        if (code != 0) return code;
        BandProgress told{progress_, 0};
        const QX_ProgressInfo info{&told, BandProgress::abort, BandProgress::advance};
        const M_LRect source = M_OffsetLRect(rect, -transfer_.x, -transfer_.y);
        QX_LayerDef layer = layer_, background = background_;
        const int result = QX_TransferRectPlus(&info, 0, 0, transfer_.field, &source, &layer, &mode_, transfer_.tables,
                                               transfer_.mask == nullptr ? nullptr : &mask_, scratch.get(), rect.left,
                                               rect.top, &background);
        if (result == 0) told.tell(rect.bottom - rect.top);
        return result;
    }

private:
    const Transfer& transfer_;
    const QX_CompositeModePlus mode_;
    Progress* progress_;
    QX_LayerDef layer_{}, background_{};
    QX_MaskWorld mask_{};
};

}  // namespace

int composite(const Transfer& transfer, QX_World& background, Progress* progress) {
    if (!transfer.matrices.empty()) return transform(transfer, background, progress);
    M_LRect rect{};
    if (!clip(transfer, background, &rect)) return 0;
    const int depth = background.Depth();
    Run run(transfer, background, progress);
    const int limit = must_stay_whole(transfer.mode) ? 1 : std::min(standalone::BandCount(), kMaxBands);
    const Bands bands(rect, limit);
    std::atomic<int> first_code{0};
    const auto task = [&](int i) {
        if (first_code.load() != 0) return;
        const int code = run.band(bands[i], depth);
        int none = 0;
        if (code != 0) first_code.compare_exchange_strong(none, code);
    };
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, bands.count());
    return first_code.load();
}

}  // namespace qx::tool
