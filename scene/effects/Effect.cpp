// SPDX-License-Identifier: Apache-2.0
#include "scene/effects/Effect.h"

#include "scene/Words.h"

namespace qx::scene {
namespace {

constexpr EffectKind kKinds[] = {
    {"blur", new_blur}, {"convolve", new_convolve}, {"matte", new_matte}, {"adjust", new_adjust}, {"blend", new_blend}};

}  // namespace

std::span<const EffectKind> effect_kinds() { return kKinds; }

std::unique_ptr<Effect> new_effect(const std::string& name) {
    std::vector<std::string> names;
    for (const EffectKind& kind : kKinds) {
        if (name == kind.name) return kind.make();
        names.emplace_back(kind.name);
    }
    throw BadText(name, "no such effect" + suggestion(name, names));
}

}  // namespace qx::scene
