// SPDX-License-Identifier: Apache-2.0
// The iterate family on all processors: the saved routine runs once a band.
#include <type_traits>

#include "QX/iterate/QX_IterateSlots.h"
#include "QX/iterate/QX_ParallelRun.h"

namespace qx {

Acceleration acceleration{{}, 1};

namespace {

/// A saved routine of the iterate family with its arguments, bound by value.
template <class Func> struct IterateFunctor {
    Func* routine;
    std::int32_t base, final;
    QX_LayerDef* src;
    M_LPoint origin;
    void* refcon;
    QX_IteratePixelFunc pix_fn;
    QX_LayerDef* dst;

    int operator()(const M_LRect* area, QX_InData* in_data) const {
        if constexpr (std::is_same_v<Func, IterateFn>) {  // the one form without an origin
            return routine(in_data, base, final, src, area, refcon, pix_fn, dst);
        } else {
            return routine(in_data, base, final, src, area, &origin, refcon, pix_fn, dst);
        }
    }
    int operator()(const M_LRect& band, QX_InData* in_data) const { return (*this)(&band, in_data); }
};

template <class Func> int run_iterate(QX_InData* in_data, const M_LRect* area, const IterateFunctor<Func>& functor) {
    if (is_gpu_world(functor.src) || is_gpu_world(functor.dst)) return report_gpu_in_wrapper(Place::iterate_bands);
    const M_LRect rect = area_or_all(area, functor.dst);
    if (functor.dst == nullptr || M_EmptyLRect(rect)) return guarded([&] { return functor(area, in_data); });
    return run_bands(in_data, rect, functor);
}

int accelerated_iterate(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src,
                        const M_LRect* area, void* refcon, QX_IteratePixelFunc pix_fn, QX_LayerDef* dst) {
    IterateFn* const saved = slot<Slot::Iterate>(acceleration.saved);
    return run_iterate<IterateFn>(in_data, area, {saved, base, final, src, {}, refcon, pix_fn, dst});
}

template <Slot S>
int accelerated_iterate_origin(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src,
                               const M_LRect* area, const M_LPoint* origin, void* refcon, QX_IteratePixelFunc pix_fn,
                               QX_LayerDef* dst) {
    IterateOriginFn* const saved = slot<S>(acceleration.saved);
    if (origin == nullptr) {  // the saved routine's to refuse
        return guarded([&] { return saved(in_data, base, final, src, area, nullptr, refcon, pix_fn, dst); });
    }
    return run_iterate<IterateOriginFn>(in_data, area, {saved, base, final, src, *origin, refcon, pix_fn, dst});
}

}  // namespace

void add_iterate_bands(void** routines) {
    set_slot<Slot::IterateGeneric>(&accelerated_iterate_generic, routines);
    set_slot<Slot::Iterate>(&accelerated_iterate, routines);
    set_slot<Slot::IterateOrigin>(&accelerated_iterate_origin<Slot::IterateOrigin>, routines);
    set_slot<Slot::IterateOriginNoClip>(&accelerated_iterate_origin<Slot::IterateOriginNoClip>, routines);
}

}  // namespace qx
