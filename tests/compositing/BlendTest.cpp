// SPDX-License-Identifier: Apache-2.0
// Cross-fades of worlds against their formulas in wide integers, and all levels against the plain one.
#include "QX/indep/QX_Area.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

using Routine = int(void*, const QX_LayerDef*, const QX_LayerDef*, std::int32_t, QX_LayerDef*);
constexpr Routine* kForms[] = {&QX_Blend_Straight, &QX_Blend_Premul};

template <class Pixel> std::array<QX_ChannelOf<Pixel>, 4> channels(const Pixel& p) {
    return {p.alpha, p.red, p.green, p.blue};
}

/// What a float weighs: truncated; the least number where it does not fit.
std::int64_t weight_of(std::int64_t weight, float x) {
    const float product = static_cast<float>(weight) * x;
    return std::fabs(product) < 0x1p63f ? static_cast<std::int64_t>(product) : std::numeric_limits<std::int64_t>::min();
}
float sum_of(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    (void)__builtin_add_overflow(a, b, &sum);
    return static_cast<float>(sum);
}

/// One pixel of a ratio between 0 and 0x10000, both left out.
template <class Pixel> Pixel model(bool straight, const Pixel& p, const Pixel& q, std::int64_t ratio) {
    using Channel = QX_ChannelOf<Pixel>;
    const std::int64_t inverse = 65536 - ratio;
    const auto c1 = channels(p), c2 = channels(q);
    std::array<Channel, 4> out{};
    if constexpr (DepthOf<Pixel>::number == 32) {
        const std::int64_t w1 = weight_of(inverse, p.alpha), w2 = weight_of(ratio, q.alpha);
        const float sum = sum_of(w1, w2);
        for (std::size_t i = 0; i < 4; ++i) {
            const float mixed = sum_of(weight_of(inverse, c1[i]), weight_of(ratio, c2[i])) * 1.52587890625e-5f;
            const float shared = w1 == 0   ? c2[i]
                                 : w2 == 0 ? c1[i]
                                           : (static_cast<float>(w2) * c2[i] + static_cast<float>(w1) * c1[i]) / sum;
            out[i] = straight && i > 0 ? shared : mixed;
        }
    } else {
        const std::int64_t w1 = p.alpha * inverse, w2 = q.alpha * ratio, sum = w1 + w2;
        for (std::size_t i = 0; i < 4; ++i) {
            const std::int64_t mixed = (c2[i] * ratio + c1[i] * inverse + 32768) / 65536;
            const std::int64_t shared = w1 == 0 ? c2[i] : w2 == 0 ? c1[i] : (c1[i] * w1 + c2[i] * w2 + sum / 2) / sum;
            out[i] = static_cast<Channel>(straight && i > 0 ? shared : mixed);
        }
    }
    return {out[0], out[1], out[2], out[3]};
}

/// Ratios where something changes, and others.
const std::int32_t kRatios[] = {1, 2, 255, 256, 257, 32767, 32768, 32769, 43690, 65279, 65534, 65535, 12345, 54321};

template <class Pixel> struct Worlds {
    int width, height;
    TestWorld<Pixel> a, b, dst{width, height, FillKind::random, 99};

    Worlds(int w, int h, FillKind one, FillKind other, std::uint64_t seed)
        : width(w), height(h), a(w, h, one, seed), b(w, h, other, seed + 500) {}
    std::vector<Pixel> blended(Routine* form, std::int32_t ratio) {
        EXPECT_EQ(form(nullptr, a.record(), b.record(), ratio, dst.record()), 0);
        return dst.pixels();
    }
};

template <class Pixel> class Blend : public BornAtDepth<Pixel, 1> {};
TYPED_TEST_SUITE(Blend, AllDepths);

TYPED_TEST(Blend, IsItsFormula) {
    std::uint64_t seed = 0;
    for (const auto& [one, other, form, ratio] : each(kAllFills, kAllFills, kForms, kRatios)) {
        Worlds<TypeParam> worlds(67, 5, one, other, ++seed);
        const auto got = worlds.blended(form, ratio), a = worlds.a.pixels(), b = worlds.b.pixels();
        for (std::size_t i = 0; i < got.size(); ++i) {
            ASSERT_EQ(got[i], model(form == &QX_Blend_Straight, a[i], b[i], ratio))
                << "seed " << seed << " ratio " << ratio << ": " << a[i] << " and " << b[i];
        }
    }
}

/// Ratios beyond the ends are the ends, where rows are copied, whatever the alphas; floats bit by bit.
TYPED_TEST(Blend, AtItsEndsIsACopy) {
    for (const auto& [fill, form] : each(kAllFills, kForms)) {
        Worlds<TypeParam> worlds(31, 3, fill, FillKind::random, 7);
        for (const std::int32_t ratio : {0, -1, INT_MIN}) EXPECT_EQ(worlds.blended(form, ratio), worlds.a.pixels());
        for (const std::int32_t ratio : {0x10000, 0x10001, INT_MAX}) {
            EXPECT_EQ(worlds.blended(form, ratio), worlds.b.pixels());
        }
    }
}

