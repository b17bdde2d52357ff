// SPDX-License-Identifier: Apache-2.0
// One text for the three depths. Arithmetic is in float, in the order that stands here.
#include "QX/pixelops/QX_ColourModels.h"

#include <algorithm>

#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Fixed.h"
#include "platform/M_Matrix.h"

namespace {

using namespace qx;

template <class Pixel> using NumberOfDepth = typename DepthOf<Pixel>::Lane;
template <class Pixel> constexpr bool is_float = std::is_same_v<Pixel, QX_PixelFloat>;

/// A pixel's colours, and the largest and the smallest of them.
template <class N> struct Colours3 {
    N r, g, b;
    N max = std::max({r, g, b}), min = std::min({r, g, b});
};

template <class Pixel> Colours3<NumberOfDepth<Pixel>> stored(const Pixel& p) { return {p.red, p.green, p.blue}; }

/// On the scale of 0 to 1.
template <class Pixel> Colours3<float> scaled(const Pixel& p) {
    constexpr float scale = is_float<Pixel> ? 1.0f : std::is_same_v<Pixel, QX_Pixel8> ? kRow8ToFloat : kRow16ToFloat;
    const auto at = [](auto c) { return static_cast<float>(c) * scale; };
    return {at(p.red), at(p.green), at(p.blue)};
}

/// Degrees; 0 where there is no hue.
float hue_of(const Colours3<float>& c) {
    if (c.max == c.min) return 0.0f;
    const float d = c.max - c.min;
    const float sixth = c.r == c.max   ? (c.g - c.b) / d + 0.0f
                        : c.g == c.max ? (c.b - c.r) / d + 2.0f
                                       : (c.r - c.g) / d + 4.0f;
    const float h = sixth * 60.0f;
    return h < 0.0f ? h + 360.0f : h;
}

template <class Pixel> void to_hls(const Pixel& p, std::int32_t hls[3]) {
    const Colours3<float> c = scaled(p);
    const float s = c.max + c.min, l = s * 0.5f, d = c.max - c.min;
    const float saturation = c.max == c.min ? 0.0f : l <= 0.5f ? d / s : d / ((2.0f - c.max) - c.min);
    hls[0] = to_fixed(hue_of(c));
    hls[1] = to_fixed(l);
    hls[2] = to_fixed(saturation);
}

float channel_at(float m1, float m2, float h) {
    if (h > 360.0f) {
        h -= 360.0f;
    } else if (h < 0.0f) {
        h += 360.0f;
    }
    if (h < 60.0f) return m1 + ((m2 - m1) * h) / 60.0f;
    if (h < 180.0f) return m2;
    if (h < 240.0f) return m1 + ((m2 - m1) * (240.0f - h)) / 60.0f;
    return m1;
}

float from_fixed(std::int32_t v) { return static_cast<float>(v * 0x1p-16); }

template <class Pixel> QX_ChannelOf<Pixel> rounded(float c) {
    if constexpr (is_float<Pixel>) {
        return c;
    } else {
        return static_cast<QX_ChannelOf<Pixel>>(M_RoundDouble(c * static_cast<float>(DepthOf<Pixel>::full)));
    }
}

template <class Pixel> void from_hls(const std::int32_t hls[3], Pixel& p) {
    const float h = from_fixed(hls[0]), l = from_fixed(hls[1]), s = from_fixed(hls[2]);
    const float m2 = hls[1] > kFixedHalf ? (l + s) - l * s : l * (1.0f + s);
    const float m1 = 2.0f * l - m2;
    const auto channel = [=](float at) { return rounded<Pixel>(hls[2] == 0 ? l : channel_at(m1, m2, at)); };
    p.red = channel(h + 120.0f);
    p.green = channel(h);
    p.blue = channel(h - 120.0f);
}

/// Rounded term by term.
template <class Pixel> void to_yiq(const Pixel& p, std::int32_t yiq[3]) {
    constexpr float rows[3][3] = {
        {0.2989f, 0.5866f, 0.1144f}, {0.5959f, -0.2741f, -0.3218f}, {0.2113f, -0.5227f, 0.3113f}};
    const Colours3<float> c = scaled(p);
    for (int i = 0; i < 3; ++i) {
        const std::int32_t r = to_fixed(c.r * rows[i][0]), g = to_fixed(c.g * rows[i][1]),
                           b = to_fixed(c.b * rows[i][2]);
        yiq[i] = wrapping_sum(wrapping_sum(r, g), b);
    }
}

template <class Pixel> QX_ChannelOf<Pixel> limited(float c) {
    if constexpr (is_float<Pixel>) {
        return c;
    } else {
        constexpr auto full = static_cast<float>(DepthOf<Pixel>::full);
        return static_cast<QX_ChannelOf<Pixel>>(c < 0.0f   ? 0
                                                : c > full ? DepthOf<Pixel>::full
                                                           : truncate_to_int(c + 0.5f));
    }
}

template <class Pixel> void from_yiq(const std::int32_t yiq[3], Pixel& p) {
    const auto at = [=](int i) { return static_cast<float>(yiq[i] * 0x1p-16 * DepthOf<Pixel>::full); };
    const float y = at(0), i = at(1), q = at(2);
    const auto channel = [=](float of_i, float of_q) { return limited<Pixel>(((0.0f + y) + i * of_i) + q * of_q); };
    p.red = channel(0.9562f, 0.621f);
    p.green = channel(-0.2717f, -0.6485f);
    p.blue = channel(-1.1053f, 1.702f);
}

template <class Pixel> void hue(const Pixel& p, NumberOfDepth<Pixel>* out) {
    const float h = hue_of(scaled(p));
    if constexpr (is_float<Pixel>) {
        *out = h / 360.0f;
    } else {
        using D = DepthOf<Pixel>;
        *out = D::wrap(M_RoundDouble((h * static_cast<float>(D::full)) / 360.0f));
    }
}

template <class Pixel> void lightness(const Pixel& p, NumberOfDepth<Pixel>* out) {
    const auto c = stored(p);
    if constexpr (is_float<Pixel>) {
        *out = (c.max + c.min) * 0.5f;
    } else {
        *out = (c.max + c.min) >> 1;
    }
}

template <class Pixel> void luminance(const Pixel& p, NumberOfDepth<Pixel>* out) {
    const auto c = stored(p);
    if constexpr (is_float<Pixel>) {
        *out = DepthFloat::luma(c.r, c.g, c.b);
    } else {
        *out = c.g * 59 + c.r * 30 + c.b * 11;
    }
}

template <class Pixel> void saturation(const Pixel& p, NumberOfDepth<Pixel>* out) {
    const auto c = stored(p);
    if constexpr (is_float<Pixel>) {
        *out = (c.max - c.min) * (0.5f > (c.max + c.min) * 0.5f ? c.max + c.min : (2.0f - c.max) - c.min);
    } else {
        using D = DepthOf<Pixel>;
        const std::int32_t s = c.max + c.min, k = s <= D::full ? s : 2 * D::full - s;
        *out = D::wrap((c.max - c.min) * k / D::full);
    }
}

/// The colours of a premultiplied pixel by themselves, and folded into its alpha.
QX_Pixel8 through(const std::uint8_t* table, const QX_Pixel8& p) {
    const std::uint8_t* row = table + p.alpha * 256;
    return {p.alpha, row[p.red], row[p.green], row[p.blue]};
}
QX_Pixel8 unmultiplied(const QX_Pixel8& p) { return through(QXp_G_fcd_table, p); }

template <class Straight> void into_premultiplied(QX_Pixel8& p, const Straight& straight) {
    QX_Pixel8 colour = p;
    straight(colour);
    p = through(QXp_G_fcm_table, colour);
}

}  // namespace

