// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "scene/Scene.h"
#include "scene/SceneNotes.h"
#include "scene/retime/SceneClip.h"

namespace qx::scene {

/// A frame that is being made.
struct FrameAsked {
    int frame;
    pictures::Watch& watch;
    int width = 0, height = 0;  ///< of what pictures are laid onto; 0 where that is not known yet
};

/// The pictures of a scene's files, at its depth and in its space. Those that every frame shows are read once and stay;
/// those of a sequence are there while somebody holds them. For any number of threads.
class ScenePictures {
public:
    /// @param first  the frame whose background tells the space where it is that of the background
    ScenePictures(const Scene& scene, SceneNotes& notes, int first, pictures::Watch& watch);

    /// What a file shows at a frame; null for what is missing and then left out.
    /// @param matte  colour that its pixels were mixed with; may be null
    Shown show(const SceneFile& file, const FrameAsked& asked, const QX_PixelFloat* matte = nullptr);
    /// Reads those that no other frame has read or reads at the moment, so that the first frames read different ones. A
    /// fault is left to where the picture is shown.
    void read_stills(pictures::Watch& watch);
    const WorkingSpace* space() const { return space_ ? &*space_ : nullptr; }

private:
    struct Still {
        std::mutex mutex;
        Shown picture;
    };
    /// A file's clip, opened when it is first shown.
    struct OpenClip {
        std::mutex mutex;
        std::unique_ptr<SceneClip> clip;
    };
    Shown stand_in(const SceneFile& file, const FrameAsked& asked, const QX_PixelFloat* matte);
    /// The number of the nearest picture that is there, an earlier one if there is one.
    std::optional<int> nearest(const SceneFile& file, int frame);
    SceneClip& clip_of(const SceneFile& file);
    /// What the file shows at a frame, as it is stored.
    pictures::Picture stored(const SceneFile& file, int frame, pictures::Watch& watch);
    Still& still_of(const SceneFile& file, const QX_PixelFloat* matte);
    Shown read(const SceneFile& file, int frame, const QX_PixelFloat* matte, pictures::Watch& watch);
    /// Brings a picture at the depth of its file into the space, if there is one.
    void bring_into_space(const SceneFile& file, const std::string& path, pictures::Picture& picture,
                          pictures::Watch& watch);
    void settle_space(int first, pictures::Watch& watch);

    const Scene& scene_;
    SceneNotes& notes_;
    std::optional<WorkingSpace> space_;
    std::mutex mutex_;                     // of what follows
    std::map<std::string, Still> stills_;  ///< by what makes it another picture and path, so that layers share one
    std::map<std::string, std::vector<int>>
        there_;                              ///< numbers of pictures where one was missing, by the place of the file
    std::map<std::string, OpenClip> clips_;  ///< by the place of their file
};

}  // namespace qx::scene