/// Turned round it is the same, but for colours where nothing weighs. A destination may be a source.
TYPED_TEST(Blend, TurnsRoundAndWorksInPlace) {
    for (const auto& [fill, form, ratio] : each(kAllFills, kForms, kRatios)) {
        Worlds<TypeParam> worlds(67, 3, fill, FillKind::random, 3), turned(67, 3, fill, FillKind::random, 3);
        const auto forward = worlds.blended(form, ratio);
        ASSERT_EQ(form(nullptr, turned.b.record(), turned.a.record(), 0x10000 - ratio, turned.dst.record()), 0);
        for (const auto& [x, y] : places(67, 3)) {
            const TypeParam &p = worlds.dst.at(x, y), &q = turned.dst.at(x, y);
            const auto weighs = [](auto alpha, std::int32_t weight) {
                return std::fabs(static_cast<double>(alpha) * weight) >= 1;
            };
            const bool weightless =
                !weighs(worlds.a.at(x, y).alpha, 0x10000 - ratio) && !weighs(worlds.b.at(x, y).alpha, ratio);
            ASSERT_TRUE(p == q || (form == &QX_Blend_Straight && weightless && p.alpha == q.alpha)) << p << q;
        }
        ASSERT_EQ(form(nullptr, turned.a.record(), turned.b.record(), ratio, turned.a.record()), 0);
        ASSERT_EQ(form(nullptr, worlds.a.record(), worlds.b.record(), ratio, worlds.b.record()), 0);
        ASSERT_TRUE(turned.a.pixels() == forward && worlds.b.pixels() == forward);
    }
}

/// Every pair of channels and of alphas at 8 bits, of multiplied pixels and of shares.
TEST(BlendAt8Bits, EveryPairOfChannels) {
    const Born born;
    TestWorld<QX_Pixel8> a(256, 256, FillKind::random, 1), b(256, 256, FillKind::random, 2);
    for (const auto& [x, y] : places(256, 256)) {
        const auto c = [](int v) { return static_cast<std::uint8_t>(v); };
        a.at(x, y) = {c(x), c(x), 0, 255}, b.at(x, y) = {c(y), c(y), 255, c(x ^ y)};
    }
    TestWorld<QX_Pixel8> dst(256, 256, FillKind::clear, 3);
    for (const auto& [form, ratio] : each(kForms, kRatios)) {
        ASSERT_EQ(form(nullptr, a.record(), b.record(), ratio, dst.record()), 0);
        for (const auto& [x, y] : places(256, 256)) {
            ASSERT_EQ(dst.at(x, y), model(form == &QX_Blend_Straight, a.at(x, y), b.at(x, y), ratio))
                << a.at(x, y) << b.at(x, y) << ratio;
        }
    }
}

TEST(BlendCases, WithoutAlphaThereIsNoWeight) {
    const Born born;
    // Columns: first and second pixel, ratio, and what comes out
    const Cases<QX_Pixel8, QX_Pixel8, std::int32_t, QX_Pixel8> cases = {
        {{0, 1, 2, 3}, {0, 4, 5, 6}, 100, {0, 4, 5, 6}},
        {{0, 1, 2, 3}, {255, 4, 5, 6}, 100, {0, 4, 5, 6}},
        {{255, 1, 2, 3}, {0, 4, 5, 6}, 65500, {0, 1, 2, 3}}};
    for (const auto& [p, q, ratio, wanted] : cases) {
        Picture<QX_Pixel8> a(1, 1), b(1, 1);
        a.at(0, 0) = p, b.at(0, 0) = q;
        EXPECT_EQ(QX_Blend(nullptr, &a.record, &b.record, ratio, &b.record), 0) << "is the straight one";
        EXPECT_EQ(b.at(0, 0), wanted);
    }
}

