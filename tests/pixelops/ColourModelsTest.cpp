// SPDX-License-Identifier: Apache-2.0
// Colour models against their formulas in double, and there and back through all 8-bit colours.
#include "QX/indep/QX_DepthSteps.h"
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
constexpr std::uint32_t kStride = 11;
#else
constexpr std::uint32_t kStride = 1;
#endif

using Model = std::array<std::int32_t, 3>;
using Rgb = std::array<double, 3>;

/// The routines of a form. What they return is held to 0.
template <class Pixel> struct Form {
    using Number = std::conditional_t<std::is_same_v<Pixel, QX_PixelFloat>, float, std::int32_t>;
    int (*const from_rgb[2])(void*, const Pixel*, std::int32_t*);  ///< HLS, YIQ
    int (*const to_rgb[2])(void*, const std::int32_t*, Pixel*);
    int (*const query[4])(void*, const Pixel*, Number*);  ///< hue, lightness, luminance, saturation

    Model model(int k, const Pixel& p) const {
        Model m{-1, -1, -1};
        EXPECT_EQ(from_rgb[k](nullptr, &p, m.data()), 0);
        return m;
    }
    Pixel pixel(int k, const Model& m, Pixel p) const {
        EXPECT_EQ(to_rgb[k](nullptr, m.data(), &p), 0);
        return p;
    }
    Number number(int k, const Pixel& p) const {
        Number n = -1;
        EXPECT_EQ(query[k](nullptr, &p, &n), 0);
        return n;
    }
};
#define QX_FORM(Pixel, End)                                                                   \
    Form<Pixel> {                                                                             \
        {&QX_RGBtoHLS_##End, &QX_RGBtoYIQ_##End}, {&QX_HLStoRGB_##End, &QX_YIQtoRGB_##End}, { \
            &QX_Hue_##End, &QX_Lightness_##End, &QX_Luminance_##End, &QX_Saturation_##End     \
        }                                                                                     \
    }
enum { kHls, kYiq };
enum { kHue, kLightness, kLuminance, kSaturation };

template <class Pixel> Form<Pixel> straight();
template <> Form<QX_Pixel8> straight() { return QX_FORM(QX_Pixel8, Straight); }
template <> Form<QX_Pixel16> straight() { return QX_FORM(QX_Pixel16, Straight16); }
template <> Form<QX_PixelFloat> straight() { return QX_FORM(QX_PixelFloat, StraightFloat); }

/// On the scale of 0 to 1, by the factor of rows.
template <class Pixel> Rgb unit(const Pixel& p) {
    constexpr int depth = DepthOf<Pixel>::number;
    const auto at = [](auto c) {
        return static_cast<float>(c) * (depth == 8 ? kRow8ToFloat : depth == 16 ? kRow16ToFloat : 1.0f);
    };
    return {at(p.red), at(p.green), at(p.blue)};
}

double most_of(const Rgb& c) { return *std::max_element(c.begin(), c.end()); }
double least_of(const Rgb& c) { return *std::min_element(c.begin(), c.end()); }

/// Degrees, from the place of the largest colour on the circle; 0 of greys.
double hue_of(const Rgb& c) {
    const double d = most_of(c) - least_of(c);
    if (d == 0) return 0;
    const auto k = static_cast<std::size_t>(std::max_element(c.begin(), c.end()) - c.begin());
    return std::fmod(120.0 * static_cast<double>(k) + 60 * (c[(k + 1) % 3] - c[(k + 2) % 3]) / d + 360, 360);
}
double apart_on_circle(double a, double b, double turn) {
    const double d = std::fmod(std::fabs(a - b), turn);
    return std::min(d, turn - d);
}

void expect_hls(const Model& got, const Rgb& c) {
    const double most = most_of(c), least = least_of(c), l = (most + least) / 2;
    const double by = 1 - std::fabs(2 * l - 1), s = most == least ? 0 : (most - least) / by;
    EXPECT_LT(apart_on_circle(got[0], 65536 * hue_of(c), 360 * 65536.0), 8) << "of 2^24 steps";
    EXPECT_NEAR(got[1], 65536 * l, 0.51);
    EXPECT_NEAR(got[2], 65536 * s, 0.51 + (s == 0 ? 0 : 65536 * s * 0x1p-23 / by));
}

