// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Records.h"
#include "pictures/Movie.h"
#include "scene/Keyframes.h"
#include "scene/Placing.h"
#include "scene/SceneFile.h"
#include "scene/colour/WorkingSpace.h"
#include "scene/effects/EffectSource.h"

/// What a scene file says, checked; docs/scene.md describes the file.
namespace qx::scene {

struct SceneMask {
    SceneFile file;
    QX_MaskKind kind = kQX_MaskAlpha;
    int x = 0, y = 0;
};

struct SceneTransform {
    Track<2> anchor{Track<2>::Value{0, 0}}, translate{Track<2>::Value{0, 0}}, scale{Track<2>::Value{1, 1}};
    Track<1> rotate{Track<1>::Value{0}};
    std::optional<Track<9>> matrix;  ///< in place of these four

    bool moves() const;
    M_Matrix3 at(double frame) const;
};

/// When the shutter is open: from frame + phase / 360 on, for angle / 360 frames.
struct Shutter {
    double angle = 0, phase = 0;
    int matrices = 17;
};

struct SceneEffect {
    std::string place;  ///< in the scene, such as /layers/2/effects/0
    std::shared_ptr<const Effect> effect;
    bool moves;  ///< its numbers or its pictures change from frame to frame
};

struct SceneLayer {
    std::string place;  ///< in the scene, such as /layers/2
    SceneFile file;
    int mode = xfer_over;
    Track<1> opacity{Track<1>::Value{1}};
    std::optional<SceneMask> mask;
    std::optional<QX_PixelFloat> matte;  ///< colour that the file's pixels were mixed with
    std::vector<SceneEffect> effects;    ///< done in order, before the transform
    int field = 0, quality = 1;
    std::optional<SceneTransform> transform;
    Shutter shutter;
    bool rgb_only = false;
    LightChoice light;
    int seed = 0;

    /// Of the layer at a frame, in time order; none for a layer that is not transformed.
    /// @param left  where effects have moved its corner to, as `top` tells of rows
    std::vector<M_Matrix3> matrices(int frame, int left = 0, int top = 0) const;
    bool effects_move() const;
};

struct Scene {
    std::string file;
    std::string text;  ///< the values of the file, however it is laid out
    int width = 0, height = 0;  ///< 0: those of the background's picture
    int depth = 8;
    bool dither = false;  ///< noise where deeper pixels become 8-bit ones
    pictures::Rate rate;
    std::optional<FrameRange> frames;
    QX_PixelFloat colour{0, 0, 0, 0};  ///< of the background
    ColourChoices colours;
    std::optional<SceneFile> background;
    std::vector<SceneLayer> layers;
};

/// Throws SceneFault, or pictures::Failure for a file that cannot be read.
/// @param others  effects besides the scene's own; null: none
Scene read_scene(const std::string& path, EffectSource* others = nullptr);

/// Throws SceneFault for choices of colour that do not go together: what needs a space where there is none, and a space
/// of a background that is no picture.
void check_colours(const Scene& scene);

/// Throws SceneFault for the first file that a frame of the range needs and that is not there.
void check_files(const Scene& scene, const FrameRange& frames);
/// A file that a frame of the range shows and that one of them would be written over, if there is one.
struct Overwritten {
    std::string path, place;
};
std::optional<Overwritten> overwritten(const Scene& scene, const FrameRange& frames, const FramePattern& names);

}  // namespace qx::scene
