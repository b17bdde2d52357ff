// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scene/Stage.h"

namespace qx::scene {

/// Makes the frames of a scene, each on all processors, and any number of them at once. A frame does not depend on
/// others.
class SceneRender {
public:
    using Notes = SceneNotes::Sink;

    /// @param notes  gets what the user is to know, each note once and one at a time; may be null
    /// @param first  the frame whose background tells the space where it is that of the background
    SceneRender(const Scene& scene, Notes notes, int first = 0, pictures::Watch& watch = pictures::unwatched());

    /// Throws pictures::Failure, WorkFault or pictures::Stopped.
    /// @param watch  hears of the rows of each step: a picture that is read, a layer that is laid on
    pictures::Picture frame(int number, pictures::Watch& watch);
    /// Size of the frames; that of the background's picture at `number` when the scene tells none.
    void size(int number, pictures::Watch& watch, int* width, int* height);

    const WorkingSpace* space() const { return pictures_.space(); }

    /// How many frames of a size can be at work within so many bytes, at least one. Pictures count as large as a frame.
    int frames_within(std::uint64_t bytes, int width, int height) const;

private:
    pictures::Picture background(int number, pictures::Watch& watch);

    const Scene& scene_;
    SceneNotes notes_;
    ScenePictures pictures_;
    Stage stage_;
};

}  // namespace qx::scene
