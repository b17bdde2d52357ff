// SPDX-License-Identifier: Apache-2.0
// Own forms of curves, matrix and curves against the colour library's exact pipeline.
#include "platform/standalone/SH_ColourForms.h"

#include "tests/platform/ColourLaw.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;
using standalone::ColourDepth;
using standalone::ColourForm;
using standalone::MakeColourForm;

#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
constexpr int kSample = 20'000, kStride = 9973;
constexpr bool kWhole = false;
#else
constexpr int kSample = 1'000'000, kStride = 7;
constexpr bool kWhole = true;
#endif

template <class T> struct Pixel {
    T alpha, red, green, blue;
    bool operator==(const Pixel&) const = default;
};
template <class T> using Pixels = std::vector<Pixel<T>>;

template <class T>
constexpr ColourDepth kDepth = sizeof(T) == 1   ? ColourDepth::eight
                               : sizeof(T) == 2 ? ColourDepth::sixteen
                                                : ColourDepth::real;
template <class T> constexpr float kFull = sizeof(T) == 1 ? 255.0f : sizeof(T) == 2 ? 32768.0f : 1.0f;

template <class T> Triple values_of(const Pixel<T>& p) {
    return {static_cast<float>(p.red) / kFull<T>, static_cast<float>(p.green) / kFull<T>,
            static_cast<float>(p.blue) / kFull<T>};
}

/// Counts of what a comparison saw.
struct Seen {
    std::int64_t channels = 0, different = 0, beyond_plain_bound = 0, outside = 0;
    double largest = 0;  ///< error of floats beside 1
};

/// The bounds as they are told: an own code where the law lies within 0.01 of a half, 1e-6 at float, both widened by
/// what 1e-6 of the largest linear colour makes.
template <class T> bool within(float low, float high, T own) {
    if constexpr (std::is_same_v<T, float>) {
        return own >= low - 1e-6 * std::max(1.0, std::fabs(double{low})) &&
               own <= high + 1e-6 * std::max(1.0, std::fabs(double{high}));
    } else {
        const auto code = [](double v) { return std::clamp(std::floor(v), 0.0, double{kFull<T>}); };
        return own >= code(double{low} * kFull<T> + 0.49) && own <= code(double{high} * kFull<T> + 0.51);
    }
}

template <class From, class To>
void compare(const Law& law, const Pixels<From>& src, const Pixels<To>& own, Seen& seen) {
    for (std::size_t i = 0; i < src.size(); ++i) {
        const Triple x = values_of(src[i]), wanted = law(x);
        const std::array<To, 3> got{own[i].red, own[i].green, own[i].blue};
        for (std::size_t k = 0; k < 3; ++k) {
            ++seen.channels;
            const double w = wanted[k];
            if constexpr (std::is_same_v<To, float>) {
                seen.largest = std::max(seen.largest, std::fabs(got[k] - w) / std::max(1.0, std::fabs(w)));
                seen.different += got[k] != wanted[k];
            } else {
                seen.different += got[k] != std::clamp(std::floor(w * kFull<To> + 0.5), 0.0, double{kFull<To>});
            }
            if (within(wanted[k], wanted[k], got[k])) continue;
            ++seen.beyond_plain_bound;
            const auto [low, high] = law.range(x)[k];
            if (!within(low, high, got[k]) && ++seen.outside < 4) {
                ADD_FAILURE() << "colour " << k << " of " << x[0] << ", " << x[1] << ", " << x[2] << " is " << +got[k]
                              << ", by the law " << w * kFull<To>;
            }
        }
    }
}

template <class From, class To>
Pixels<To> made(const ColourForm& form, const Pixels<From>& src, Pixel<To> before = {7, 1, 1, 1}) {
    Pixels<To> dst(src.size(), before);
    form.run(src.data(), dst.data(), static_cast<std::int64_t>(src.size()));
    return dst;
}

void tell(const std::string& what, const Seen& seen) {
    std::printf("    %s: %lld of %lld differ, %lld beyond the plain bound, %lld outside; float error %.2e\n",
                what.c_str(), static_cast<long long>(seen.different), static_cast<long long>(seen.channels),
                static_cast<long long>(seen.beyond_plain_bound), static_cast<long long>(seen.outside), seen.largest);
}

template <class From, class To = From>
void expect_lawful(const std::string& name, const Pipeline& pipeline, const Pixels<From>& src, Seen* all = nullptr) {
    SCOPED_TRACE(name);
    const auto form = MakeColourForm(pipeline.get(), kDepth<From>, kDepth<To>, false);
    ASSERT_NE(form, nullptr);
    Seen seen;
    compare(Law(pipeline), src, made<From, To>(*form, src), seen);
    EXPECT_EQ(seen.outside, 0);
    if (all == nullptr) tell(name, seen);
}

