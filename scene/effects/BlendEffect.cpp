// SPDX-License-Identifier: Apache-2.0
// A cross-fade to another picture.
#include "QX/compositing/QX_Blend.h"

#include "QX/indep/QX_Fixed.h"
#include "scene/Words.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

std::string size_of(const QX_World& world) {
    return std::to_string(world.width) + " x " + std::to_string(world.height);
}

class Blend : public Effect {
public:
    Keys keys() override {
        return {{"with", "FILE", "picture that it fades to, of the same size", PictureKey{&with_}},
                {"ratio", "0..1", "how far: 0 is the first, 1 the other (default: 0.5)", NumbersKey{1, 0, 1, &ratio_}}};
    }
    void settle() override {
        if (!with_) throw BadText("with", "is missing: the picture that it fades to");
    }
    std::vector<const SceneFile*> files() const override { return {&*with_}; }

    void apply(Canvas& canvas, const Moment& moment) const override {
        const QX_World& world = *canvas.world;
        const auto shown = moment.picture(*with_);
        const QX_World& with = *shown->world;
        if (with.width != world.width || with.height != world.height) {
            throw pictures::Failure(moment.subject,
                                    "is " + size_of(world) + ", and what it fades to is " + size_of(with) + " pixels");
        }
        const std::int32_t ratio = to_fixed(ratio_.at(moment.frame)[0]);
        on_all_bands(world.height, moment, moment.watch, [&](const M_LRect& band, RowPart&) {
            QX_LayerDef to = band_of(world, band);
            const QX_LayerDef other = band_of(with, band);
            return QX_Blend_Straight(nullptr, &to, &other, ratio, &to);
        });
    }

private:
    std::optional<SceneFile> with_;
    Track<1> ratio_{Track<1>::Value{0.5}};
};

}  // namespace

std::unique_ptr<Effect> new_blend() { return std::make_unique<Blend>(); }

}  // namespace qx::scene
