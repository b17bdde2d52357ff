// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneRender.h"

#include "QX/pixelops/QX_Premul.h"
#include "pictures/Light.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"

namespace qx::scene {
namespace {

int unmultiply(QX_World& world, const QX_PixelFloat& matte) {
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    return QX_PremulColorFloat(nullptr, &record, &matte, false, &record);
}

}  // namespace

SceneRender::SceneRender(const Scene& scene, pictures::Watch& watch, Notes notes)
    : scene_(scene), watch_(watch), notes_(std::move(notes)), layers_(scene.layers.size()) {
    for (std::size_t i = 0; i < layers_.size(); ++i) {
        const SceneLayer& layer = scene.layers[i];
        if (layer.mode == xfer_dissolve && scene.depth == 32) {
            note_once(scene.file + ": " + kDissolveIsIdle);
        }
        if (layer.gamma <= 0) continue;
        layers_[i].tables = std::make_unique<QX_LinearBlendingTables>();
        QX_BuildGammaBlendingTables(layer.gamma, layers_[i].tables.get());
    }
}

void SceneRender::note_once(const std::string& note) {
    if (noted_.insert(note).second && notes_) notes_(note);
}

const pictures::Picture& SceneRender::show(Shown& shown, const SceneFile& file, int frame, const QX_PixelFloat* matte) {
    const std::string path = file.at(frame);
    if (shown.path == path) return shown.picture;
    shown = {};  // its memory may be needed
    shown.picture = pictures::read_picture(path, watch_);
    pictures::Picture& picture = shown.picture;
    for (const auto& note : picture.notes) note_once(std::string(path).append(": ").append(note));
    if (!picture.light.empty()) note_once(path + ": " + pictures::kLightIsLost);
    picture.light.clear();
    if (matte != nullptr) must(unmultiply(*picture.world, *matte), scene_.file + ": " + file.place);
    if (picture.world->Depth() != scene_.depth) picture.world = pictures::at_depth(path, *picture.world, scene_.depth);
    shown.path = path;
    return picture;
}

void SceneRender::size(int number, int* width, int* height) {
    const bool of_picture = scene_.width == 0;
    if (of_picture) show(background_, *scene_.background, number, nullptr);
    *width = of_picture ? background_.picture.world->width : scene_.width;
    *height = of_picture ? background_.picture.world->height : scene_.height;
}

pictures::Picture SceneRender::background(int number) {
    int width = 0, height = 0;
    size(number, &width, &height);
    pictures::Picture frame;
    frame.world = pictures::new_world(scene_.file, width, height, scene_.depth);
    frame.world->Fill(scene_.colour, nullptr);
    frame.has_alpha = scene_.colour.alpha < 1;
    if (!scene_.background) return frame;
    const pictures::Picture& picture = show(background_, *scene_.background, number, nullptr);
    frame.world->CopyRect(picture.world.get(), {0, 0, picture.world->width, picture.world->height}, 0, 0);
    frame.has_alpha = picture.has_alpha;
    frame.linear = picture.linear;
    frame.icc = picture.icc;
    frame.resolution = picture.resolution;
    frame.primaries = picture.primaries;
    return frame;
}

void SceneRender::composite_layer(std::size_t index, int number, QX_World& onto) {
    const SceneLayer& layer = scene_.layers[index];
    LayerState& state = layers_[index];
    Transfer transfer;
    transfer.layer = show(state.picture, layer.file, number, layer.matte ? &*layer.matte : nullptr).world.get();
    transfer.mode = layer.mode;
    transfer.opacity = static_cast<float>(layer.opacity.at(number)[0]);
    transfer.rgb_only = layer.rgb_only;
    transfer.seed = layer.seed;
    transfer.field = layer.field;
    transfer.tables = state.tables.get();
    if (layer.mask) {
        transfer.mask = show(state.mask, layer.mask->file, number, nullptr).world.get();
        transfer.mask_kind = layer.mask->kind;
        transfer.mask_x = layer.mask->x;
        transfer.mask_y = layer.mask->y;
    }
    transfer.matrices = layer.matrices(number);
    transfer.quality = layer.quality;
    must(composite(transfer, onto, watch_), scene_.file + ": " + layer.place);
}

pictures::Picture SceneRender::frame(int number) {
    watch_.must_go_on();
    pictures::Picture frame = background(number);
    for (std::size_t i = 0; i < layers_.size(); ++i) composite_layer(i, number, *frame.world);
    return frame;
}

}  // namespace qx::scene