template <class T> Pixels<T> random_pixels(std::uint64_t seed, int count) {
    std::mt19937_64 random(seed);
    const auto channel = [&] {
        if constexpr (std::is_same_v<T, float>) {
            return std::uniform_real_distribution<float>(-1, 8)(random);
        } else {
            return static_cast<T>(random() % (static_cast<unsigned>(kFull<T>) + 1));
        }
    };
    Pixels<T> made;
    for (int i = 0; i < count; ++i) made.push_back({T{1}, channel(), channel(), channel()});
    return made;
}
template <class T> Pixels<T> greys() {
    Pixels<T> made;
    for (int i = 0; i <= 32768; ++i) {
        const auto c = static_cast<T>(std::is_same_v<T, float> ? static_cast<float>(i) / 32768 : static_cast<float>(i));
        made.push_back({T{1}, c, c, c});
    }
    return made;
}
/// Dark and bright colours, each channel of its own size.
Pixels<float> octaves(std::uint64_t seed, int count) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<float> mantissa(1, 2);
    const auto channel = [&] {
        const float size = std::ldexp(mantissa(random), static_cast<int>(random() % 40) - 30);
        return random() % 8 == 0 ? -size : size;
    };
    Pixels<float> made;
    for (int i = 0; i < count; ++i) made.push_back({1, channel(), channel(), channel()});
    return made;
}

struct Pair {
    std::string name;
    Pipeline law;
};
std::vector<Pair> pairs() {
    static Shown shown;
    const Curve srgb = parametric(4, kSrgb), bt709 = parametric(4, kBT709), line = parametric(1, {1});
    const auto of = [&](Gamut a, const Curve& from, Gamut b, const Curve& to) {
        return shown.law(profile(shown, a, from).get(), profile(shown, b, to).get());
    };
    std::vector<Pair> made;
    made.push_back({"srgb to display-p3", of(Gamut::srgb, srgb, Gamut::p3, srgb)});
    made.push_back({"display-p3 to srgb", of(Gamut::p3, srgb, Gamut::srgb, srgb)});
    made.push_back({"srgb to rec2020", of(Gamut::srgb, srgb, Gamut::rec2020, bt709)});
    made.push_back({"rec2020 to srgb", of(Gamut::rec2020, bt709, Gamut::srgb, srgb)});
    made.push_back({"srgb to linear", of(Gamut::srgb, srgb, Gamut::srgb, line)});
    made.push_back({"linear to srgb", of(Gamut::srgb, line, Gamut::srgb, srgb)});
    made.push_back({"gamma 2.2 to srgb", of(Gamut::srgb, parametric(1, {2.2}), Gamut::srgb, srgb)});
    made.push_back({"rec2020 to gamma 2.4", of(Gamut::rec2020, bt709, Gamut::srgb, parametric(1, {2.4}))});
    made.push_back({"table of 1024 to srgb", of(Gamut::p3, table(1024, 2.1), Gamut::srgb, srgb)});
    made.push_back({"srgb to table of 4096", of(Gamut::srgb, srgb, Gamut::p3, table(4096, 1.9))});
    return made;
}

TEST(ColourForms, EightBitsKeepToTheLawInTheirColours) {
    bool whole = kWhole;
    for (const Pair& pair : pairs()) {
        Pixels<std::uint8_t> all;
        for (std::uint32_t i = 0; i < 1u << 24; i += whole ? 1 : kStride) {
            const auto byte = [i](int shift) { return static_cast<std::uint8_t>(i >> shift); };
            all.push_back({255, byte(0), byte(8), byte(16)});
        }
        whole = false;
        expect_lawful<std::uint8_t>(pair.name + ", 8 bits", pair.law, all);
    }
}

TEST(ColourForms, SixteenBitsKeepToTheLaw) {
    for (const Pair& pair : pairs()) {
        expect_lawful<std::uint16_t>(pair.name + ", 16 bits, grey", pair.law, greys<std::uint16_t>());
        expect_lawful<std::uint16_t>(pair.name + ", 16 bits", pair.law, random_pixels<std::uint16_t>(1, kSample));
    }
}

TEST(ColourForms, FloatsKeepToTheLaw) {
    for (const Pair& pair : pairs()) {
        expect_lawful<float>(pair.name + ", float, grey", pair.law, greys<float>());
        expect_lawful<float>(pair.name + ", float", pair.law, random_pixels<float>(2, kSample));
        expect_lawful<float>(pair.name + ", float, octaves", pair.law, octaves(3, kSample / 4));
    }
}

}  // namespace
