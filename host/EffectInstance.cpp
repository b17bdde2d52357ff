// SPDX-License-Identifier: Apache-2.0
#include "host/EffectInstance.h"

#include <algorithm>

#include "platform/TK_Suites.h"

namespace qx::host {
namespace {

constexpr unsigned char kStraightAlpha = 1;

QXE_World* world_of(QX_LayerDef& record) { return reinterpret_cast<QXE_World*>(&record); }

}  // namespace

EffectInstance::EffectInstance(const EffectModule& module, const InstanceSettings& settings)
    : effect_(module.info()), settings_(settings) {
    const QSBasicSuite* basic = nullptr;
    begun_.code = TK_QS_GetQSBasicSuite(&basic);
    if (begun_.code == 0) begun_.code = QX_GetCallbackBlock(settings.quality, kStraightAlpha, &callbacks_);
    if (begun_.code != 0) return;
    instance_.size = sizeof instance_;
    instance_.depth = settings.depth;
    instance_.basic = reinterpret_cast<const QXE_BasicSuite*>(basic);
    instance_.callbacks = reinterpret_cast<const QXE_CallbackBlock*>(&callbacks_);
    instance_.rate_number = settings.rate.number;
    instance_.rate_per = settings.rate.per;
    if (effect_.begin != nullptr) begun_ = called([&] { return effect_.begin(&instance_); });
}

EffectInstance::~EffectInstance() {
    if (begun_.code != 0 || effect_.end == nullptr) return;
    called([&] {
        effect_.end(&instance_);
        return 0;
    });
}

Outcome EffectInstance::room(const QXE_Frame& frame, QXE_Room& room) {
    room = {};
    if (effect_.room == nullptr) return {};
    return called([&] { return effect_.room(&instance_, &frame, &room); });
}

Outcome EffectInstance::render(const QXE_Frame& frame, QX_LayerDef& source, QX_LayerDef& destination) {
    return called([&] { return effect_.render(&instance_, &frame, world_of(source), world_of(destination)); });
}

int EffectProgress::abort(void* progress) {
    return static_cast<EffectProgress*>(progress)->watch_.stops() ? kQX_Interrupted : 0;
}

int EffectProgress::advance(void* progress, std::int32_t count, std::int32_t total) {
    if (total > 0) static_cast<EffectProgress*>(progress)->watch_.rows(std::clamp(count, 0, total), total);
    return abort(progress);
}

}  // namespace qx::host