/// The exported forms of `work`(pixel, result).
#define QX_FROM_PIXEL(Name, work, Integers, Floats)                                                      \
    int Name##_Straight(void*, const QX_Pixel8* rgb, Integers out) { return work(*rgb, out), 0; }        \
    int Name##_Straight16(void*, const QX_Pixel16* rgb, Integers out) { return work(*rgb, out), 0; }     \
    int Name##_StraightFloat(void*, const QX_PixelFloat* rgb, Floats out) { return work(*rgb, out), 0; } \
    int Name##_Premul(void*, const QX_Pixel8* rgb, Integers out) { return work(unmultiplied(*rgb), out), 0; }
/// Those of `work`(value of the model, pixel).
#define QX_TO_PIXEL(Name, work)                                                                                 \
    int Name##_Straight(void*, const std::int32_t in[3], QX_Pixel8* rgb) { return work(in, *rgb), 0; }          \
    int Name##_Straight16(void*, const std::int32_t in[3], QX_Pixel16* rgb) { return work(in, *rgb), 0; }       \
    int Name##_StraightFloat(void*, const std::int32_t in[3], QX_PixelFloat* rgb) { return work(in, *rgb), 0; } \
    int Name##_Premul(void*, const std::int32_t in[3], QX_Pixel8* rgb) {                                        \
        return into_premultiplied(*rgb, [=](QX_Pixel8& colour) { work(in, colour); }), 0;                       \
    }

QX_FROM_PIXEL(QX_RGBtoHLS, to_hls, std::int32_t*, std::int32_t*)
QX_FROM_PIXEL(QX_RGBtoYIQ, to_yiq, std::int32_t*, std::int32_t*)
QX_TO_PIXEL(QX_HLStoRGB, from_hls)
QX_TO_PIXEL(QX_YIQtoRGB, from_yiq)
QX_FROM_PIXEL(QX_Hue, hue, std::int32_t*, float*)
QX_FROM_PIXEL(QX_Lightness, lightness, std::int32_t*, float*)
QX_FROM_PIXEL(QX_Luminance, luminance, std::int32_t*, float*)
QX_FROM_PIXEL(QX_Saturation, saturation, std::int32_t*, float*)