constexpr float kYiqRows[3][3] = {
    {0.2989f, 0.5866f, 0.1144f}, {0.5959f, -0.2741f, -0.3218f}, {0.2113f, -0.5227f, 0.3113f}};
/// Terms are rounded one by one.
void expect_yiq(const Model& got, const Rgb& c) {
    for (std::size_t i = 0; i < 3; ++i) {
        double sum = 0;
        int unsure = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const double term = 65536.0 * kYiqRows[i][k] * c[k];
            sum += std::round(term);
            unsure += std::fabs(std::fabs(std::remainder(term, 1)) - 0.5) < 0.005;
        }
        EXPECT_NEAR(got[i], sum, unsure) << "row " << i;
    }
}

/// Colours of a model's value, 0 to 1.
Rgb from_hls(const Model& m) {
    const double h = m[0] / 65536.0, l = m[1] / 65536.0, s = m[2] / 65536.0, a = s * std::min(l, 1 - l);
    const auto at = [=](double n) {
        const double k = std::fmod(n + h / 30, 12);
        return l - a * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
    };
    return {at(0), at(8), at(4)};
}
Rgb from_yiq(const Model& m) {
    const double y = m[0] / 65536.0, i = m[1] / 65536.0, q = m[2] / 65536.0;
    return {y + 0.9562 * i + 0.621 * q, y - 0.2717 * i - 0.6485 * q, y - 1.1053 * i + 1.702 * q};
}
template <class Pixel> void expect_colours(const Pixel& got, const Pixel& before, const Rgb& wanted, bool limits) {
    constexpr double full = DepthOf<Pixel>::full;
    constexpr bool real = DepthOf<Pixel>::number == 32;
    EXPECT_EQ(got.alpha, before.alpha) << "is not written";
    const double channels[] = {static_cast<double>(got.red), static_cast<double>(got.green),
                               static_cast<double>(got.blue)};
    for (std::size_t k = 0; k < 3; ++k) {
        const double w = limits && !real ? std::clamp(wanted[k], 0.0, 1.0) : wanted[k];
        EXPECT_NEAR(channels[k], full * w, real ? 2e-6 : 0.5 + full * 2e-6) << "colour " << k;
    }
}

template <class Pixel> class ColourModels : public testing::Test {
protected:
    const Form<Pixel> form = straight<Pixel>();

    /// Colours of all kinds, greys among them; floats from 0 to 1.
    static std::vector<Pixel> colours() {
        std::vector<Pixel> all(30000);
        const FillKind kinds[] = {FillKind::random, FillKind::extremes, FillKind::edges};
        for (std::size_t k = 0; k < 3; ++k) fill_pixels<Pixel>(std::span(all).subspan(k * 10000, 10000), kinds[k], k);
        for (Pixel& p : all) {
            for (auto c : {&Pixel::red, &Pixel::green, &Pixel::blue}) {
                p.*c = std::clamp<QX_ChannelOf<Pixel>>(p.*c, 0, kFull<Pixel>);
            }
        }
        for (std::size_t i = 0; i < 100; ++i) all[i].green = all[i].blue = all[i].red;
        return all;
    }
};
TYPED_TEST_SUITE(ColourModels, AllDepths);

TYPED_TEST(ColourModels, AreTheirFormulas) {
    for (const TypeParam& p : this->colours()) {
        SCOPED_TRACE(testing::Message() << p);
        const Rgb c = unit(p);
        if (most_of(c) == least_of(c) || most_of(c) - least_of(c) > 1e-4) expect_hls(this->form.model(kHls, p), c);
        expect_yiq(this->form.model(kYiq, p), c);
        if (this->HasFailure()) break;
    }
}

TYPED_TEST(ColourModels, GoBackByTheirFormulas) {
    Numbers random(7);
    const TypeParam before{1, 0, 0, 0};
    for (int i = 0; i < 50000; ++i) {
        const int full = 65537;
        const Model hls{i % 7 == 0 ? 60 * 65536 * random(0, 7) : random(0, 360 * 65536 + 1), random(0, full),
                        i % 5 == 0 ? 0 : random(0, full)};
        const Model yiq{random(0, full), random(-40000, 40000), random(-40000, 40000)};
        SCOPED_TRACE(testing::Message() << testing::PrintToString(hls) << testing::PrintToString(yiq));
        expect_colours(this->form.pixel(kHls, hls, before), before, from_hls(hls), false);
        expect_colours(this->form.pixel(kYiq, yiq, before), before, from_yiq(yiq), true);
        if (this->HasFailure()) break;
    }
}

