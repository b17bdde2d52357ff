// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "scene/Composite.h"
#include "scene/Scene.h"
#include "scene/retime/SceneClip.h"

namespace qx::scene {

/// Makes the frames of a scene, each on all processors, and any number of them at once. A frame does not depend on
/// others. Pictures that every frame shows are read once, by the first frame that needs them, and stay in memory; those
/// of a sequence are there while their frame is made.
class SceneRender {
public:
    using Notes = std::function<void(const std::string&)>;

    /// @param notes  gets what the user is to know, each note once and one at a time; may be null
    /// @param first  the frame whose background tells the space where it is that of the background
    SceneRender(const Scene& scene, Notes notes, int first = 0, pictures::Watch& watch = pictures::unwatched());
    ~SceneRender();
    SceneRender(const SceneRender&) = delete;
    SceneRender& operator=(const SceneRender&) = delete;

    /// Throws pictures::Failure, WorkFault or pictures::Stopped.
    /// @param watch  hears of the rows of each step: a picture that is read, a layer that is laid on
    pictures::Picture frame(int number, pictures::Watch& watch);
    /// Size of the frames; that of the background's picture at `number` when the scene tells none.
    void size(int number, pictures::Watch& watch, int* width, int* height);

    const WorkingSpace* space() const { return space_ ? &*space_ : nullptr; }

    /// How many frames of a size can be at work within so many bytes, at least one. Pictures count as large as a frame.
    int frames_within(std::uint64_t bytes, int width, int height) const;

private:
    /// A picture that a layer or a mask shows, at the scene's depth.
    using Shown = std::shared_ptr<const pictures::Picture>;
    struct Still {
        std::mutex mutex;
        Shown picture;
    };
    /// What effects make of a layer that is the same in every frame.
    struct Prepared {
        std::mutex mutex;
        std::shared_ptr<const Canvas> canvas;
    };
    /// A file's clip, opened when it is first shown.
    struct OpenClip {
        std::mutex mutex;
        std::unique_ptr<SceneClip> clip;
    };
    SceneClip& clip_of(const SceneFile& file);
    /// What the file shows at a frame, as it is stored.
    pictures::Picture stored(const SceneFile& file, int frame, pictures::Watch& watch);
    Still& still_of(const SceneFile& file, const QX_PixelFloat* matte);
    Shown show(const SceneFile& file, int frame, const QX_PixelFloat* matte, pictures::Watch& watch);
    void read_stills(pictures::Watch& watch);
    Shown read(const SceneFile& file, int frame, const QX_PixelFloat* matte, pictures::Watch& watch);
    /// @param key  what is told once
    void note_once(const std::string& key, const std::string& note);
    void note_losses(const SceneFile& file, const std::string& path, const std::vector<std::string>& notes);
    pictures::Picture background(int number, pictures::Watch& watch);
    /// A layer's picture after its effects; null when it has none.
    std::shared_ptr<const Canvas> with_effects(std::size_t index, int number, const pictures::Picture& picture,
                                               pictures::Watch& watch);
    std::shared_ptr<const Canvas> worked_on(const SceneLayer& layer, int number, const pictures::Picture& picture,
                                            pictures::Watch& watch);
    /// Brings a picture at the depth of its file into the space, if there is one.
    void bring_into_space(const SceneFile& file, const std::string& path, pictures::Picture& picture,
                          pictures::Watch& watch);
    void settle_space(int first, pictures::Watch& watch);
    void composite_layer(std::size_t index, int number, pictures::Picture& onto, pictures::Watch& watch);

    const Scene& scene_;
    const Notes notes_;
    std::optional<WorkingSpace> space_;
    std::vector<LightTables> tables_;                  ///< of each layer
    std::vector<std::unique_ptr<Prepared>> prepared_;  ///< of each layer
    std::mutex mutex_;                                 // of what follows
    std::map<std::string, Still> stills_;    ///< by what makes it another picture and path, so that layers share one
    std::map<std::string, OpenClip> clips_;  ///< by the place of their file
    std::set<std::string> noted_;
};

}  // namespace qx::scene
