// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QX/suites/QX_CallbackBlock.h"
#include "QX/world/QX_World.h"
#include "host/Calls.h"
#include "host/EffectModule.h"
#include "pictures/Movie.h"
#include "pictures/Watch.h"

namespace qx::host {

/// What stays the same for an instance.
struct InstanceSettings {
    int depth = 8;
    int quality = 1;  ///< of the layer: 0 is draft
    pictures::Rate rate;
    bool operator==(const InstanceSettings&) const = default;
};

/// An effect that has begun, for one thread at a time.
class EffectInstance {
public:
    EffectInstance(const EffectModule& module, const InstanceSettings& settings);
    ~EffectInstance();
    EffectInstance(const EffectInstance&) = delete;
    EffectInstance& operator=(const EffectInstance&) = delete;

    const InstanceSettings& settings() const { return settings_; }
    /// What `begin` gave; nothing else is called unless its code is 0.
    const Outcome& begun() const { return begun_; }

    /// How much larger a frame's result is.
    Outcome room(const QXE_Frame& frame, QXE_Room& room);
    Outcome render(const QXE_Frame& frame, QX_LayerDef& source, QX_LayerDef& destination);

private:
    const QXE_EffectInfo& effect_;
    const InstanceSettings settings_;
    QX_CallbackBlock callbacks_{};
    QXE_Instance instance_{};
    Outcome begun_;
};

/// What an effect is handed to ask and tell a watch. On the thread of its call alone.
class EffectProgress {
public:
    explicit EffectProgress(pictures::Watch& watch) : own_{this, abort, advance}, watch_(watch) {
        context_.abort = abort;
        context_.progress = advance;
        context_.effect_ref = this;
    }
    EffectProgress(const EffectProgress&) = delete;
    EffectProgress& operator=(const EffectProgress&) = delete;
    QXE_InData* context() { return reinterpret_cast<QXE_InData*>(&context_); }

private:
    static int abort(void* progress);
    static int advance(void* progress, std::int32_t count, std::int32_t total);

    QX_ProgressInfo own_;  ///< first, since some routines take the reference for such a record
    QX_InData context_{};
    pictures::Watch& watch_;
};

}  // namespace qx::host
