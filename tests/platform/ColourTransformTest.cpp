// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/ColourKit.h"

namespace {

using namespace qx::test;

constexpr std::size_t kSome = kSanitized ? 4000 : 100000;

float full_of(std::uint32_t format) { return format == kBytes ? 255 : format == kWords ? 32768 : 1; }

/// A picture in memory of a format, as numbers.
struct Picture {
    std::uint32_t format;
    std::vector<std::array<std::uint8_t, 4>> bytes{};
    std::vector<std::array<std::uint16_t, 4>> words{};
    std::vector<std::array<float, 4>> floats{};
    Picture(std::uint32_t f, std::size_t count) : format(f) {
        if (f == kBytes || f == CMX_Code("cmyw"))
            bytes.resize(count);
        else if (f == kFloats)
            floats.resize(count);
        else
            words.resize(count);
    }
    std::size_t count() const { return bytes.size() + words.size() + floats.size(); }
    void* data() {
        return !bytes.empty()  ? static_cast<void*>(bytes.data())
               : words.empty() ? static_cast<void*>(floats.data())
                               : words.data();
    }
    void set(std::size_t i, std::size_t c, float value) {
        if (!bytes.empty())
            bytes[i][c] = static_cast<std::uint8_t>(value);
        else if (!words.empty())
            words[i][c] = static_cast<std::uint16_t>(value);
        else
            floats[i][c] = value;
    }
    float get(std::size_t i, std::size_t c) const {
        return !bytes.empty() ? bytes[i][c] : !words.empty() ? words[i][c] : floats[i][c];
    }
};

Picture random_picture(std::uint32_t format, std::size_t count, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<float> real(-1, 8);
    const bool wide = format == kFloats;
    const auto most = format == kBytes || format == CMX_Code("cmyw") ? 255 : 32768;
    std::uniform_int_distribution<int> whole(0, most);
    Picture picture(format, count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 4; ++c) picture.set(i, c, wide ? real(random) : static_cast<float>(whole(random)));
    }
    return picture;
}

/// The law in its own words: what the library gives exactly, and how far a form of the engine's own may stand from
/// that. The foot of a steep curve makes more of the same error in light, which the way through light tells.
class Law {
public:
    Law(const HCL_CMX_ProfilePtr& from, const HCL_CMX_ProfilePtr& to, bool has_form)
        : direct_(ICCOf(*from), ICCOf(*to)), light_(ICCOf(*to), ICCOf(*to)), back_(light_) {
        if (!has_form) return;
        const ICC light = ICCOf(*HCL_CMX_GetLinearRGBProfile(to));
        light_ = Exact(ICCOf(*from), light);
        back_ = Exact(light, ICCOf(*to));
        has_form_ = true;
    }
    void check(const Colour& in, const std::array<float, 3>& got, std::uint32_t format) const {
        const Colour exact = direct_(in);
        Colour slack{};
        if (has_form_) slack = slack_of(in, exact);
        for (std::size_t c = 0; c < 3; ++c) {
            const double full = full_of(format), value = static_cast<double>(exact[c]) * full;
            if (format == kFloats) {
                if (got[c] == exact[c]) continue;
                ASSERT_LE(std::abs(got[c] - exact[c]), slack[c]) << in[0] << ' ' << in[1] << ' ' << in[2];
            } else {
                const double give = has_form_ ? 0.01 + static_cast<double>(slack[c]) * full : 0;
                const auto code = [&](double v) { return std::clamp(std::floor(v + 0.5), 0.0, full); };
                ASSERT_GE(got[c], code(value - give)) << in[0] << ' ' << in[1] << ' ' << in[2];
                ASSERT_LE(got[c], code(value + give)) << in[0] << ' ' << in[1] << ' ' << in[2];
            }
        }
    }

private:
    Colour slack_of(const Colour& in, const Colour& exact) const {
        const Colour light = light_(in);
        const float most = std::max({std::abs(light[0]), std::abs(light[1]), std::abs(light[2])});
        Colour up = light, down = light, slack;
        for (std::size_t c = 0; c < 3; ++c) up[c] += 1e-6F * most, down[c] -= 1e-6F * most;
        up = back_(up), down = back_(down);
        const Colour still = back_(light);
        for (std::size_t c = 0; c < 3; ++c) {
            slack[c] = std::max(std::abs(up[c] - still[c]), std::abs(down[c] - still[c])) +
                       1e-6F * std::max(1.0F, std::abs(exact[c]));
        }
        return slack;
    }
    Exact direct_, light_, back_;
    bool has_form_ = false;
};

