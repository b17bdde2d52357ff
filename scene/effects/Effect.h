// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "QX/world/QX_World.h"
#include "pictures/Movie.h"
#include "pictures/Watch.h"
#include "scene/effects/Keys.h"

// What is done to a layer before it is placed, and what the subcommands do to a picture.
namespace qx::scene {

/// A picture at work: straight pixels, and where its left top corner lies, seen from where the file's lay.
struct Canvas {
    std::unique_ptr<QX_World> world;
    int x = 0, y = 0;
};

/// What an effect may ask for while it works.
struct Moment {
    double frame = 0;
    std::string subject;  ///< what failures are told about
    /// A picture with its pixels at the canvas's depth, which stay for as long as the effect works.
    std::function<std::shared_ptr<const pictures::Picture>(const SceneFile& file)> picture;
    std::function<void(const std::string& note)> note;
    pictures::Watch& watch;
    int layer = 1;              ///< its number, from 1
    int quality = 1;            ///< of its layer: 0 is draft
    pictures::Rate rate{0, 1};  ///< of the scene; 0 for a still picture
};

/// Told by its keys, then used by any number of threads.
class Effect {
public:
    Effect() = default;
    virtual ~Effect() = default;
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    virtual Keys keys() = 0;  ///< which point into the effect
    /// To be called once the keys are told. Throws BadText for what does not go together.
    virtual void settle() {}
    virtual std::vector<const SceneFile*> files() const { return {}; }
    /// Whether other frames may give other results where neither picture nor keys are others.
    virtual bool depends_on_frame() const { return false; }
    /// Throws Stopped, pictures::Failure or WorkFault.
    virtual void apply(Canvas& canvas, const Moment& moment) const = 0;
    /// Lets go of what it keeps for frames to come. While the library runs, and no frame is at work.
    virtual void rest() const {}
};

/// As scenes and subcommands name it.
struct EffectKind {
    const char* name;
    std::unique_ptr<Effect> (*make)();
};
std::span<const EffectKind> effect_kinds();
/// Throws BadText with the nearest name.
std::unique_ptr<Effect> new_effect(const std::string& name);

std::unique_ptr<Effect> new_blur();
std::unique_ptr<Effect> new_convolve();
std::unique_ptr<Effect> new_matte();
std::unique_ptr<Effect> new_adjust();
std::unique_ptr<Effect> new_blend();

}  // namespace qx::scene
