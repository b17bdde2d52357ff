// SPDX-License-Identifier: Apache-2.0
// Hue, lightness and saturation by HLS, then chroma by YIQ.
#include <cmath>

#include "QX/indep/QX_Fixed.h"
#include "QX/pixelops/QX_ColourModels.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

constexpr double kMostFactor = 100, kMostDegrees = 36000;

void to_hls(const QX_Pixel8& p, std::int32_t (&hls)[3]) { QX_RGBtoHLS_Straight(nullptr, &p, hls); }
void to_hls(const QX_Pixel16& p, std::int32_t (&hls)[3]) { QX_RGBtoHLS_Straight16(nullptr, &p, hls); }
void to_hls(const QX_PixelFloat& p, std::int32_t (&hls)[3]) { QX_RGBtoHLS_StraightFloat(nullptr, &p, hls); }
void from_hls(const std::int32_t (&hls)[3], QX_Pixel8& p) { QX_HLStoRGB_Straight(nullptr, hls, &p); }
void from_hls(const std::int32_t (&hls)[3], QX_Pixel16& p) { QX_HLStoRGB_Straight16(nullptr, hls, &p); }
void from_hls(const std::int32_t (&hls)[3], QX_PixelFloat& p) { QX_HLStoRGB_StraightFloat(nullptr, hls, &p); }
void to_yiq(const QX_Pixel8& p, std::int32_t (&yiq)[3]) { QX_RGBtoYIQ_Straight(nullptr, &p, yiq); }
void to_yiq(const QX_Pixel16& p, std::int32_t (&yiq)[3]) { QX_RGBtoYIQ_Straight16(nullptr, &p, yiq); }
void to_yiq(const QX_PixelFloat& p, std::int32_t (&yiq)[3]) { QX_RGBtoYIQ_StraightFloat(nullptr, &p, yiq); }
void from_yiq(const std::int32_t (&yiq)[3], QX_Pixel8& p) { QX_YIQtoRGB_Straight(nullptr, yiq, &p); }
void from_yiq(const std::int32_t (&yiq)[3], QX_Pixel16& p) { QX_YIQtoRGB_Straight16(nullptr, yiq, &p); }
void from_yiq(const std::int32_t (&yiq)[3], QX_PixelFloat& p) { QX_YIQtoRGB_StraightFloat(nullptr, yiq, &p); }

/// A moment's settings.
struct Settings {
    double hue, lightness, saturation, chroma;
    bool changes_hls() const { return hue != 0 || lightness != 1 || saturation != 1; }
};

template <class Pixel> void adjust_in_scale(const Settings& by, Pixel& p) {
    std::int32_t v[3];
    if (by.changes_hls()) {
        to_hls(p, v);
        const double hue = std::fmod(v[0] * 0x1p-16 + by.hue, 360);
        v[0] = to_fixed(hue < 0 ? hue + 360 : hue);
        v[1] = to_fixed(std::min(v[1] * 0x1p-16 * by.lightness, 1.0));
        v[2] = to_fixed(std::min(v[2] * 0x1p-16 * by.saturation, 1.0));
        from_hls(v, p);
    }
    if (by.chroma != 1) {
        to_yiq(p, v);
        v[1] = to_fixed(v[1] * 0x1p-16 * by.chroma);
        v[2] = to_fixed(v[2] * 0x1p-16 * by.chroma);
        from_yiq(v, p);
    }
}

/// The models hold colours from 0 to 1: light beyond that goes through them at a smaller scale, and what is below 0 or
/// no number is 0.
void adjust_in_scale_of_light(const Settings& by, QX_PixelFloat& p) {
    for (float* c : {&p.red, &p.green, &p.blue}) *c = *c > 0 ? std::min(*c, 3e38f) : 0;
    const float most = std::max({p.red, p.green, p.blue, 1.0f});
    p = {p.alpha, p.red / most, p.green / most, p.blue / most};
    adjust_in_scale(by, p);
    p = {p.alpha, p.red * most, p.green * most, p.blue * most};
}

class Adjust : public Effect {
public:
    Keys keys() override {
        const NumbersKey factor{1, 0, kMostFactor, {}};
        const auto times = [&](Track<1>& to) {
            NumbersKey key = factor;
            key.to = &to;
            return key;
        };
        return {{"hue", "DEGREES", "turn of the hue (default: 0)", NumbersKey{1, -kMostDegrees, kMostDegrees, &hue_}},
                {"lightness", "F", "factor of lightness (default: 1)", times(lightness_)},
                {"saturation", "F", "factor of saturation (default: 1)", times(saturation_)},
                {"chroma", "F", "factor of colour at the same luma; 0 leaves grey (default: 1)", times(chroma_)}};
    }

    void apply(Canvas& canvas, const Moment& moment) const override {
        const auto at = [&](const Track<1>& track) { return track.at(moment.frame)[0]; };
        const Settings by{at(hue_), at(lightness_), at(saturation_), at(chroma_)};
        if (!by.changes_hls() && by.chroma == 1) return;
        const QX_World& world = *canvas.world;
        pictures::with_pixel_of(world, [&]<class Pixel>() {
            on_all_rows(world.height, moment, moment.watch, [&](int y) {
                Pixel* const row = row_of<Pixel>(world, y);
                for (int x = 0; x < world.width; ++x) {
                    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
                        adjust_in_scale_of_light(by, row[x]);
                    } else {
                        adjust_in_scale(by, row[x]);
                    }
                }
            });
        });
    }

private:
    Track<1> hue_{Track<1>::Value{0}}, lightness_{Track<1>::Value{1}}, saturation_{Track<1>::Value{1}},
        chroma_{Track<1>::Value{1}};
};

}  // namespace

std::unique_ptr<Effect> new_adjust() { return std::make_unique<Adjust>(); }

}  // namespace qx::scene
