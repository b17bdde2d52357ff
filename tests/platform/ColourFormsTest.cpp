// SPDX-License-Identifier: Apache-2.0
// Own forms of curves, matrix and curves against the colour library's exact pipeline.
#include "platform/standalone/SH_ColourForms.h"

#include <span>

#include "tests/platform/ColourLaw.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;
using standalone::ColourDepth;
using standalone::ColourForm;
using standalone::MakeColourForm;

/// QX_ALL_COLOURS in the environment asks for every colour of 8 bits and ten times as many others, and for what was
/// seen.
const bool kAll = std::getenv("QX_ALL_COLOURS") != nullptr;
#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
constexpr int kStride = 9973;
constexpr bool kWhole = false;
const int kSample = kAll ? 10'000'000 : 20'000;
#else
constexpr int kStride = 7;
constexpr bool kWhole = true;
const int kSample = kAll ? 10'000'000 : 1'000'000;
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
    if (std::isnan(low)) return std::is_same_v<T, float> ? own != own : own == 0;
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
    if (!kAll) return;
    std::printf("    %s: %lld of %lld differ, %lld beyond the plain bound, %lld outside; float error %.2e\n",
                what.c_str(), static_cast<long long>(seen.different), static_cast<long long>(seen.channels),
                static_cast<long long>(seen.beyond_plain_bound), static_cast<long long>(seen.outside), seen.largest);
}

template <class From, class To = From>
Seen expect_lawful(const std::string& name, const Pipeline& pipeline, const Pixels<From>& src) {
    SCOPED_TRACE(name);
    Seen seen;
    const auto form = MakeColourForm(pipeline.get(), kDepth<From>, kDepth<To>, false);
    if (form != nullptr) compare(Law(pipeline), src, made<From, To>(*form, src), seen);
    EXPECT_NE(form, nullptr);
    EXPECT_EQ(seen.outside, 0);
    return seen;
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
    bool whole = kWhole || kAll;
    for (const Pair& pair : pairs()) {
        Pixels<std::uint8_t> all;
        for (std::uint32_t i = 0; i < 1u << 24; i += whole ? 1 : kStride) {
            const auto byte = [i](int shift) { return static_cast<std::uint8_t>(i >> shift); };
            all.push_back({255, byte(0), byte(8), byte(16)});
        }
        whole = kAll;
        tell(pair.name + ", 8 bits", expect_lawful<std::uint8_t>(pair.name, pair.law, all));
    }
}

TEST(ColourForms, SixteenBitsKeepToTheLaw) {
    for (const Pair& pair : pairs()) {
        tell(pair.name + ", 16 bits, grey", expect_lawful<std::uint16_t>(pair.name, pair.law, greys<std::uint16_t>()));
        tell(pair.name + ", 16 bits",
             expect_lawful<std::uint16_t>(pair.name, pair.law, random_pixels<std::uint16_t>(1, kSample)));
    }
}

TEST(ColourForms, FloatsKeepToTheLaw) {
    for (const Pair& pair : pairs()) {
        tell(pair.name + ", float, grey", expect_lawful<float>(pair.name, pair.law, greys<float>()));
        tell(pair.name + ", float", expect_lawful<float>(pair.name, pair.law, random_pixels<float>(2, kSample)));
        tell(pair.name + ", float, octaves", expect_lawful<float>(pair.name, pair.law, octaves(3, kSample / 4)));
    }
}

/// Numbers around the place where each step of a table begins, and the smallest ones.
Pixels<float> around_steps(int stride) {
    Pixels<float> made;
    for (int step = 0; step < 65536; step += stride) {
        float x = static_cast<float>((step + 0.5 - 1.0 / 131072) / 65535);
        for (int i = 0; i < 24; ++i) x = std::nextafter(x, 0.0f);
        for (int i = 0; i < 16; ++i) {
            const float y = std::nextafter(x, 2.0f), z = std::nextafter(y, 2.0f);
            made.push_back({1, x, y, z});
            x = std::nextafter(z, 2.0f);
        }
    }
    for (float x = 1e-45f; x < 1; x *= 1.9f) made.push_back({1, x, 1 - x, -x});
    return made;
}

