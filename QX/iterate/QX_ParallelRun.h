// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Bands.h"
#include "QX/iterate/QX_ThreadProgress.h"
#include "platform/tesselcore_Threads.h"

namespace qx {

/// The state of the acceleration layer, written at install only.
struct Acceleration {
    void* saved[kQX_SlotCount];
    std::int32_t bands;
};
extern Acceleration acceleration;

/// The wrappers' own words for a GPU world. @return 3
inline int report_gpu_in_wrapper(Place place) {
    return report_failed_verification(place, "gpu effect world is not supported.");
}

/// The frame of every parallel call: makes the shared state, runs, and turns what was thrown into the result. What
/// is thrown as 0 gives way to the first code of a task.
template <class Info, class Run> int run_parallel(const Info* source, const Run& run) {
    boost::shared_ptr<ThreadProgress<Info>> progress;
    const int thrown = guarded([&] {
        progress = boost::make_shared<ThreadProgress<Info>>(source);
        run(progress);
    });
    return thrown != 0 || !progress ? thrown : progress->first_error();
}

/// One task: the saved routine over one band. After a failure bands that have not begun do nothing.
template <class Info, class Functor> struct BandTask {
    Bands bands;
    Functor routine;
    boost::shared_ptr<ThreadProgress<Info>> progress;

    int operator()(int i) const {
        if (const int code = progress->first_error()) return code;
        return progress->keep_error(routine(bands[i], progress->info()));
    }
};

/// Runs `routine(band, info)` over the bands of a rectangle that is not empty.
template <class Info, class Functor> int run_bands(const Info* source, const M_LRect& rect, const Functor& routine) {
    return run_parallel(source, [&](const boost::shared_ptr<ThreadProgress<Info>>& progress) {
        const Bands bands(rect, acceleration.bands);
        const BandTask<Info, Functor> task{bands, routine, progress};
        if (bands.count() > 0) {
            tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, bands.count());
        }
    });
}

/// The rectangle that a call is about: null is the whole world.
inline M_LRect area_or_all(const M_LRect* area, const QX_LayerDef* world) {
    if (area != nullptr) return *area;
    return world != nullptr ? whole_of(*world) : M_LRect{};
}

/// Rectangles that the wrappers leave to one thread: the empty ones, and those of one column where the cost of the
/// machinery would show.
inline bool is_narrow(const M_LRect& rect) { return M_EmptyLRect(rect) || std::int64_t{rect.right} - rect.left < 2; }

/// The wrapper that stands in a file of its own.
IterateGenericFn accelerated_iterate_generic;

}  // namespace qx