TYPED_TEST(ColourModels, SingleNumbersAreTheirFormulas) {
    using N = typename model::DepthModel<TypeParam>::N;
    const N full = model::DepthModel<TypeParam>::full;
    for (const TypeParam& p : this->colours()) {
        SCOPED_TRACE(testing::Message() << p);
        const double turn = static_cast<double>(full), real = std::is_same_v<N, float>;
        const Rgb c = unit(p);
        const N most = std::max({p.red, p.green, p.blue}), least = std::min({p.red, p.green, p.blue});
        if (most == least || most_of(c) - least_of(c) > 1e-4) {
            const double h = static_cast<double>(this->form.number(kHue, p));
            EXPECT_LE(apart_on_circle(h, turn * hue_of(c) / 360, turn), real ? 1e-6 : 0.51);
        }
        const double bright = static_cast<double>(most) + static_cast<double>(least);
        const double lightness = real ? bright / 2 : std::floor(bright / 2);
        EXPECT_NEAR(this->form.number(kLightness, p), lightness, real ? 1e-7 : 0);
        const double luminance =
            real ? 0.299 * p.red + 0.587 * p.green + 0.114 * p.blue : 30.0 * p.red + 59.0 * p.green + 11.0 * p.blue;
        EXPECT_NEAR(this->form.number(kLuminance, p), luminance, real ? 3e-7 : 0);
        const double d = static_cast<double>(most) - static_cast<double>(least);
        const double saturation = d * std::min(bright, 2 * turn - bright) / turn;
        EXPECT_NEAR(this->form.number(kSaturation, p), real ? saturation : std::floor(saturation), real ? 3e-7 : 0);
        if (this->HasFailure()) break;
    }
}

TEST(ColourModelsThereAndBack, EveryColourOf8BitsComesBack) {
    const auto form = straight<QX_Pixel8>();
    std::uint32_t lost = 0;
    for (std::uint32_t i = 0; i < 1u << 24; i += kStride) {
        const QX_Pixel8 p{77, static_cast<std::uint8_t>(i >> 16), static_cast<std::uint8_t>(i >> 8),
                          static_cast<std::uint8_t>(i)};
        for (const int k : {kHls, kYiq}) {
            Model m;
            QX_Pixel8 back{77, 1, 2, 3};
            form.from_rgb[k](nullptr, &p, m.data());
            form.to_rgb[k](nullptr, m.data(), &back);
            lost += back == p ? 0u : 1u;
        }
    }
    EXPECT_EQ(lost, 0u);
}

TEST(ColourModelsThereAndBack, ColoursOf16BitsComeBackOrNearlySo) {
    const auto form = straight<QX_Pixel16>();
    PixelSource<QX_Pixel16> source(3);
    int furthest = 0;
    for (int i = 0; i < 2000000; ++i) {
        const QX_Pixel16 p = source.with_alpha(9);
        ASSERT_EQ(form.pixel(kHls, form.model(kHls, p), {9, 1, 2, 3}), p);
        const QX_Pixel16 near = form.pixel(kYiq, form.model(kYiq, p), p);
        furthest = std::max(
            {furthest, std::abs(near.red - p.red), std::abs(near.green - p.green), std::abs(near.blue - p.blue)});
    }
    EXPECT_LE(furthest, 12);
}

constexpr std::int32_t kOne = 65536;

