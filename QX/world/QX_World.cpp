// SPDX-License-Identifier: Apache-2.0
// What all worlds share whatever their pixel: the ways to make one, and the operations on the record alone.
#include "QX/world/QX_IteratePixels.h"
#include "QX/world/QX_WorldX.h"

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/world/QX_FrameLimits.h"
#include "QX/world/QX_SubRecord.h"

namespace {

void check_sub_rect(const QX_LayerDef& source, const M_LRect& rect, qx::Place place, const char* message) {
    const bool inside = rect.left >= 0 && rect.right <= source.width && rect.top >= 0 && rect.bottom <= source.height;
    if (!inside) throw qx::report_failed_verification(place, message);
}

/// Makes a world of the class of a depth; every form of construction lists its arguments once.
template <class... Args> QX_World* make(int depth, Args... args) {
    return qx::for_depth(
        depth, [&]<class Pixel>() -> QX_World* { return new QX_WorldX<Pixel>(args...); },
        []() -> QX_World* { throw int{kQX_FailedVerification}; });
}

}  // namespace

QX_World* QX_World::New(int width, int height, short depth, int flags) { return make(depth, width, height, flags); }

QX_World* QX_World::New(const M_LRect& rect, short depth, int flags) {
    QX_World* world = New(qx::extent(rect.left, rect.right), qx::extent(rect.top, rect.bottom), depth, flags);
    world->origin_x = rect.left;
    world->origin_y = rect.top;
    return world;
}

QX_World* QX_World::NewMatchingWorld(const QX_World* like, int flags) {
    return New(like->width, like->height, like->Depth(), flags);
}

QX_World* QX_World::NewReference(QX_LayerDef* record) {
    const int depth = QXp_WorldDepth(record);
    if (depth != 8 && depth != 16 && depth != 32) {
        throw qx::report_failed_verification(qx::Place::new_reference,
                                             "Unexpected bitdepth in QX_World::NewReference(QX_EffectWorld)");
    }
    return make(depth, record, false);
}

QX_World* QX_World::NewReference(QX_World* parent, const M_LRect& rect) {
    if (auto* world = dynamic_cast<QX_WorldX<QX_Pixel8>*>(parent)) return new QX_WorldX<QX_Pixel8>(world, rect);
    if (auto* world = dynamic_cast<QX_WorldX<QX_Pixel16>*>(parent)) return new QX_WorldX<QX_Pixel16>(world, rect);
    if (auto* world = dynamic_cast<QX_WorldX<QX_PixelFloat>*>(parent)) return new QX_WorldX<QX_PixelFloat>(world, rect);
    throw int{kQX_FailedVerification};
}

QX_World* QX_World::NewReference(QX_World* parent, const M_Rect& rect) {
    return NewReference(parent, M_RectToLRect(rect));
}

QX_World* QX_World::NewReference(void* data, int width, int height, short depth, int rowbytes) {
    return make(depth, data, width, height, rowbytes);
}

void QX_World::CopyWorld(const QX_World* src) { CopyRect(src, qx::whole_of(*src), 0, 0); }

void QX_World::ReReference(QX_World* source, const M_LRect& rect) {
    if (source->Depth() != Depth()) {
        throw qx::report_failed_verification(qx::Place::re_reference, "can't change bit depth in ReReference");
    }
    check_sub_rect(*source, rect, qx::Place::re_reference, "bad sub rect in ReReference");
    if (source == this) throw qx::report_failed_verification(qx::Place::re_reference, "can't ReReference self");
    static_cast<QX_LayerDef&>(*this) = qx::sub_record(*source, rect, PixelSize());
    world = this;
}

void QX_World::ShrinkToSubRect(const M_LRect& rect) {
    check_sub_rect(*this, rect, qx::Place::shrink, "bad sub rect in ShrinkToSubRect");
    const QX_LayerDef part = qx::sub_record(*this, rect, PixelSize());
    width = part.width;
    height = part.height;
    data = part.data;
    extent_hint = part.extent_hint;
}

bool QX_World::RefersTo(const QX_World* other) const {
    if (!IsReference() || Depth() != other->Depth() || rowbytes != other->rowbytes || rowbytes == 0) return false;
    if (width > other->width || height > other->height) return false;
    const auto distance = reinterpret_cast<std::intptr_t>(data) - reinterpret_cast<std::intptr_t>(other->data);
    return distance >= 0 && distance / rowbytes < other->height;
}

void QX_World::FillOutEffectWorld(QX_LayerDef* out) const {
    if (out == nullptr) return;
    QX_LayerDef record{};
    record.data = data;
    record.rowbytes = rowbytes;
    record.width = width;
    record.height = height;
    record.extent_hint = extent_hint;
    record.reserved3 = reserved3;
    record.reserved4 = reserved4;
    qx::throw_if(QXp_SetWorldDepth(&record, Depth()));
    record.world = const_cast<QX_World*>(this);
    *out = record;
}

void QX_World::Swizzle() { QX_IteratePixels(this); }

void QX_WorldDebugger(const QX_World*) {}
