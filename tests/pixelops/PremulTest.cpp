// SPDX-License-Identifier: Apache-2.0
// Premultiply and mattes of worlds: every pair of colour and alpha at 8 bits against exact quotients, the rest against
// formulas of their own.
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

/// The formulas on one channel.
template <class Pixel> struct Law {
    using K = model::DepthModel<Pixel>;
    using N = typename K::N;
    static N black(bool forward, N c, N a) { return forward ? K::mul(c, a) : K::div(c, a); }
    static N matte(bool forward, N c, N m, N a) {
        if (a >= K::full || (!forward && !(a > 0))) return c;
        return forward ? m + K::mul(c - m, a) : K::div(std::max<N>(c - K::mul(m, K::full - a), 0), a);
    }
};

/// 256 by 256: at 8 bits all pairs of alpha and red, with two other colours; elsewhere samples of all kinds.
template <class Pixel> World picture() {
    World world(QX_World::New(256, 256, DepthOf<Pixel>::number, 0));
    constexpr FillKind kinds[] = {FillKind::random, FillKind::edges, FillKind::extremes, FillKind::clear};
    for (int y = 0; y < 256; ++y) {
        auto* row = static_cast<QX_WorldX<Pixel>&>(*world).Row(y);
        fill_pixels<Pixel>({row, 256}, kinds[y & 3], static_cast<unsigned>(y));
        for (int x = 0; x < 256 && DepthOf<Pixel>::number == 8; ++x) {
            const auto c = [](int v) { return static_cast<QX_ChannelOf<Pixel>>(v & 255); };
            row[x] = {c(y), c(x), c(x ^ 85), c(255 - x)};
        }
    }
    return world;
}

World copy_of(QX_World& world) {
    World copy(QX_World::NewMatchingWorld(&world, 0));
    copy->CopyWorld(&world);
    return copy;
}

/// Inside `r`, `got` is what f(channel, alpha, place of the colour) makes of `from`; outside it is `outside`.
template <class Pixel, class F>
void expect_made(const QX_World& got, const QX_World& from, const QX_World& outside, const M_LRect& r, const F& f) {
    for (const auto& [x, y] : places(256, 256)) {
        const Pixel g = pixel_of<Pixel>(got, x, y), p = pixel_of<Pixel>(from, x, y);
        Pixel want = pixel_of<Pixel>(outside, x, y);
        if (holds(r, x, y)) {
            want.alpha = p.alpha;
            for (const auto c : {&Pixel::red, &Pixel::green, &Pixel::blue}) {
                want.*c = static_cast<QX_ChannelOf<Pixel>>(f(p.*c, p.alpha, c));
            }
        }
        ASSERT_TRUE(g.alpha == want.alpha && g.red == want.red && g.green == want.green && g.blue == want.blue)
            << "at " << x << "," << y << ": " << p << " gives " << g << ", not " << want;
    }
}

const M_LRect kRects[] = {{0, 0, 256, 256}, {-5, 17, 131, 300}, {40, 3, 41, 9}, {9, 9, 3, 20}};

template <class Pixel> class Premul : public testing::Test {};
TYPED_TEST_SUITE(Premul, AllDepths);

TYPED_TEST(Premul, BlackIsTheLawInTheRectangle) {
    const World from = picture<TypeParam>();
    for (const auto& [bands, r, forward] : each(std::array{1, 7}, kRects, std::array{true, false})) {
        const Born born(bands);
        SCOPED_TRACE(name(r) + (forward ? " forward" : " reverse"));
        const World got = copy_of(*from);
        ASSERT_EQ(QX_PremulRect(nullptr, forward, &r, got.get()), 0);
        expect_made<TypeParam>(*got, *from, *from, r,
                               [on = forward](auto c, auto a, auto) { return Law<TypeParam>::black(on, c, a); });
    }
}

