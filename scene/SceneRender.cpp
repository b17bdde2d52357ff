// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneRender.h"

#include "pictures/Carried.h"
#include "pictures/Losses.h"
#include "scene/FrameMemory.h"

namespace qx::scene {

SceneRender::SceneRender(const Scene& scene, Notes notes, int first, pictures::Watch& watch)
    : scene_(scene),
      notes_(std::move(notes)),
      pictures_(scene, notes_, first, watch),
      stage_(scene, pictures_, notes_) {}

void SceneRender::size(int number, pictures::Watch& watch, int* width, int* height) {
    *width = scene_.width;
    *height = scene_.height;
    if (scene_.width != 0) return;
    const Shown picture = pictures_.show(*scene_.background, {number, watch});
    *width = picture->world->width;
    *height = picture->world->height;
}

int SceneRender::frames_within(std::uint64_t bytes, int width, int height) const {
    return scene::frames_within(scene_, bytes, width, height);
}

pictures::Picture SceneRender::background(int number, pictures::Watch& watch) {
    const Shown picture = scene_.background ? pictures_.show(*scene_.background, {number, watch}) : nullptr;
    pictures::Picture frame;
    const int width = scene_.width != 0 ? scene_.width : picture->world->width;
    const int height = scene_.width != 0 ? scene_.height : picture->world->height;
    const bool as_large = picture && width == picture->world->width && height == picture->world->height;
    frame.world = pictures::new_world(scene_.file, width, height, scene_.depth, false);
    if (!as_large) frame.world->Fill(scene_.colour, nullptr);
    frame.has_alpha = scene_.colour.alpha < 1;
    if (!picture) return frame;
    frame.world->CopyRect(picture->world.get(), {0, 0, picture->world->width, picture->world->height}, 0, 0);
    frame.about() = picture->about();
    if (as_large) {
        frame.beside() = picture->beside();
    } else {
        notes_.losses(*scene_.background, scene_.background->at(number), pictures::lost_beside(*picture));
    }
    return frame;
}

pictures::Picture SceneRender::frame(int number, pictures::Watch& watch) {
    watch.must_go_on();
    pictures_.read_stills(watch);
    pictures::Picture frame = background(number, watch);
    const WorkingSpace* const space = pictures_.space();
    if (space != nullptr) assign(frame, space->profile());
    stage_.composite(scene_.layers, number, frame, watch);
    if (space != nullptr && scene_.colours.output) space->give(scene_.file, frame, scene_.colours.output, watch);
    return frame;
}

}  // namespace qx::scene