/// Columns: colour, hue in degrees, lightness, saturation; as 8 bits tell them
TEST(ColourModelsCases, WhatColoursAreCalled) {
    const auto form = straight<QX_Pixel8>();
    const Cases<QX_Pixel8, int, double, double> named = {
        {{0, 255, 0, 0}, 0, 0.5, 1},   {{0, 0, 255, 0}, 120, 0.5, 1},
        {{0, 0, 0, 255}, 240, 0.5, 1}, {{0, 255, 0, 255}, 300, 0.5, 1},  // below 0, plus a turn
        {{0, 0, 0, 0}, 0, 0, 0},       {{0, 255, 255, 255}, 0, 1, 0}};
    for (const auto& [p, hue, lightness, saturation] : named) {
        EXPECT_EQ(form.model(kHls, p), (Model{hue * kOne, static_cast<std::int32_t>(lightness * kOne),
                                              static_cast<std::int32_t>(saturation * kOne)}))
            << p;
    }
    EXPECT_EQ(form.number(kLuminance, {0, 255, 255, 255}), 25500);
    EXPECT_EQ(form.number(kSaturation, {0, 255, 200, 200}), 55 * 55 / 255) << "multiplied, where HLS divides";
}

/// Values outside of what RGB gives: integers keep low bits from HLS, and are limited from YIQ; hue wraps once.
TEST(ColourModelsCases, WhatIsOutsideOfRgb) {
    const auto eight = straight<QX_Pixel8>();
    const auto sixteen = straight<QX_Pixel16>();
    const auto real = straight<QX_PixelFloat>();
    const auto grey = [](auto v) { return std::array{v, v, v}; };
    const auto colours = [](const auto& p) { return std::array{p.red, p.green, p.blue}; };
    const Model bright{0, 2 * kOne, 0}, dark{0, -kOne, 0};
    EXPECT_EQ(colours(eight.pixel(kHls, bright, {})), grey(std::uint8_t{510 & 255}));
    EXPECT_EQ(colours(sixteen.pixel(kHls, bright, {})), grey(std::uint16_t{0}));
    EXPECT_EQ(colours(real.pixel(kHls, bright, {})), grey(2.0f));
    EXPECT_EQ(colours(eight.pixel(kHls, dark, {})), grey(std::uint8_t{1}));
    EXPECT_EQ(colours(eight.pixel(kYiq, bright, {})), (std::array<std::uint8_t, 3>{255, 0, 0})) << "2 I is red";
    EXPECT_EQ(colours(sixteen.pixel(kYiq, {2 * kOne, 0, 0}, {})), grey(std::uint16_t{32768}));
    EXPECT_EQ(colours(sixteen.pixel(kYiq, {-2 * kOne, 0, 0}, {})), grey(std::uint16_t{0}));
    EXPECT_EQ(colours(real.pixel(kYiq, {-2 * kOne, 0, 0}, {})), grey(-2.0f));
    // 800 less one turn lies behind the last third, as 920 and 680 less one do; -500 and one turn before the first.
    const auto full = [&](int degrees) { return colours(eight.pixel(kHls, {degrees * kOne, kOne / 2, kOne}, {})); };
    EXPECT_EQ(full(800), (std::array<std::uint8_t, 3>{0, 0, 0}));
    EXPECT_EQ(full(360), (std::array<std::uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(full(-60), (std::array<std::uint8_t, 3>{255, 0, 255}));
}

/// Every alpha: colours are divided before, and what comes back is multiplied.
TEST(ColourModelsPremul, AreTheStraightOnesBetweenTwoTables) {
    const Born born;
    const auto plain = straight<QX_Pixel8>(), premul = QX_FORM(QX_Pixel8, Premul);
    Numbers random(5);
    const auto through = [](const QX_Pixel8& p, auto law) {
        const auto at = [&](std::uint8_t c) { return static_cast<std::uint8_t>(law(c, p.alpha)); };
        return QX_Pixel8{p.alpha, at(p.red), at(p.green), at(p.blue)};
    };
    PixelSource<QX_Pixel8> source(11);
    for (int i = 0; i < 256 * 40; ++i) {
        const QX_Pixel8 p = source.with_alpha(static_cast<std::uint8_t>(i)), divided = through(p, model::Eight::div);
        SCOPED_TRACE(testing::Message() << p);
        for (const int k : {kHls, kYiq}) {
            const Model m{random(0, 360 * kOne), random(0, kOne), random(0, kOne)};
            ASSERT_EQ(premul.model(k, p), plain.model(k, divided));
            ASSERT_EQ(premul.pixel(k, m, p), through(plain.pixel(k, m, p), model::Eight::mul));
        }
        for (int k = 0; k < 4; ++k) ASSERT_EQ(premul.number(k, p), plain.number(k, divided)) << k;
    }
}

}  // namespace
}  // namespace qx::test
