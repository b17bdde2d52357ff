// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "host/EffectInstance.h"
#include "scene/effects/Effect.h"

namespace qx::host {

/// An effect that a module has, among the layers of a scene. Frames that are made at once have an instance each.
class PlugInEffect final : public scene::Effect {
public:
    explicit PlugInEffect(std::shared_ptr<const EffectModule> module);

    scene::Keys keys() override;
    bool depends_on_frame() const override { return true; }
    void apply(scene::Canvas& canvas, const scene::Moment& moment) const override;
    void rest() const override;

private:
    struct Parameter;
    class Run;

    std::unique_ptr<EffectInstance> take(const InstanceSettings& settings) const;
    void give_back(std::unique_ptr<EffectInstance> instance) const;

    const std::shared_ptr<const EffectModule> module_;  ///< goes after the instances
    std::vector<std::shared_ptr<Parameter>> parameters_;
    mutable std::mutex mutex_;
    mutable std::vector<std::unique_ptr<EffectInstance>> idle_;
};

}  // namespace qx::host
