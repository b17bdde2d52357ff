// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "scene/Composite.h"
#include "scene/Kept.h"
#include "scene/ScenePictures.h"

namespace qx::scene {

/// Lays the layers of a scene onto pictures. For any number of threads.
class Stage {
public:
    Stage(const Scene& scene, ScenePictures& pictures, SceneNotes& notes);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Lays layers on, from back to front. Throws pictures::Failure, WorkFault or pictures::Stopped.
    void composite(const SceneLayers& layers, int frame, pictures::Picture& onto, pictures::Watch& watch);

private:
    /// What is kept of a layer from frame to frame.
    struct Wings {
        LightTables tables;
        Kept<Canvas> canvas;  ///< what effects make of a layer that is the same in every frame
    };
    /// A frame on its way.
    struct Scenery {
        int frame;
        pictures::Picture& onto;
        pictures::Watch& watch;
        FrameAsked asked() const { return {frame, watch, onto.world->width, onto.world->height}; }
    };
    void add(const SceneLayers& layers);
    void composite(const SceneLayer& layer, int number, const Scenery& scenery);
    Piece piece_of(const SceneLayer& layer, const Scenery& scenery);
    /// A layer's picture after its effects; null when it has none.
    std::shared_ptr<const Canvas> with_effects(const SceneLayer& layer, int number, const Piece& piece,
                                               const Scenery& scenery);
    std::shared_ptr<const Canvas> worked_on(const SceneLayer& layer, int number, const Piece& piece,
                                            const Scenery& scenery);

    const Scene& scene_;
    ScenePictures& pictures_;
    SceneNotes& notes_;
    std::map<const SceneLayer*, Wings> wings_;  ///< of all layers, made once
};

}  // namespace qx::scene