TEST(ColourForms, StepsOfTablesBeginWhereTheLawsDo) {
    const Curve every_step = table(32768, 1);  // of more the library's products wrap
    Stages stages;
    const Pipeline& law = stages.curves(every_step).curves(parametric(1, {1})).pipeline;
    const Pixels<float> src = around_steps(kWhole ? 1 : 97);
    for (const auto level : kLevels) {
        if (level > standalone::DetectedProcessorLevel()) continue;
        standalone::SetProcessorLevel(level);
        const auto form = MakeColourForm(law.get(), ColourDepth::real, ColourDepth::real, false);
        standalone::SetProcessorLevel(standalone::ProcessorLevel::widest);
        const Pixels<float> own = made<float, float>(*form, src);
        for (std::size_t i = 0; i < src.size(); ++i) {
            ASSERT_EQ(own[i].red, cmsEvalToneCurveFloat(every_step.get(), src[i].red)) << src[i].red;
            ASSERT_EQ(own[i].green, cmsEvalToneCurveFloat(every_step.get(), src[i].green)) << src[i].green;
            ASSERT_EQ(own[i].blue, cmsEvalToneCurveFloat(every_step.get(), src[i].blue)) << src[i].blue;
        }
    }
}

/// Stages of all kinds, by hand. Channels differ, but for the tables.
std::vector<Pair> chains_by_hand() {
    const std::array<double, 9> mixing{0.7, 0.2, 0.1, 0.1, 0.8, 0.1, -0.05, 0.15, 0.9},
        to_lab{2, 0, 0, 0, 2, 0, 0, 0, 2}, from_lab{0.5, 0, 0, 0, 0.5, 0, 0, 0, 0.5};
    const Curve srgb = parametric(4, kSrgb), bt709 = parametric(4, kBT709), line = parametric(1, {1}),
                power = parametric(1, {1.8}), lifted = parametric(5, {2.2, 0.9, 0.1, 0.2, 0.1, 0.01, 0.004});
    std::vector<Pair> made;
    const auto add = [&](const char* name, Stages& stages) { made.push_back({name, std::move(stages.pipeline)}); };
    add("no curves", Stages().matrix(mixing, {0.01, 0, -0.02}));
    add("curves in", Stages().curves(srgb, bt709, power).matrix(mixing));
    add("curves out", Stages().matrix(mixing).identity().curves(turned(srgb), turned(power), turned(bt709)));
    add("matrices in a row", Stages()
                                 .identity()
                                 .curves(bt709)
                                 .matrix(to_lab, {0.1, 0.1, 0.1})
                                 .matrix(mixing)
                                 .identity()
                                 .matrix(from_lab, {-0.05, -0.05, -0.05})
                                 .curves(turned(srgb)));
    add("curves alone", Stages().curves(srgb, power, line).curves(turned(bt709)));
    add("lines", Stages().curves(line).matrix(mixing).curves(turned(line)));
    add("other formulas", Stages()
                              .curves(lifted, parametric(2, {2.4, 0.95, 0.05}), parametric(3, {2, 0.9, 0.1, 0.02}))
                              .matrix(mixing)
                              .curves(turned(lifted), turned(parametric(2, {2.4, 0.95, 0.05})), turned(srgb)));
    add("tables",
        Stages().curves(table(2, 1), table(37, 1.7), table(4096, 2.6)).matrix(mixing).curves(table(300, 0.4)));
    return made;
}

TEST(ColourForms, ChainsOfAllKindsKeepToTheLaw) {
    for (const Pair& chain : chains_by_hand()) {
        const auto floats = random_pixels<float>(11, kSample / 20), dark = octaves(12, kSample / 20);
        const auto eights = random_pixels<std::uint8_t>(13, kSample / 20);
        const auto sixteens = random_pixels<std::uint16_t>(14, kSample / 20);
        expect_lawful<float>(chain.name + ", float", chain.law, floats);
        expect_lawful<float>(chain.name + ", octaves", chain.law, dark);
        expect_lawful<float, std::uint8_t>(chain.name + ", float to 8", chain.law, floats);
        expect_lawful<float, std::uint16_t>(chain.name + ", float to 16", chain.law, floats);
        expect_lawful<std::uint8_t>(chain.name + ", 8", chain.law, eights);
        expect_lawful<std::uint8_t, std::uint16_t>(chain.name + ", 8 to 16", chain.law, eights);
        expect_lawful<std::uint8_t, float>(chain.name + ", 8 to float", chain.law, eights);
        expect_lawful<std::uint16_t>(chain.name + ", 16", chain.law, sixteens);
        expect_lawful<std::uint16_t, std::uint8_t>(chain.name + ", 16 to 8", chain.law, sixteens);
        expect_lawful<std::uint16_t, float>(chain.name + ", 16 to float", chain.law, sixteens);
    }
}

