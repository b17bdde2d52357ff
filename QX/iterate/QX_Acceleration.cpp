// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_Acceleration.h"

#include <algorithm>
#include <type_traits>

#include "QX/iterate/QX_ParallelRun.h"
#include "platform/TK_CPU.h"

namespace qx {

Acceleration acceleration{{}, 1};

namespace {

constexpr int kPlace = 96;
constexpr int kStart = 0;
constexpr const char* kRefusal = "The generic acceleration module does not work with this version of Vanteon";

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
    if (is_gpu_world(functor.src) || is_gpu_world(functor.dst)) return report_gpu_in_wrapper(kPlace);
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

struct PremulRectFunctor {
    PremulRectFn* routine;
    bool forward;
    QX_LayerDef* world;

    int operator()(const M_LRect& band, QX_ProgressInfo* info) const { return routine(info, forward, &band, world); }
};

int accelerated_premul_rect(void* effect_ref, bool forward, const M_LRect* area, QX_LayerDef* world) {
    if (is_gpu_world(world)) return report_gpu_in_wrapper(kPlace);
    PremulRectFn* const saved = slot<Slot::PremulRect>(acceleration.saved);
    const M_LRect rect = area_or_all(area, world);
    if (is_narrow(rect)) return guarded([&] { return saved(effect_ref, forward, area, world); });
    return run_bands(static_cast<const QX_ProgressInfo*>(effect_ref), rect, PremulRectFunctor{saved, forward, world});
}

/// Wrappers over routines that have not landed yet are left out: a null slot is to stay null.
void write_wrappers(void** routines) {
    void* const* const saved = acceleration.saved;
    set_slot<Slot::IterateGeneric>(&accelerated_iterate_generic, routines);
    set_slot<Slot::Iterate>(&accelerated_iterate, routines);
    set_slot<Slot::IterateOrigin>(&accelerated_iterate_origin<Slot::IterateOrigin>, routines);
    set_slot<Slot::IterateOriginNoClip>(&accelerated_iterate_origin<Slot::IterateOriginNoClip>, routines);
    if (slot<Slot::TransformWorldPlus>(saved) != nullptr) {
        set_slot<Slot::TransformWorld>(&accelerated_transform_world, routines);
    }
    if (slot<Slot::PremulRect>(saved) != nullptr) {  // every version that is let in knows this one
        set_slot<Slot::PremulRect>(&accelerated_premul_rect, routines);
    }
}

}  // namespace

int acceleration_entry(const AccelerationRecord& record) {
    if (record.selector != kStart) return 0;
    if (record.interface_number != kAccelerationInterface || record.major != kAccelerationMajor) {
        if (record.message != nullptr) record.message(kRefusal);
        return 0;
    }
    std::int32_t count = 0;
    if (const int code = TK_GetNumThreads(&count)) return code;
    acceleration.bands = std::min(count, kMaxBands);
    std::copy_n(record.routines, kQX_SlotCount, acceleration.saved);
    if (acceleration.bands >= 2) write_wrappers(record.routines);
    return 0;
}

}  // namespace qx