struct Pair {
    std::string name;
    HCL_CMX_ProfilePtr from, to;
    bool has_form;
};
std::vector<Pair> pairs() {
    std::vector<Pair> all;
    for (const auto& [from, to] : Cases<Text, Text>{{"srgb", "display-p3"},
                                                    {"display-p3", "srgb"},
                                                    {"srgb", "rec2020"},
                                                    {"rec2020", "linear"},
                                                    {"linear", "srgb"},
                                                    {"srgb", "linear"},
                                                    {"gamma-2.2", "srgb"}}) {
        all.push_back({std::string(from) + " to " + to, named(from), named(to), true});
    }
    all.push_back({"curves of a table", must_read(curve_profile(tabulated(1024, 2.2), 2.1)), named("srgb"), true});
    all.push_back(
        {"to curves of a table", named("display-p3"), must_read(curve_profile(tabulated(4096, 1.8), 4.3)), true});
    all.push_back({"tables", must_read(table_profile(3, 2.1)), named("srgb"), false});
    all.push_back({"to tables", named("srgb"), must_read(table_profile(3, 4.3)), false});
    return all;
}

TEST(ColourTransform, GivesWhatTheLibraryGivesExactly) {
    for (const Pair& pair : pairs()) {
        const auto transform = link(pair.from, pair.to);
        const Law law(pair.from, pair.to, pair.has_form);
        for (const auto& [from, to] : each(std::array{kBytes, kWords, kFloats}, std::array{kBytes, kWords, kFloats})) {
            for (const auto seed : seeds(1)) {
                SCOPED_TRACE(pair.name + ", " + std::to_string(from) + " to " + std::to_string(to));
                Picture src = random_picture(from, kSome / 9, seed), dst = random_picture(to, src.count(), seed + 1);
                const Picture before = dst;
                ASSERT_EQ(apply(transform.get(), src.data(), from, dst.data(), to, src.count()), 0);
                for (std::size_t i = 0; i < src.count(); ++i) {
                    ASSERT_EQ(dst.get(i, 0), before.get(i, 0)) << "alpha";
                    Colour in;
                    for (std::size_t c = 0; c < 3; ++c) in[c] = src.get(i, c + 1) / full_of(from);
                    law.check(in, {dst.get(i, 1), dst.get(i, 2), dst.get(i, 3)}, to);
                    if (testing::Test::HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(ColourTransform, InksAreASourceOfTheirOwnFormats) {
    for (const double version : {2.1, 4.3}) {
        const auto inks = must_read(table_profile(4, version)), srgb = named("srgb");
        EXPECT_EQ(FactsOf(*inks).space, standalone::ProfileSpace::cmyk);
        const auto transform = link(inks, srgb);
        // Floats of the library are inks in percent.
        const Exact exact(ICCOf(*inks), ICCOf(*srgb), Intent::relative, 0, TYPE_CMYK_FLT);
        for (const auto& [from, full] :
             Cases<std::uint32_t, float>{{CMX_Code("cmyw"), 255}, {CMX_Code("CMYK"), 32768}}) {
            Picture src = random_picture(from, 2000, 5), dst(kFloats, src.count());
            ASSERT_EQ(apply(transform.get(), src.data(), from, dst.data(), kFloats, src.count()), 0);
            for (std::size_t i = 0; i < src.count(); ++i) {
                std::array<float, 4> in;
                for (std::size_t c = 0; c < 4; ++c) in[c] = src.get(i, c) / full * 100;
                const Colour wanted = exact(in);
                for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(dst.get(i, c + 1), wanted[c], 2e-6);
            }
        }
        Picture one(kBytes, 1);
        EXPECT_NE(apply(transform.get(), one.data(), kBytes, one.data(), kBytes, 1), 0) << "colours";
        EXPECT_NE(apply(link(srgb, srgb).get(), one.data(), CMX_Code("cmyw"), one.data(), kBytes, 1), 0) << "inks";
        CMX_Transform* none = nullptr;
        EXPECT_NE(QX_ENGINE(MakeColorTransform)(srgb->GetProfile(), inks->GetProfile(), 1, nullptr, &none), 0);
        EXPECT_NE(QX_ENGINE(ConcatTransforms)(link(srgb, srgb).get(), transform.get(), &none), 0);
        EXPECT_EQ(none, nullptr);
    }
}

TEST(ColourTransform, WhiteBlackAndGreysStayWhatTheyAre) {
    const std::vector<std::string> names = standalone::ProfileNames();
    for (const auto& [a, b] : each(names, names)) {
        SCOPED_TRACE(a + " to " + b);
        const auto transform = link(named(a), named(b));
        for (const auto format : {kBytes, kWords, kFloats}) {
            const float full = full_of(format);
            const std::size_t steps = format == kBytes ? 256 : format == kWords ? (kSanitized ? 129 : 32769) : 2;
            Picture ramp(format, steps);
            for (std::size_t i = 0; i < steps; ++i) {
                const float value = static_cast<float>(i) * full / static_cast<float>(steps - 1);
                for (std::size_t c = 0; c < 4; ++c) ramp.set(i, c, value);
            }
            ASSERT_EQ(apply(transform.get(), ramp.data(), format, ramp.data(), format, steps), 0);
            for (std::size_t i = 0; i < steps; ++i) {
                const auto [low, high] = std::minmax({ramp.get(i, 1), ramp.get(i, 2), ramp.get(i, 3)});
                ASSERT_LE(high - low, format == kFloats ? 1e-6F : 1.0F) << i;
                const float end = i == 0 ? 0 : full;
                if (i != 0 && i != steps - 1) continue;
                ASSERT_LE(std::max(std::abs(low - end), std::abs(high - end)), format == kFloats ? 1e-6F : 0) << end;
            }
        }
    }
}

TEST(ColourTransform, EveryColourOf8BitsSurvivesAWiderSpaceAt16) {
    const auto there = link(named("srgb"), named("display-p3")), back = link(named("display-p3"), named("srgb"));
    constexpr std::uint32_t kStep = kSanitized ? 997 : 1;
    std::vector<std::array<std::uint8_t, 4>> colours(65536), again(colours.size());
    std::vector<std::array<std::uint16_t, 4>> wide(colours.size());
    for (std::uint32_t first = 0; first < 1U << 24; first += kStep * 65536) {
        for (std::uint32_t i = 0; i < 65536; ++i) {
            const std::uint32_t n = (first + i * kStep) & 0xFFFFFF;
            colours[i] = {0, static_cast<std::uint8_t>(n >> 16), static_cast<std::uint8_t>(n >> 8),
                          static_cast<std::uint8_t>(n)};
        }
        ASSERT_EQ(apply(there.get(), colours.data(), kBytes, wide.data(), kWords, colours.size()), 0);
        ASSERT_EQ(apply(back.get(), wide.data(), kWords, again.data(), kBytes, colours.size()), 0);
        ASSERT_EQ(colours, again);
    }
}

/// Values beyond the integers' ends and none at all.
TEST(ColourTransform, ResultsAreLimitedAsTheirDepthAndOptionsSay) {
    const auto linear = named("linear"), wide = named("linear-rec2020");
    const float nan = std::numeric_limits<float>::quiet_NaN(), huge = 1e9F;
    const std::array<float, 4> src[] = {{1, 3, -2, 0.5}, {1, nan, nan, nan}, {1, huge, huge, huge}};
    const auto same = link(linear, linear);
    for (const auto& [format, full] : Cases<std::uint32_t, float>{{kBytes, 255}, {kWords, 32768}}) {
        Picture dst(format, 3);
        ASSERT_EQ(apply(same.get(), src, kFloats, dst.data(), format, 3), 0);
        EXPECT_TRUE(dst.get(0, 1) == full && dst.get(0, 2) == 0 && dst.get(0, 3) == std::floor(full / 2 + 0.5F));
        for (std::size_t c = 1; c < 4; ++c) EXPECT_TRUE(dst.get(1, c) == 0 && dst.get(2, c) == full) << c;
    }
    const auto clip = options({{CMX_Code("clip"), 1}}), over = options({{CMX_Code("clip"), 0}});
    const auto range = [&](CMX_Transform* transform, const t_CMX_Options* with) {
        std::array<float, 4> dst[3] = {};
        EXPECT_EQ(apply(transform, src, kFloats, dst, kFloats, 1, with), 0);
        return std::tuple(dst[0][1] > 1, dst[0][2] < 0);
    };
    const std::tuple free(true, true), limited(false, false);
    const auto plain = link(linear, wide), clipping = link(linear, wide, Intent::relative, &clip);
    EXPECT_EQ(range(plain.get(), nullptr), free);
    EXPECT_EQ(range(plain.get(), &clip), limited);
    EXPECT_EQ(range(clipping.get(), nullptr), limited);
    EXPECT_EQ(range(clipping.get(), &over), free);
    const auto speed = options({{CMX_Code("optL"), 100}});
    for (const auto& [base, with, wanted] :
         std::vector<std::tuple<CMX_Transform*, const t_CMX_Options*, std::tuple<bool, bool>>>{
             {plain.get(), &speed, free},
             {clipping.get(), &speed, limited},
             {plain.get(), &clip, limited},
             {clipping.get(), &over, free},
             {plain.get(), nullptr, free}}) {
        CMX_Transform* fast = nullptr;
        ASSERT_EQ(QX_ENGINE(OptimizeTransform)(base, with, &fast), 0);
        EXPECT_EQ(range(fast, nullptr), wanted);
        EXPECT_EQ(QX_ENGINE(UnReferenceTransform)(fast), 0);
    }
    t_CMX_Options many = speed;
    many.count = 4000000000U;  // never read beyond the record
    EXPECT_EQ(range(plain.get(), &many), free);
}

TEST(ColourTransform, IntentsAndCompensationAreTheLibrarys) {
    const auto from = must_read(table_profile(3, 2.1)), to = named("display-p3");
    const auto on = options({{CMX_Code("blpc"), 1}});
    for (const int intent : {0, 1, 2, 3}) {
        for (const bool compensate : {false, true}) {
            const auto kind = static_cast<Intent>(intent);
            const Exact exact(ICCOf(*from), ICCOf(*to), kind, compensate ? cmsFLAGS_BLACKPOINTCOMPENSATION : 0);
            const auto made = link(from, to, kind, compensate ? &on : nullptr), plain = link(from, to, kind);
            const auto asked = standalone::MakeTransform(*from, *to, kind, compensate, nullptr);
            for (const float v : {0.0F, 0.1F, 0.7F}) {
                const std::array<float, 4> src{0, v, v / 2, v};
                const Colour wanted = exact(Colour{v, v / 2, v});
                for (const auto& [transform, with] : {std::pair{made.get(), static_cast<const t_CMX_Options*>(nullptr)},
                                                      {asked.get(), nullptr},
                                                      {plain.get(), compensate ? &on : nullptr}}) {
                    std::array<float, 4> dst{};
                    ASSERT_EQ(apply(transform, &src, kFloats, &dst, kFloats, 1, with), 0);
                    for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(dst[c + 1], wanted[c]) << intent << compensate;
                }
            }
        }
    }
    CMX_Transform* none = nullptr;
    for (const int intent : {-1, 4}) {
        EXPECT_NE(QX_ENGINE(MakeColorTransform)(from->GetProfile(), to->GetProfile(), intent, nullptr, &none), 0);
    }
}

/// Longer than a run between two steps, and cut in two.
TEST(ColourTransform, JoinedOnesRunOneAfterAnother) {
    const auto clip = options({{CMX_Code("clip"), 1}});
    const auto first = link(named("srgb"), named("linear"), Intent::relative, &clip);
    const auto second = link(named("linear-rec2020"), named("gamma-2.2"));
    const auto third = link(named("srgb"), named("rec709"));
    CMX_Transform *two = nullptr, *three = nullptr;
    ASSERT_EQ(QX_ENGINE(ConcatTransforms)(first.get(), second.get(), &two), 0);
    ASSERT_EQ(QX_ENGINE(ConcatTransforms)(two, third.get(), &three), 0);
    ASSERT_EQ(QX_ENGINE(ReferenceTransform)(three), 0);
    ASSERT_EQ(QX_ENGINE(UnReferenceTransform)(three), 0);
    Picture src = random_picture(kFloats, 1000, 3), apart = src, whole(kFloats, 1000), cut(kFloats, 1000);
    const auto over = options({{CMX_Code("clip"), 0}});
    for (CMX_Transform* step : {first.get(), second.get(), third.get()}) {
        ASSERT_EQ(apply(step, apart.data(), kFloats, apart.data(), kFloats, 1000, &over), 0);
    }
    ASSERT_EQ(apply(three, src.data(), kFloats, whole.data(), kFloats, 1000), 0);
    Picture limited = whole;  // at the end alone
    ASSERT_EQ(apply(three, src.data(), kFloats, limited.data(), kFloats, 1000, &clip), 0);
    ASSERT_EQ(apply(three, src.data(), kFloats, cut.data(), kFloats, 301), 0);
    ASSERT_EQ(apply(three, &src.floats[301], kFloats, &cut.floats[301], kFloats, 699), 0);
    for (std::size_t i = 0; i < 1000; ++i) {
        for (std::size_t c = 1; c < 4; ++c) ASSERT_EQ(whole.floats[i][c], apart.floats[i][c]) << i;
        ASSERT_EQ(whole.floats[i], cut.floats[i]) << i;
        for (std::size_t c = 1; c < 4; ++c) {
            ASSERT_EQ(limited.floats[i][c], std::clamp(whole.floats[i][c], 0.0F, 1.0F)) << i;
        }
    }
    QX_ENGINE(UnReferenceTransform)(two);
    QX_ENGINE(UnReferenceTransform)(three);
}

TEST(ColourTransform, WrongArgumentsAreRefused) {
    const auto srgb = named("srgb");
    const auto transform = link(srgb, srgb);
    std::array<std::uint8_t, 4> pixel{1, 2, 3, 4};
    const auto run = [&](CMX_Transform* t, std::uint32_t layout, const void* src, std::uint32_t from, void* dst,
                         std::uint32_t to, std::int64_t count) {
        return QX_ENGINE(ApplyTransform)(t, layout, src, from, dst, to, count, nullptr);
    };
    constexpr auto kLayout = CMX_Code("ctpk");
    EXPECT_NE(run(nullptr, kLayout, &pixel, kBytes, &pixel, kBytes, 1), 0);
    EXPECT_NE(run(transform.get(), CMX_Code("pktc"), &pixel, kBytes, &pixel, kBytes, 1), 0);
    EXPECT_NE(run(transform.get(), kLayout, nullptr, kBytes, &pixel, kBytes, 1), 0);
    EXPECT_NE(run(transform.get(), kLayout, &pixel, 7, &pixel, kBytes, 1), 0);
    EXPECT_NE(run(transform.get(), kLayout, &pixel, kBytes, &pixel, CMX_Code("cmyw"), 1), 0);
    EXPECT_NE(run(transform.get(), kLayout, &pixel, kBytes, &pixel, kBytes, -1), 0);
    EXPECT_FALSE(standalone::LastColourFault().empty());
    EXPECT_EQ(pixel, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_EQ(run(transform.get(), kLayout, nullptr, kBytes, nullptr, kBytes, 0), 0);
}

TEST(ColourTransform, MadeOnesAreKeptUntilForgotten) {
    const auto a = named("srgb"), again = named("srgb"), b = named("display-p3");
    const auto made = [&](const auto& from, const auto& to, Intent intent, bool compensation) {
        return standalone::MakeTransform(*from, *to, intent, compensation, nullptr);
    };
    const auto one = made(a, b, Intent::relative, false);
    EXPECT_EQ(made(again, b, Intent::relative, false).get(), one.get());
    EXPECT_NE(made(b, a, Intent::relative, false).get(), one.get());
    EXPECT_NE(made(a, b, Intent::relative, true).get(), one.get());
    EXPECT_NE(made(a, b, Intent::absolute, false).get(), one.get());
    standalone::ForgetTransforms();
    EXPECT_NE(made(a, b, Intent::relative, false).get(), one.get());
    standalone::ForgetTransforms();
}

TEST(ColourTransform, ManyThreadsRunOneAndMakeMore) {
    const Picture src = random_picture(kBytes, 3000, 9);
    const auto tables = must_read(table_profile(3, 4.3)), srgb = named("srgb"), wide = named("display-p3");
    for (const auto& from : {srgb, tables}) {
        const auto transform = link(from, wide);
        Picture alone = src;
        ASSERT_EQ(apply(link(from, wide).get(), alone.data(), kBytes, alone.data(), kBytes, src.count()), 0);
        in_threads(16, [&](int) {
            Picture own = src;
            EXPECT_EQ(apply(transform.get(), own.data(), kBytes, own.data(), kBytes, own.count()), 0);
            EXPECT_EQ(own.bytes, alone.bytes);
            EXPECT_NE(standalone::MakeTransform(*from, *wide, Intent::absolute, true, nullptr).get(), nullptr);
        });
    }
    standalone::ForgetTransforms();
}

}  // namespace
