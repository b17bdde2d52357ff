// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Records.h"
#include "scene/Keyframes.h"
#include "scene/Placing.h"
#include "scene/SceneFile.h"
#include "scene/colour/WorkingSpace.h"
#include "scene/effects/Effect.h"
#include "scene/sources/Source.h"

// A layer of a scene, as its file tells it.
namespace qx::scene {

struct SceneTransform {
    Track<2> anchor{Track<2>::Value{0, 0}}, translate{Track<2>::Value{0, 0}}, scale{Track<2>::Value{1, 1}};
    Track<1> rotate{Track<1>::Value{0}};
    std::optional<Track<9>> matrix;  ///< in place of these four

    bool moves() const;
    M_Matrix3 at(double frame) const;
};

struct SceneMask {
    SceneFile file;
    std::optional<QX_MaskKind> kind;          ///< without it alpha, or luma of a file that has none
    Track<2> at{Track<2>::Value{0, 0}};       ///< whole pixels count
    std::optional<SceneTransform> transform;  ///< in place of a position
    bool moves() const { return file.moves() || at.moves() || (transform && transform->moves()); }
};

/// Another layer of the same list as a mask, as the frame shows it.
struct MatteLayer {
    std::size_t index = 0;
    QX_MaskKind kind = kQX_MaskAlpha;
};

/// When the shutter is open: from frame + phase / 360 on, for angle / 360 frames.
struct Shutter {
    double angle = 0, phase = 0;
    int matrices = 17;
};

/// Of a layer at a frame, in time order: through the first transform, then the second and so on; none for no transform.
/// @param left  where effects have moved its corner to, as `top` tells of rows
std::vector<M_Matrix3> matrices_of(std::span<const SceneTransform* const> transforms, const Shutter& shutter, int frame,
                                   int left = 0, int top = 0);

struct SceneEffect {
    std::string place;  ///< in the scene, such as /layers/2/effects/0
    std::shared_ptr<const Effect> effect;
    bool moves;  ///< its numbers or its pictures change from frame to frame
};

struct SceneLayer {
    std::string place;  ///< in the scene, such as /layers/2
    std::shared_ptr<const Source> source;
    int in = -kMostFrame, out = kMostFrame;  ///< the first and the last frame at which it shows
    bool visible = true;
    int x = 0, y = 0;  ///< where its left top corner lies, before it is transformed
    int mode = xfer_over;
    Track<1> opacity{Track<1>::Value{1}};
    std::optional<SceneMask> mask;
    std::optional<MatteLayer> matte_layer;
    bool is_matte = false;             ///< some layer's
    std::vector<SceneEffect> effects;  ///< done in order, before the transform
    int field = 0, quality = 1;
    std::optional<SceneTransform> transform;
    std::vector<std::shared_ptr<const SceneTransform>> parents;  ///< follow its own, the nearest first
    Shutter shutter;
    bool rgb_only = false;
    LightChoice light;
    int seed = 0;

    std::vector<M_Matrix3> matrices(int frame, int left = 0, int top = 0) const;
    std::vector<const SceneTransform*> transforms() const;  ///< its own and its parents'
    /// Whether its picture changes from frame to frame, before or after its effects.
    bool effects_move() const;
    /// Whether it looks another in some frame.
    bool moves() const;
    bool lasts(int frame) const { return frame >= in && frame <= out; }
};

using SceneLayers = std::vector<SceneLayer>;

/// Hands layers and those of the groups among them to `see`. @param see  tells whether to look into what it gets
template <class See> void each_layer(const SceneLayers& layers, const See& see) {
    for (const SceneLayer& layer : layers) {
        const SceneLayers* const inner = see(layer) ? layer.source->layers() : nullptr;
        if (inner != nullptr) each_layer(*inner, see);
    }
}

/// Hands all files that a layer shows to `see`, but not those of layers in it.
/// @param see  gets a file, and the colour that it was mixed with or null
template <class See> void each_file(const SceneLayer& layer, const See& see) {
    if (const SceneFile* file = layer.source->file()) see(*file, layer.source->matte());
    if (layer.mask) see(layer.mask->file, nullptr);
    for (const SceneEffect& effect : layer.effects) {
        for (const SceneFile* file : effect.effect->files()) see(*file, nullptr);
    }
}

}  // namespace qx::scene
