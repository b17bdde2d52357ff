// SPDX-License-Identifier: Apache-2.0
// Blurs of a layer: which one, how far, and what becomes of its edge.
#include "scene/LayerWords.h"
#include "scene/Words.h"
#include "scene/effects/Blurs.h"

namespace qx::scene {
namespace {

constexpr const char* kKindWords[] = {"gaussian", "box", "mean", "disc"};
enum Kind { kind_gaussian, kind_box, kind_mean, kind_disc };
constexpr const char* kBlurEdges[] = {"clear", "keep"};
enum BlurEdge { edge_fades, edge_keep, kUsualEdge };
constexpr double kMostRadius = 30000;
constexpr int kMostPasses = 100;

/// Letters out of "rgba" as bits: 1, 2, 4, 8 for alpha, red, green, blue.
unsigned channels_of(const std::string& text) {
    constexpr const char* letters = "argb";
    unsigned channels = 0;
    for (const char letter : text) {
        const char* const found = std::char_traits<char>::find(letters, 4, letter);
        if (found == nullptr) throw BadText(text, "not letters out of rgba");
        channels |= 1u << (found - letters);
    }
    return channels;
}

class Blur : public Effect {
public:
    Keys keys() override {
        return {
            {"kind", "KIND", "gaussian, box, mean or disc (default: gaussian)", ChoiceKey{kKindWords, &kind_}},
            {"radius", "R[,RY]", "reach in pixels, across and down (default: 10)",
             NumbersKey{1, 0, kMostRadius, &radius_}},
            {"passes", "N", "times that gaussian or box work (default: 1); three boxes look like a gaussian",
             WholeKey{1, kMostPasses, &passes_}},
            {"edge", "EDGE", "keep, as if nothing lay outside, or clear (default: keep; clear with --grow)",
             ChoiceKey{kBlurEdges, &edge_}},
            {"grow", nullptr, "make room for what spreads", FlagKey{&grow_}},
            {"channels", "rgba", "which of them change (default: rgba)",
             TextKey{[&](const std::string& text) { channels_ = channels_of(text); }}},
            {"map", "FILE", "of mean and disc: the radius counts times this picture's luma", PictureKey{&map_, true}},
            {"gain", "F", "of disc: how much brighter highlights shine (default: 0)", NumbersKey{1, 0, 1000, &gain_}},
            {"threshold", "F", "of disc: luma from which a pixel is a highlight, 1 being white (default: 0.8)",
             NumbersKey{1, 0, 1000, &threshold_}},
            {"saturation", "F", "of disc: how much of their hue highlights keep (default: 0)",
             NumbersKey{1, -10, 10, &saturation_}},
            {"aspect", "F", "of disc: its width over its height (default: 1)", NumbersKey{1, 0.01, 100, &aspect_}},
            {"rotate", "DEGREES", "of disc: its turn, clockwise (default: 0)", NumbersKey{1, -36000, 36000, &rotate_}},
            {"linear", "GAMMA", "of disc: works in linear light, with this exponent of the stored values",
             NumbersKey{1, kLeastGamma, kMostGamma, &gamma_}}};
    }

    void settle() override {
        const bool lines = kind_ == kind_gaussian || kind_ == kind_box;
        if (edge_ == edge_keep && grow_) throw BadText("edge", "keep excludes grow");
        if (map_ && lines) throw BadText("map", "is for the kinds mean and disc");
        if (passes_ != 1 && !lines) throw BadText("passes", "is for the kinds gaussian and box");
        const Disc disc = disc_at(0), plain{};
        const bool shines = disc.gain != plain.gain || disc.threshold != plain.threshold ||
                            disc.saturation != plain.saturation || disc.gamma != plain.gamma;
        if (kind_ != kind_disc && shines) {
            throw BadText("gain", "is for the kind disc, as are threshold, saturation and linear");
        }
        if (kind_ != kind_disc && (disc.aspect != plain.aspect || disc.degrees != plain.degrees)) {
            throw BadText("aspect", "is for the kind disc, as is rotate");
        }
    }

    std::vector<const SceneFile*> files() const override {
        if (map_) return {&*map_};
        return {};
    }

    void apply(Canvas& canvas, const Moment& moment) const override {
        const auto radius = radius_.at(moment.frame);
        BlurCall call;
        call.radius_x = radius[0];
        call.radius_y = radius[1];
        call.passes = passes_;
        call.keeps_edge = edge_ == edge_keep || (edge_ == kUsualEdge && !grow_);
        call.grows = grow_;
        call.channels = channels_;
        if (map_) set_map(canvas, moment, call);
        if (kind_ == kind_disc) call.disc = disc_at(moment.frame);
        constexpr void (*work[])(Canvas&, const BlurCall&, const Moment&) = {blur_gaussian, blur_box, blur_mean,
                                                                             blur_disc};
        work[kind_](canvas, call, moment);
    }

private:
    void set_map(const Canvas& canvas, const Moment& moment, BlurCall& call) const {
        const auto shown = moment.picture(*map_);
        call.map = {shown, shown->world.get()};
        call.map_x = canvas.x;
        call.map_y = canvas.y;
        const bool fits = canvas.x != 0 || canvas.y != 0 ||
                          (call.map->width == canvas.world->width && call.map->height == canvas.world->height);
        if (!fits) moment.note("the map of its blur has another size; beyond its edge that is repeated");
    }
    Disc disc_at(double frame) const {
        const auto at = [&](const Track<1>& track) { return track.at(frame)[0]; };
        return {at(gain_), at(threshold_), at(saturation_), at(aspect_), at(rotate_), at(gamma_)};
    }
    static Track<1> still(double value) { return Track<1>(Track<1>::Value{value}); }

    int kind_ = kind_gaussian, passes_ = 1;
    int edge_ = kUsualEdge;
    bool grow_ = false;
    unsigned channels_ = 15;
    Track<2> radius_{Track<2>::Value{10, 10}};
    std::optional<SceneFile> map_;
    Track<1> gain_ = still(Disc{}.gain), threshold_ = still(Disc{}.threshold), saturation_ = still(Disc{}.saturation),
             aspect_ = still(Disc{}.aspect), rotate_ = still(Disc{}.degrees), gamma_ = still(Disc{}.gamma);
};

}  // namespace

std::unique_ptr<Effect> new_blur() { return std::make_unique<Blur>(); }

}  // namespace qx::scene