TEST(ColourForms, WhatIsNoNumberOrHasNoPlaceGoesTheWayOfTheLaw) {
    constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    for (const Pair& pair : pairs()) {
        const Pixels<float> odd{{1, nan, nan, nan},   {1, inf, inf, inf},     {1, -inf, -inf, -inf},
                                {1, 0, -0.0f, 0},     {1, 1e30f, 0.5f, 0.5f}, {1, 0.5f, -1e23f, 0.25f},
                                {1, nan, 0.5f, 0.5f}, {1, 1e-42f, 0, 0}};
        expect_lawful<float>(pair.name + ", odd", pair.law, odd);
        expect_lawful<float, std::uint8_t>(pair.name + ", odd to 8", pair.law, odd);
        expect_lawful<float, std::uint16_t>(pair.name + ", odd to 16", pair.law, odd);
    }
}

/// Numbers of every kind, for forms against each other.
template <class T> Pixels<T> mixed_pixels(int count) {
    if constexpr (!std::is_same_v<T, float>) {
        return random_pixels<T>(21, count);
    } else {
        Pixels<T> made = octaves(22, count);
        const Pixels<T> plain = random_pixels<T>(23, count);
        for (std::size_t i = 0; i < made.size(); i += 3) made[i] = plain[i];
        constexpr float odd[] = {0,
                                 1,
                                 -0.0f,
                                 1e-42f,
                                 3e38f,
                                 std::numeric_limits<float>::infinity(),
                                 -std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::quiet_NaN()};
        for (std::size_t i = 0; i < made.size(); i += 97) made[i].green = odd[i / 97 % std::size(odd)];
        return made;
    }
}

/// The bytes that a form makes, run in pieces of random lengths.
template <class From, class To>
std::vector<std::byte> bytes_in_pieces(const ColourForm& form, const Pixels<From>& src) {
    std::minstd_rand random(3);
    Pixels<To> dst(src.size(), Pixel<To>{5, 0, 0, 0});
    for (std::size_t i = 0; i < src.size();) {
        const std::size_t n = std::min<std::size_t>(random() % 70, src.size() - i);
        form.run(src.data() + i, dst.data() + i, static_cast<std::int64_t>(n));
        i += n;
    }
    for (const auto& p : dst) EXPECT_EQ(p.alpha, 5);
    const auto bytes = std::as_bytes(std::span(dst));
    return {bytes.begin(), bytes.end()};
}

template <class From, class To> void expect_one_result(const Pair& pair) {
    const Pixels<From> src = mixed_pixels<From>(kWhole ? 20'011 : 2'003);
    std::vector<std::byte> plain;
    for (const auto level : kLevels) {
        if (level > standalone::DetectedProcessorLevel()) continue;
        SCOPED_TRACE(pair.name + ", level " + std::to_string(static_cast<int>(level)));
        standalone::SetProcessorLevel(level);
        const auto form = MakeColourForm(pair.law.get(), kDepth<From>, kDepth<To>, level != kLevels[0]);
        const auto own = MakeColourForm(pair.law.get(), kDepth<From>, kDepth<To>, false);
        standalone::SetProcessorLevel(standalone::ProcessorLevel::widest);
        ASSERT_TRUE(form != nullptr && own != nullptr);
        if (plain.empty()) plain = bytes_in_pieces<From, To>(*own, src);
        Pixels<To> dst(src.size(), Pixel<To>{5, 0, 0, 0}), limited = dst;
        own->run(src.data(), dst.data(), static_cast<std::int64_t>(src.size()));
        ASSERT_EQ(std::memcmp(dst.data(), plain.data(), plain.size()), 0);
        ASSERT_EQ((bytes_in_pieces<From, To>(*own, src)), plain);
        if constexpr (std::is_same_v<From, To>) {
            Pixels<To> in_place = src;
            own->run(in_place.data(), in_place.data(), static_cast<std::int64_t>(src.size()));
            for (std::size_t i = 0; i < src.size(); ++i) {
                dst[i].alpha = src[i].alpha;
                ASSERT_EQ(std::memcmp(&in_place[i], &dst[i], sizeof dst[i]), 0) << i;
            }
        }
        if (level == kLevels[0]) continue;
        form->run(src.data(), limited.data(), static_cast<std::int64_t>(src.size()));
        for (std::size_t i = 0; std::is_same_v<To, float> && i < src.size(); ++i) {
            const auto clip = [](auto v) { return v > 0 ? std::min(v, decltype(v){1}) : decltype(v){0}; };
            ASSERT_EQ(limited[i].red, clip(dst[i].red));
            ASSERT_EQ(limited[i].green, clip(dst[i].green));
            ASSERT_EQ(limited[i].blue, clip(dst[i].blue));
        }
    }
}

