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
        Kept<Piece> piece;    ///< what it shows, where that is the same in every frame
        Kept<Canvas> canvas;  ///< what effects make of that
    };
    /// A list of layers on its way onto a picture.
    struct Scenery {
        const SceneLayers& layers;
        int frame;
        pictures::Picture& onto;
        pictures::Watch& watch;
        std::map<const SceneLayer*, Piece> pieces;                            ///< of mattes, so that none is made twice
        std::map<const SceneLayer*, std::shared_ptr<const QX_World>> mattes;  ///< as the frame shows them

        FrameAsked asked() const { return {frame, watch, onto.world->width, onto.world->height}; }
        int number_of(const SceneLayer& layer) const { return static_cast<int>(&layer - layers.data()) + 1; }
        bool shows(const SceneLayer& layer) const { return layer.lasts(frame); }
    };
    /// How far a layer covers the picture.
    struct Coverage {
        std::shared_ptr<const QX_World> world;  ///< null where it covers all
        int x = 0, y = 0;
        QX_MaskKind kind = kQX_MaskAlpha;
    };
    /// What there is of a layer before it is laid on.
    struct Costume {
        Piece piece;
        std::shared_ptr<const Canvas> canvas;  ///< null where there is no effect
        Coverage coverage;
    };
    void add(const SceneLayers& layers);
    void composite(const SceneLayer& layer, Scenery& scenery);
    /// @return false for a layer that is left out
    bool dress(const SceneLayer& layer, Scenery& scenery, Costume& costume);
    Transfer transfer_of(const SceneLayer& layer, const Costume& costume, int frame) const;
    Piece piece_of(const SceneLayer& layer, Scenery& scenery);
    Piece new_piece(const SceneLayer& layer, Scenery& scenery);
    std::shared_ptr<const Canvas> with_effects(const SceneLayer& layer, const Piece& piece, Scenery& scenery);
    std::shared_ptr<const Canvas> worked_on(const SceneLayer& layer, const Piece& piece, Scenery& scenery);
    // StageMasks.cpp
    /// @return false for a layer that is left out since its mask is missing
    bool cover(const SceneLayer& layer, Scenery& scenery, Coverage& coverage);
    Coverage mask_of(const SceneLayer& layer, const Shown& mask, Scenery& scenery);
    std::shared_ptr<const QX_World> matte_of(const SceneLayer& layer, Scenery& scenery);
    Coverage together(const SceneLayer& layer, const Coverage& a, const Coverage& b, Scenery& scenery);
    std::unique_ptr<QX_World> clear_world(const SceneLayer& layer, const Scenery& scenery) const;
    void lay(const SceneLayer& layer, const Transfer& transfer, QX_World& onto, pictures::Watch& watch) const;

    const Scene& scene_;
    ScenePictures& pictures_;
    SceneNotes& notes_;
    std::map<const SceneLayer*, Wings> wings_;  ///< of all layers, made once
};

}  // namespace qx::scene
