// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "scene/effects/Effect.h"

namespace qx::scene {

/// Where scenes get effects from that are not among their own.
class EffectSource {
public:
    EffectSource() = default;
    virtual ~EffectSource() = default;
    EffectSource(const EffectSource&) = delete;
    EffectSource& operator=(const EffectSource&) = delete;

    /// An effect by its plain name. Throws BadText for a name that none has, and pictures::Failure for one that cannot
    /// be used.
    virtual std::unique_ptr<Effect> find(const std::string& name) = 0;
};

}  // namespace qx::scene
