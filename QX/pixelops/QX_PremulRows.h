// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <type_traits>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "platform/tesselcore_Threads.h"

/// Rows of an area by one of the iteration engines, with the question before each whether to go on.
namespace qx {

class AskBeforeRow {
public:
    explicit AskBeforeRow(void* effect_ref) : progress_(static_cast<const QX_ProgressInfo*>(effect_ref)) {}
    /// Rows on other threads are not asked about: hosts expect their callbacks on the thread of the call.
    int operator()() const {
        if (progress_ == nullptr || progress_->abort_func == nullptr) return 0;
        return tesselcore::threads::GetCurrentThreadID() == caller_ ? progress_->abort_func(progress_->refcon) : 0;
    }

private:
    const QX_ProgressInfo* progress_;
    std::uint32_t caller_ = tesselcore::threads::GetCurrentThreadID();
};

/// Runs row(y), which cannot fail, over the rows of an area.
template <class Row> int run_rows(IterateGenericFn* engine, void* effect_ref, const M_LRect& area, const Row& row) {
    if (M_EmptyLRect(area)) return 0;
    struct Work {
        AskBeforeRow ask;
        std::int32_t top;
        const Row& row;
    } work{AskBeforeRow(effect_ref), area.top, row};
    return guarded([&] {
        return engine(area.bottom - area.top, &work, [](void* refcon, std::int32_t, std::int32_t i, std::int32_t) {
            const Work& w = *static_cast<const Work*>(refcon);
            if (const int code = w.ask()) return code;
            w.row(w.top + i);
            return 0;
        });
    });
}

}  // namespace qx
