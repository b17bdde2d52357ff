// SPDX-License-Identifier: Apache-2.0
// A layer's alpha times a matte of several masks.
#include <deque>

#include "QX/world/QX_MergeMask.h"
#include "scene/Words.h"
#include "scene/effects/Mask.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

class Matte : public Effect {
public:
    Keys keys() override {
        return {{"masks", "MASK", "masks, each laid over those before",
                 ListKey{[&] { return masks_.emplace_back().keys(); }}}};
    }
    void settle() override {
        if (masks_.empty()) throw BadText("masks", "there is none");
        for (const Mask& mask : masks_) {
            if (!mask.file) throw BadText("file", "a mask has none");
        }
    }
    std::vector<const SceneFile*> files() const override {
        std::vector<const SceneFile*> files;
        for (const Mask& mask : masks_) files.push_back(&*mask.file);
        return files;
    }

    void apply(Canvas& canvas, const Moment& moment) const override {
        QX_World& world = *canvas.world;
        const UnoBuffer total = new_mask_buffer(world.width, world.height, world.Depth(), moment);
        const int steps = static_cast<int>(masks_.size());
        for (int i = 0; i < steps; ++i) {
            StepWatch watch(moment.watch, i, steps);
            add_mask(masks_[static_cast<std::size_t>(i)], i == 0, canvas, *total, moment, watch);
        }
        must_do(moment, [&] { QX_MergeMaskAlpha(nullptr, 0, 0, nullptr, total.get(), nullptr, &world); });
    }

private:
    std::deque<Mask> masks_;  // their keys point into them
};

}  // namespace

std::unique_ptr<Effect> new_matte() { return std::make_unique<Matte>(); }

}  // namespace qx::scene