TEST(ColourForms, EveryLevelEveryCutAndInPlaceGiveOneResult) {
    std::vector<Pair> all = pairs();
    for (Pair& chain : chains_by_hand()) all.push_back(std::move(chain));
    for (const Pair& pair : all) {
        expect_one_result<std::uint8_t, std::uint8_t>(pair);
        expect_one_result<std::uint8_t, std::uint16_t>(pair);
        expect_one_result<std::uint8_t, float>(pair);
        expect_one_result<std::uint16_t, std::uint8_t>(pair);
        expect_one_result<std::uint16_t, std::uint16_t>(pair);
        expect_one_result<std::uint16_t, float>(pair);
        expect_one_result<float, std::uint8_t>(pair);
        expect_one_result<float, std::uint16_t>(pair);
        expect_one_result<float, float>(pair);
        if (HasFatalFailure()) return;
    }
}

TEST(ColourForms, OtherPipelinesHaveNone) {
    const Curve srgb = parametric(4, kSrgb), sigmoid = parametric(108, {2}), line = parametric(1, {1});
    const std::array<double, 9> heavy{3, -2, 0, 0, 1, 0, 0, 0, 1}, even{1, 0, 0, 0, 1, 0, 0, 0, 1};
    std::vector<Pair> none;
    const auto add = [&](const char* name, Stages& stages) { none.push_back({name, std::move(stages.pipeline)}); };
    add("a table of colours",
        Stages().curves(srgb).add(cmsStageAllocCLutFloat(nullptr, 3, 3, 3, nullptr)).curves(line));
    add("curves without a formula", Stages().curves(sigmoid).matrix(even).curves(line));
    add("a formula beside a table", Stages().curves(srgb, table(9, 2), srgb).matrix(even));
    add("curves between", Stages().curves(srgb).matrix(even).curves(srgb).matrix(even));
    add("three curves", Stages().curves(srgb).curves(srgb).curves(srgb));
    add("factors too large for floats", Stages().curves(srgb).matrix(heavy));
    for (const Pair& pair : none) {
        EXPECT_EQ(MakeColourForm(pair.law.get(), ColourDepth::real, ColourDepth::real, false), nullptr) << pair.name;
    }
    // What is known code by code needs no formula.
    for (const std::size_t i : {1u, 2u}) {
        EXPECT_NE(MakeColourForm(none[i].law.get(), ColourDepth::sixteen, ColourDepth::real, false), nullptr);
    }
}

TEST(ColourForms, WantOfMemoryIsThrownAndLeavesNothing) {
    const Reports quiet;
    for (const Pair& chain : chains_by_hand()) {
        for (const auto src : {ColourDepth::eight, ColourDepth::sixteen, ColourDepth::real}) {
            const auto before = blocks_in_use();
            bool failed = true;
            for (int nth = 1; failed; ++nth) {
                failed = short_of_memory(nth, [&] {
                    try {
                        return MakeColourForm(chain.law.get(), src, ColourDepth::real, false) == nullptr;
                    } catch (const std::bad_alloc&) {
                        return true;
                    }
                });
                EXPECT_EQ(blocks_in_use(), before);
                ASSERT_LT(nth, 20);
            }
        }
    }
}

}  // namespace
