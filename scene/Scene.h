// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>

#include "QX/indep/QX_Records.h"
#include "pictures/Movie.h"
#include "scene/SceneLayer.h"
#include "scene/effects/EffectSource.h"

/// What a scene file says, checked; docs/scene.md describes the file.
namespace qx::scene {

/// How the results of a scene are written, as its file says: texts by their names, which who writes reads.
struct OutputChoices {
    std::map<std::string, std::string> texts;
    std::optional<bool> half;
};

struct Scene {
    std::string file;
    std::string text;           ///< the values of the file, however it is laid out
    int width = 0, height = 0;  ///< 0: those of the background's picture
    int depth = 8;
    bool orient = true;   ///< pictures are turned as their files say
    bool dither = false;  ///< noise where deeper pixels become 8-bit ones
    pictures::Rate rate;
    std::optional<FrameList> frames;
    QX_PixelFloat colour{0, 0, 0, 0};  ///< of the background
    ColourChoices colours;
    OutputChoices output;
    std::optional<SceneFile> background;
    SceneLayers layers;
};

/// Throws SceneFault, or pictures::Failure for a file that cannot be read.
/// @param others  effects besides the scene's own; null: none
/// @param faults  gets those of the scene's parts, one of each, in place of the first one being thrown; a scene with
///                some is none
Scene read_scene(const std::string& path, EffectSource* others = nullptr, std::vector<std::string>* faults = nullptr);
/// The same of what a file would hold. @param path  what the text is called in faults; names count from its folder
Scene read_scene_text(const std::string& text, const std::string& path, EffectSource* others = nullptr,
                      std::vector<std::string>* faults = nullptr);

/// Throws SceneFault for choices of colour that do not go together: what needs a space where there is none, and a space
/// of a background that is no picture.
void check_colours(const Scene& scene);

/// Throws SceneFault for the first file that one of the frames needs and that is not there.
void check_files(const Scene& scene, const FrameList& frames);
/// All files that the frames need: each one's faults, by as much of the file as tells that it is a picture.
std::vector<std::string> faults_of_files(const Scene& scene, const FrameList& frames, pictures::Watch& watch);
/// When what frames show was last written: results that are older show something else.
class InputChanges {
public:
    /// @param scene  stays as long as this
    explicit InputChanges(const Scene& scene);
    std::int64_t latest(int frame) const;  ///< as pictures::changed_at has it

private:
    const Scene& scene_;
    std::int64_t shown_always_ = 0;  ///< of pictures that do not move, and of clips as a whole
};

/// A file that one of the frames shows and that one of them would be written over, if there is one.
struct Overwritten {
    std::string path, place;
};
std::optional<Overwritten> overwritten(const Scene& scene, const FrameList& frames, const FramePattern& names);

/// Hands all files of the scene to `see`, as that of a layer does.
template <class See> void each_file(const Scene& scene, const See& see) {
    if (scene.background) see(*scene.background, nullptr);
    each_layer(scene.layers, [&](const SceneLayer& layer) {
        each_file(layer, see);
        return true;
    });
}

}  // namespace qx::scene
