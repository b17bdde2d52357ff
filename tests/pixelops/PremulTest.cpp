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

constexpr M_LRect kWhole{0, 0, 256, 256};

template <class Pixel> class Premul : public testing::Test {};
TYPED_TEST_SUITE(Premul, AllDepths);

/// Colours of every depth reach a world of this one; source and destination apart and the same. The operations of the
/// world classes are these routines; float worlds have none.
TYPED_TEST(Premul, IsTheLawInTheRectangle) {
    const World from = picture<TypeParam>();
    const QX_Pixel8 as8{9, 255, 0, 128};
    const QX_Pixel16 as16{9, 32768, 0, 16384};
    const QX_PixelFloat as_float{9, 1.0f, 0, 0.5f};
    constexpr int depth = DepthOf<TypeParam>::number;
    const auto colour_of = [](double blue) {
        return TypeParam{0, kFull<TypeParam>, 0, static_cast<QX_ChannelOf<TypeParam>>(blue)};
    };
    const double blue8 = depth == 8 ? 128 : depth == 16 ? 16448 : 128 * (1.0 / 255);
    const TypeParam none{}, given8 = colour_of(blue8), given = colour_of(DepthOf<TypeParam>::half);
    struct Call {
        bool on;
        const M_LRect* r;
        QX_World *src, *dst;
    };
    enum Takes { whole_world, rectangle, source_and_rectangle };
    // Columns: routine, what it takes, its colour at this depth where it is not against black
    const Cases<std::function<int(const Call&)>, Takes, const TypeParam*> routines = {
        {[](const Call& c) { return QX_PremulRect(nullptr, c.on, c.r, c.dst); }, rectangle, nullptr},
        {[](const Call& c) { return QX_PremulColorRect(nullptr, c.src, nullptr, c.on, c.r, c.dst); },
         source_and_rectangle, &none},
        {[&](const Call& c) { return QX_PremulColorRect(nullptr, c.src, &as8, c.on, c.r, c.dst); },
         source_and_rectangle, &given8},
        {[&](const Call& c) { return QX_PremulColorRect16(nullptr, c.src, &as16, c.on, c.r, c.dst); },
         source_and_rectangle, &given},
        {[&](const Call& c) { return QX_PremulColorRectFloat(nullptr, c.src, &as_float, c.on, c.r, c.dst); },
         source_and_rectangle, &given},
        {[](const Call& c) { return code_of([&] { c.on ? c.dst->Premultiply() : c.dst->Unmultiply(); }); }, whole_world,
         nullptr},
        {[&](const Call& c) { return code_of([&] { c.on ? c.dst->PremulColor(as16) : c.dst->UnmulColor(as16); }); },
         whole_world, &given}};
    const Cases<M_LRect, int> areas = {{kWhole, 1},         {kWhole, 7},         {{-5, 17, 131, 300}, 7},
                                       {{40, 3, 41, 9}, 1}, {{40, 3, 41, 9}, 7}, {{9, 9, 3, 20}, 7}};
    for (const auto& [area, routine, on, apart] :
         each(areas, routines, std::array{true, false}, std::array{false, true})) {
        const auto& [call, takes, colour] = routine;
        if (apart && takes != source_and_rectangle) continue;
        const M_LRect r = takes == whole_world ? kWhole : std::get<0>(area);
        SCOPED_TRACE(name(r) + (on ? " forward" : " reverse"));
        const Born born(std::get<1>(area));
        const World got = copy_of(*from);
        if (apart) got->Fill(QX_Pixel16{1, 2, 3, 4}, nullptr);
        const World before = copy_of(*got);
        const int code = call({on, &r, apart ? from.get() : got.get(), got.get()});
        ASSERT_EQ(code, takes == whole_world && depth == 32 ? 3 : 0);
        if (code != 0) continue;
        using L = Law<TypeParam>;
        expect_made<TypeParam>(*got, *from, *before, r, [on = on, m = colour](auto c, auto a, auto place) {
            return m == nullptr ? L::black(on, c, a) : L::matte(on, c, m->*place, a);
        });
    }
}

TEST(PremulRows, OldRowRoutines) {
    const Born born;
    const World from = picture<QX_Pixel8>();
    const auto* all = static_cast<QX_Pixel8*>(from->data);
    const auto expect = [&](const World& got, const auto& call, const auto& law) {
        ASSERT_EQ(call(static_cast<QX_Pixel8*>(got->data)), 0);
        expect_made<QX_Pixel8>(*got, *from, *from, kWhole, law);
    };
    const auto forward = [](int c, int a, auto) { return model::Eight::mul(c, a); };
    const auto reverse = [](int c, int a, auto) { return model::Eight::div(c, a); };
    const auto cleared = [](int c, int a, auto) { return a == 0 ? 0 : model::Eight::div(c, a); };
    expect(
        make(256, 256, 8), [&](QX_Pixel8* to) { return QX_BlackMatte(nullptr, 65536, all, to); }, forward);
    expect(
        make(256, 256, 8), [&](QX_Pixel8* to) { return QX_DeBlackMatte(nullptr, 65536, all, to); }, reverse);
    expect(
        copy_of(*from), [](QX_Pixel8* to) { return QX_BlackMatteARGB(nullptr, 65536, to); }, forward);
    expect(
        copy_of(*from), [](QX_Pixel8* to) { return QX_DeBlackMatteARGB(nullptr, 65536, to); }, cleared);
}

TEST(PremulRows, MattesMoveFromBlackToColourAndBack) {
    const Born born(7);
    const QX_Pixel8 colour{77, 200, 0, 31};
    const World from = picture<QX_Pixel8>(), got = copy_of(*from);
    ASSERT_EQ(QX_MatteBlackToMatteColorARGB(got.get(), &colour, false), 0);
    expect_made<QX_Pixel8>(*got, *from, *from, kWhole,
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