/// Colours of every depth reach a world of this one; source and destination apart and the same.
TYPED_TEST(Premul, ColourIsTheLawInTheRectangle) {
    const Born born(7);
    const World from = picture<TypeParam>();
    using Channel = QX_ChannelOf<TypeParam>;
    constexpr int depth = DepthOf<TypeParam>::number;
    const QX_Pixel8 as8{9, 255, 0, 128};
    const QX_Pixel16 as16{9, 32768, 0, 16384};
    const QX_PixelFloat as_float{9, 1.0f, 0, 0.5f};
    const double blue8 = depth == 8 ? 128 : depth == 16 ? 16448 : 128 * (1.0 / 255);
    for (int way = 0; way < 4; ++way) {
        TypeParam colour{0, kFull<TypeParam>, 0, static_cast<Channel>(way == 1 ? blue8 : DepthOf<TypeParam>::half)};
        if (way == 0) colour = {};
        for (int i = 0; i < 4; ++i) {
            const bool forward = i % 2 == 0, in_place = i < 2;
            SCOPED_TRACE(testing::Message() << "way " << way << (forward ? " forward" : " reverse"));
            const World got = copy_of(*from);
            if (!in_place) got->Fill(QX_Pixel16{1, 2, 3, 4}, nullptr);
            const World before = copy_of(*got);
            QX_World* src = in_place ? got.get() : from.get();
            const M_LRect& r = kRects[way];
            const int code = way < 2
                                 ? QX_PremulColorRect(nullptr, src, way == 0 ? nullptr : &as8, forward, &r, got.get())
                             : way == 2 ? QX_PremulColorRect16(nullptr, src, &as16, forward, &r, got.get())
                                        : QX_PremulColorRectFloat(nullptr, src, &as_float, forward, &r, got.get());
            ASSERT_EQ(code, 0);
            expect_made<TypeParam>(*got, *from, *before, r, [&](auto c, auto a, auto place) {
                return Law<TypeParam>::matte(forward, c, colour.*place, a);
            });
        }
    }
}

/// The operations of the world classes are these routines; float worlds have none.
TYPED_TEST(Premul, WorldClassesCallThem) {
    const Born born;
    const World from = picture<TypeParam>();
    const QX_Pixel16 colour{0, 32768, 0, 0};
    const TypeParam m{0, kFull<TypeParam>, 0, 0};
    for (int i = 0; i < 4; ++i) {
        const World got = copy_of(*from);
        const bool forward = i % 2 == 0;
        const int code = code_of([&] {
            if (i < 2) return forward ? got->Premultiply() : got->Unmultiply();
            forward ? got->PremulColor(colour) : got->UnmulColor(colour);
        });
        if (DepthOf<TypeParam>::number == 32) {
            EXPECT_EQ(code, 3);
            continue;
        }
        ASSERT_EQ(code, 0);
        expect_made<TypeParam>(*got, *from, *from, kRects[0], [&](auto c, auto a, auto place) {
            return i < 2 ? Law<TypeParam>::black(forward, c, a) : Law<TypeParam>::matte(forward, c, m.*place, a);
        });
    }
}

TEST(PremulRows, OldRowRoutines) {
    const Born born;
    const World from = picture<QX_Pixel8>();
    const auto* all = static_cast<QX_WorldX<QX_Pixel8>&>(*from).Row(0);
    std::vector<QX_Pixel8> got(65536);
    const auto expect = [&](int code, const auto& law) {
        ASSERT_EQ(code, 0);
        for (std::size_t i = 0; i < got.size(); ++i) {
            ASSERT_EQ(got[i].alpha, all[i].alpha);
            ASSERT_EQ(got[i].red, law(all[i].red, all[i].alpha)) << i;
            ASSERT_EQ(got[i].blue, law(all[i].blue, all[i].alpha)) << i;
        }
    };
    const auto forward = [](int c, int a) { return model::Eight::mul(c, a); };
    const auto reverse = [](int c, int a) { return model::Eight::div(c, a); };
    expect(QX_BlackMatte(nullptr, 65536, all, got.data()), forward);
    expect(QX_DeBlackMatte(nullptr, 65536, all, got.data()), reverse);
    std::copy_n(all, 65536, got.data());
    expect(QX_BlackMatteARGB(nullptr, 65536, got.data()), forward);
    std::copy_n(all, 65536, got.data());
    expect(QX_DeBlackMatteARGB(nullptr, 65536, got.data()), [&](int c, int a) { return a == 0 ? 0 : reverse(c, a); });
}

