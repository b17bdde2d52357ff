// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "scene/Composite.h"
#include "scene/Scene.h"

namespace qx::scene {

/// Makes the frames of a scene, one at a time on all processors. A picture stays in memory until a layer shows
/// another one. A frame does not depend on those before it.
class SceneRender {
public:
    using Notes = std::function<void(const std::string&)>;

    /// @param watch  hears of the rows of each step: a picture that is read, a layer that is laid on
    /// @param notes  gets what the user is to know, each note once; may be null
    SceneRender(const Scene& scene, pictures::Watch& watch, Notes notes);

    /// Throws pictures::Failure, WorkFault or pictures::Stopped.
    pictures::Picture frame(int number);
    /// Size of the frames; that of the background's picture at `number` when the scene tells none.
    void size(int number, int* width, int* height);

private:
    /// A picture that a layer or a mask shows, at the scene's depth.
    struct Shown {
        std::string path;
        pictures::Picture picture;
    };
    const pictures::Picture& show(Shown& shown, const SceneFile& file, int frame, const QX_PixelFloat* matte);
    void note_once(const std::string& note);
    pictures::Picture background(int number);
    void composite_layer(std::size_t index, int number, QX_World& onto);

    const Scene& scene_;
    pictures::Watch& watch_;
    const Notes notes_;
    struct LayerState {
        Shown picture, mask;
        std::unique_ptr<QX_LinearBlendingTables> tables;
    };
    std::vector<LayerState> layers_;
    Shown background_;
    std::set<std::string> noted_;
};

}  // namespace qx::scene