TEST(BlendRefusals, LeaveTheDestinationAsItWas) {
    const Born born;
    BadWorlds bad;
    Worlds<QX_Pixel8> w(4, 4, FillKind::random, FillKind::random, 1);
    TestWorld<QX_Pixel16> deep(4, 4, FillKind::random, 1);
    Picture<QX_Pixel8> wide(5, 4), tall(4, 5);
    const std::string depths = "QX_BlendPremul requires src1, src2 and dst worlds to be same depth",
                      sizes = "QX_Blend requires width and height of all worlds to be the same";
    QX_LayerDef *const a = w.a.record(), *const b = w.b.record(), *const dst = w.dst.record();
    const auto before = w.dst.pixels();
    // Columns: first, second, destination, and the report
    const Cases<QX_LayerDef*, QX_LayerDef*, QX_LayerDef*, std::string> calls = {
        {&bad.gpu, b, dst, kOnGpu},
        {a, &bad.gpu, dst, kOnGpu},
        {nullptr, &bad.gpu, dst, kOnGpu},
        {nullptr, deep.record(), dst, kBadParameter},
        {a, nullptr, dst, kBadParameter},
        {a, b, nullptr, kBadParameter},
        {deep.record(), b, dst, depths},
        {a, deep.record(), dst, depths},
        {a, b, deep.record(), depths},
        {&bad.odd, &bad.odd, &bad.odd, "Unknown world bitdepth in##CONDITIONNAME"},
        {&bad.empty, &wide.record, dst, kBadParameter},
        {a, &bad.empty, dst, kBadParameter},
        {a, b, &bad.empty, kBadParameter},
        {&wide.record, b, dst, sizes},
        {a, &tall.record, dst, sizes},
        {a, b, &wide.record, sizes}};
    for (const auto& [src1, src2, to, text] : calls) {
        for (const auto& [form, ratio] : each(std::array{kForms[0], kForms[1], &QX_Blend}, std::array{0, 77})) {
            expect_refused({{[&, form = form, ratio = ratio, src1 = src1, src2 = src2, to = to] {
                                 return form(nullptr, src1, src2, ratio, to);
                             },
                             text, 3, text == kBadParameter ? 0x25000C : 0}});
        }
    }
    EXPECT_EQ(w.dst.pixels(), before);
    EXPECT_EQ(QX_Blend(nullptr, a, b, 0x8000, dst), 0) << "these are well";
}

/// Rows of a seed, at any address, of any length, with what lies beside them, each blended in several ways.
template <class Pixel> std::vector<std::uint8_t> blended(std::uint64_t seed) {
    Numbers n(static_cast<unsigned>(seed));
    const int width = n(0, 8) != 0 ? 1 + n(0, 67) : n(500, 3000), depth = DepthOf<Pixel>::number;
    const auto make_canvas = [&](std::uint64_t fill) {
        auto canvas = std::make_unique<Canvas>(Canvas{depth, width + 4, 3, 4 * n(0, 5)});
        for (int y = 0; y < 3; ++y) {
            fill_pixels<Pixel>({row<Pixel>(*canvas->world, y), static_cast<std::size_t>(width + 4)},
                               kAllFills[static_cast<std::size_t>(n(0, 6))], fill + static_cast<unsigned>(y));
        }
        return canvas;
    };
    const auto a = make_canvas(seed * 9), b = make_canvas(seed * 9 + 3), dst = make_canvas(seed * 9 + 6);
    const auto record_of = [&](const Canvas& canvas) {
        QX_LayerDef record{};
        canvas.world->FillOutEffectWorld(&record);
        record.data = qx::pixel_at<Pixel>(record, n(0, 5), 0);
        record.width = width, record.world = nullptr;
        return record;
    };
    const QX_LayerDef first = record_of(*a), second = record_of(*b);
    QX_LayerDef to = record_of(*dst);
    std::vector<std::uint8_t> made;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(kForms[n(0, 2)](nullptr, &first, &second, n(1, 0x10000), &to), 0) << "seed " << seed;
        made.insert(made.end(), dst->memory.begin(), dst->memory.end());
    }
    return made;
}

/// In batches, whose memory is no burden: 11 million pixels a depth and level.
TEST(BlendLevels, MakeNoDifference) {
    const auto made_at = [](standalone::ProcessorLevel level, const auto& batch) {
        const Born born(1, level);
        std::vector<std::vector<std::uint8_t>> made;
        for (const std::uint64_t seed : batch) {
            made.push_back(seed % 3 == 0   ? blended<QX_Pixel16>(seed)
                           : seed % 3 == 1 ? blended<QX_PixelFloat>(seed)
                                           : blended<QX_Pixel8>(seed));
        }
        return made;
    };
    const auto all = seeds(9000);
    constexpr std::ptrdiff_t kBatch = 500;
    for (std::ptrdiff_t done = 0; done < std::ssize(all); done += kBatch) {
        const auto batch = all | std::views::drop(done) | std::views::take(kBatch);
        const auto plain = made_at(standalone::ProcessorLevel::plain, batch);
        for (const auto level : kLevels) {
            if (level == standalone::ProcessorLevel::plain || level > standalone::DetectedProcessorLevel()) continue;
            const auto got = made_at(level, batch);
            for (std::size_t i = 0; i < plain.size(); ++i) {
                ASSERT_EQ(got[i], plain[i])
                    << "seed " << batch[static_cast<std::ptrdiff_t>(i)] << " level " << static_cast<int>(level);
            }
        }
    }
}

}  // namespace
}  // namespace qx::test