TEST(PremulRows, MattesMoveFromBlackToColourAndBack) {
    const Born born(7);
    const QX_Pixel8 colour{77, 200, 0, 31};
    const World from = picture<QX_Pixel8>(), got = copy_of(*from);
    ASSERT_EQ(QX_MatteBlackToMatteColorARGB(got.get(), &colour, false), 0);
    expect_made<QX_Pixel8>(*got, *from, *from, kRects[0],
                           [&](int c, int a, auto place) { return c - model::Eight::mul(colour.*place, 255 - a); });
    ASSERT_EQ(QX_MatteBlackToMatteColorARGB(got.get(), &colour, true), 0);
    const QX_Pixel8 black{255, 0, 0, 0};
    ASSERT_EQ(QX_MatteBlackToMatteColorARGB(got.get(), &black, true), 0);
    ASSERT_EQ(QX_MatteBlackToMatteColorARGB(got.get(), nullptr, false), 0);
    EXPECT_EQ(std::memcmp(got->data, from->data, 256 * 256 * 4), 0);
}

/// Asked before each row of one thread; rows before the refusal are done, the others stay.
TEST(PremulCalls, AbortStopsRows) {
    Polls polls;
    QX_ProgressInfo info{&polls, &Polls::abort, [](void*, std::int32_t, std::int32_t) { return 99; }};
    const QX_Pixel8 green{0, 0, 255, 0};
    // Every band on the calling thread: how many rows it would take from the pool is not known.
    standalone::SetExecutor([](const boost::function<void(int)>& task, int n) {
        while (n-- > 0) task(n);
    });
    for (const int bands : {1, 5}) {
        const Born born(bands);
        for (const bool matte : {false, true}) {
            const World world(QX_World::New(8, 100, 8, 1));
            world->Fill(QX_Pixel16{0, 32768, 32768, 32768}, nullptr);
            const auto run = [&](int stop) {
                polls = {.stop_at = stop};
                return matte ? QX_PremulColor(&info, world.get(), &green, true, world.get())
                             : QX_Premul(&info, true, world.get());
            };
            EXPECT_EQ(run(bands == 1 ? 40 : 3), 517);
            for (int y = 0; bands == 1 && y < 100; ++y) {
                const QX_Pixel8& p = pixel_of<QX_Pixel8>(*world, 7, y);
                ASSERT_EQ(p.red, y < 40 ? 0 : 255) << y;
            }
            EXPECT_EQ(run(1000), 0);
            EXPECT_EQ(polls.calls.size(), 100u);
        }
    }
    standalone::SetExecutor({});
}

TEST(PremulCalls, RefusalsAndTheirTexts) {
    const Born born;
    const World w8 = make(4, 4, 8), w16 = make(4, 4, 16);
    BadWorlds bad;
    const QX_Pixel8 c8{0, 1, 1, 1};
    using Layer = QX_LayerDef;
    const auto premul = [](Layer* w) { return [=] { return QX_PremulRect(nullptr, true, nullptr, w); }; };
    const auto to_colour = [&](Layer* w) { return [=] { return QX_MatteBlackToMatteColorARGB(w, &c8, true); }; };
    const auto call = [](auto routine) {
        return [=](Layer* s, Layer* d) { return [=] { return routine(nullptr, s, nullptr, true, d); }; };
    };
    const auto matte = call(&QX_PremulColor);
    const auto matte16 = call(&QX_PremulColor16);
    const auto matte_f = call(&QX_PremulColorFloat);
    const std::string depths = "worlds must be same bitdepth in ",
                      unknown = "Unknown world bitdepth in QX_PremulColorRect";
    expect_refused(kOnGpu, {premul(&bad.gpu), [&] { return QX_PremulRect_S(nullptr, true, nullptr, &bad.gpu); },
                            matte(&bad.gpu, w8.get()), matte16(w8.get(), &bad.gpu), to_colour(&bad.gpu)});
    expect_refused(kBadParameter, {premul(nullptr), premul(&bad.empty), matte_f(nullptr, w8.get()),
                                   matte(w8.get(), &bad.empty), to_colour(nullptr)});
    expect_refused({{premul(&bad.odd), "Unknown world bitdepth in##CONDITIONNAME"},
                    {matte(w8.get(), w16.get()), depths + "QX_PremulColorRect()"},
                    {matte16(w8.get(), w16.get()), depths + "QX_PremulColorRect16()"},
                    {matte_f(w8.get(), w16.get()), depths + "QX_PremulColorRect16()"},
                    {matte(&bad.odd, &bad.odd), unknown},
                    {matte16(&bad.odd, &bad.odd), unknown + "16"},
                    {matte_f(&bad.odd, &bad.odd), unknown + "Float"},
                    {to_colour(w16.get()), "QX_MatteBlackToMatteColorARGB only works on 8bpc QX_EffectWorlds"}});
}

}  // namespace
}  // namespace qx::test
