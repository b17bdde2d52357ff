// SPDX-License-Identifier: Apache-2.0
// Copies from rectangle to rectangle, against a slow model of one direction at a time.
#include "platform/M_Matrix.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

/// For each place of the destination in one direction the place of the source that lands there, or -1.
std::vector<int> landed(int s0, int s1, int s_end, int d0, int d1, int d_end) {
    std::vector<int> map(static_cast<std::size_t>(d_end), -1);
    if (s1 <= s0 || d1 <= d0 || s0 >= s_end || d0 >= d_end || s1 < 1 || d1 < 1) return map;
    const int sw = s1 - s0, dw = d1 - d0;
    if (s0 < 0) d0 += -s0 * dw / sw, s0 = 0;
    if (s1 > s_end) d1 -= (s1 - s_end) * dw / sw, s1 = s_end;
    if (d0 < 0) s0 += -d0 * sw / dw, d0 = 0;
    if (d1 > d_end) s1 -= (d1 - d_end) * sw / dw, d1 = d_end;
    if (s1 <= s0 || d1 <= d0) return map;
    // n places of the source fill n * (length of the destination) / (length of the source) places, rounded down:
    // repeats and skips come late.
    for (int i = d0; i < d1; ++i) {
        map[static_cast<std::size_t>(i)] = s0 + ((i + 1 - d0) * (s1 - s0) - 1) / (d1 - d0);
    }
    return map;
}

/// The place of the source for each place of the destination.
auto landing(const M_LRect& s, const M_LRect& d, int src_w, int src_h, int dst_w, int dst_h) {
    return [columns = landed(s.left, s.right, src_w, d.left, d.right, dst_w),
            rows = landed(s.top, s.bottom, src_h, d.top, d.bottom, dst_h)](int x, int y) {
        return std::pair(columns[static_cast<std::size_t>(x)], rows[static_cast<std::size_t>(y)]);
    };
}

constexpr std::pair kKept{-1, -1}, kCleared{-2, -2}, kDoubtful{-3, -3};

/// Every channel of `got` is that of the source place that `from(x, y)` names, or what the pairs above tell.
template <class From>
void expect_landed(const QX_World& got, const QX_World& before, const QX_World& src, const From& from) {
    for (const auto& [x, y] : places(got.width, got.height)) {
        const std::pair place = from(x, y);
        const auto [sx, sy] = place;
        for (int c = 0; c < 4 && place != kDoubtful; ++c) {
            const double want = place == kCleared  ? 0
                                : sx < 0 || sy < 0 ? channel(before, x, y, c)
                                                   : converted(channel(src, sx, sy, c), src.Depth(), got.Depth());
            ASSERT_EQ(channel(got, x, y, c), want) << "at " << x << "," << y << " from " << sx << "," << sy;
        }
    }
}

TEST(CopyBitsDraft, IsTheModelAtAllDepthsAndRectangles) {
    Numbers number(3);
    for (unsigned i = 0; i < 4500; ++i) {
        const int from = kDepths[i % 3], to = kDepths[i / 3 % 3];
        const World src = made(number(1, 14), number(1, 12), from, i),
                    dst = made(number(1, 14), number(1, 12), to, i + 1);
        const World before = made(dst->width, dst->height, to, i + 1);
        const auto rect = [&](const QX_World& w) {
            const int left = number(-9, w.width + 2), top = number(-9, w.height + 2);
            return M_LRect{left, top, left + number(-1, 30), top + number(-1, 24)};
        };
        M_LRect s = rect(*src), d = rect(*dst);
        const bool all_src = i % 5 == 0, all_dst = i % 7 == 0;
        if (i % 11 == 0) d = s;
        ASSERT_EQ(
            QX_CopyBits_Draft_Static(nullptr, src.get(), dst.get(), all_src ? nullptr : &s, all_dst ? nullptr : &d), 0);
        if (all_src) s = {0, 0, src->width, src->height};
        if (all_dst) d = {0, 0, dst->width, dst->height};
        SCOPED_TRACE(testing::Message() << i << ": " << from << "->" << to << " " << name(s) << " to " << name(d));
        expect_landed(*dst, *before, *src, landing(s, d, src->width, src->height, dst->width, dst->height));
        if (HasFatalFailure()) return;
    }
}

/// Rows of a larger buffer: nothing behind a row is touched; the same rectangle of one world stays.
TEST(CopyBitsDraft, PaddingAndCopiesInPlaceStay) {
    for (const auto& [depth, padding] : each(kDepths, std::array{0, 16})) {
        Canvas from{depth, 5, 4, 16}, to{depth, 5, 4, padding}, same{depth, 5, 4, padding};
        for (auto& byte : from.memory) byte = static_cast<std::uint8_t>(byte + 100);
        ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, from.world.get(), to.world.get(), nullptr, nullptr), 0);
        to.expect([&](int x, int y, int byte) { return from.first()[y * from.rowbytes + x * from.pixel + byte]; });
        const M_LRect part{-1, 1, 4, 9};
        ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, same.world.get(), same.world.get(), nullptr, nullptr), 0);
        ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, same.world.get(), same.world.get(), &part, &part), 0);
        same.expect([](int, int, int) { return -1; });
    }
}

TEST(CopyBitsDraft, NumbersBeyond32BitsAreTold) {
    const World src = made(4, 4, 8, 1), dst = made(4, 4, 16, 2), before = made(4, 4, 16, 2);
    const M_LRect huge_x{INT_MIN, 0, INT_MAX, 4}, huge_y{0, -1, 4, INT_MAX}, wide{-70000, 0, 70000, 4},
        tall{0, -70000, 4, 70000};
    const M_LRect all{0, 0, 4, 4};
    const auto copy = [&](const M_LRect& s, const M_LRect& d) {
        return [&, s, d] { return QX_CopyBits_Draft_Static(nullptr, src.get(), dst.get(), &s, &d); };
    };
    expect_refused("QXp_CopyBitsUniversal x overflow detected",
                   {copy(huge_x, all), copy(all, huge_x), copy(wide, wide), copy({0, 0, 40000, 4}, {0, 0, 80000, 4})});
    expect_refused("QXp_CopyBitsUniversal y overflow detected", {copy(huge_y, all), copy(tall, tall)});
    EXPECT_EQ(std::memcmp(dst->data, before->data, 4 * 4 * 8), 0);
    EXPECT_EQ(QX_CopyBits_Draft_Static(nullptr, src.get(), src.get(), &wide, &wide), 0) << "a move needs no quotients";
}

/// What a sampler was asked, written into the pixel; `Area` marks which of the two it was.
template <class Pixel, int Mark>
int marking_sampler(void*, std::int32_t x, std::int32_t y, const QX_SampPB* block, Pixel* out) {
    const auto low = [](std::int64_t v) { return static_cast<QX_ChannelOf<Pixel>>(v & 255); };
    const std::int64_t all = std::int64_t{x} * 31 + std::int64_t{y} * 17;
    *out = {low(Mark), low(all), low(all >> 8),
            low(block->x_radius + 3 * std::int64_t{block->y_radius} + 5 * std::int64_t{block->area})};
    return 0;
}

/// The pixels are those of the two samplers at the positions and with the block that the sizes give.
template <class Pixel> void expect_hq(CopyBitsFn* copy, QX_PointSampler<Pixel> subpixel, QX_PointSampler<Pixel> area) {
    Numbers number(4);
    constexpr int depth = DepthOf<Pixel>::number;
    for (unsigned i = 0; i < 600; ++i) {
        const World src = made(number(1, 14), number(1, 12), depth, i), dst = made(11, 9, depth, i + 1),
                    before = made(11, 9, depth, i + 1);
        const int left = number(-6, 12), top = number(-6, 9), u = number(-3, 5), v = number(-3, 5);
        const M_LRect s{u, v, u + number(4, 20), v + number(4, 20)};
        M_LRect d{left, top, left + number(1, 20), top + number(1, 20)};
        if (i % 40 == 7) d.right += 65525;
        if (i % 40 == 8) d.bottom += 65525;
        const std::int64_t sw = s.right - s.left, sh = s.bottom - s.top;
        if (sw == d.right - d.left && sh == d.bottom - d.top) continue;
        // The low 16 bits of a size divide: none draws nothing, a negative step is legal.
        const auto dw = static_cast<std::int16_t>(d.right - d.left), dh = static_cast<std::int16_t>(d.bottom - d.top);
        SCOPED_TRACE(testing::Message() << "case " << i << " " << name(s) << " to " << name(d));
        ASSERT_EQ(copy(nullptr, src.get(), dst.get(), &s, &d), 0);
        const bool nothing = dw == 0 || dh == 0 || s.left >= src->width || s.top >= src->height || d.left >= 11 ||
                             d.top >= 9 || s.right < 1 || s.bottom < 1 || d.right < 1 || d.bottom < 1;
        const std::int64_t sx = nothing ? 0 : sw * 65536 / dw, sy = nothing ? 0 : sh * 65536 / dh;
        QX_SampPB block{};
        block.src = src.get(), block.area = static_cast<std::int32_t>(sx * sy / 65536);
        block.x_radius = static_cast<std::int32_t>(sx >> 1), block.y_radius = static_cast<std::int32_t>(sy >> 1);
        for (const auto& [x, y] : places(11, 9)) {
            Pixel want = pixel_of<Pixel>(*before, x, y);
            if (!nothing && holds(d, x, y)) {
                const auto px = static_cast<std::int32_t>((sx >> 1) - 32768 + s.left * 65536 + sx * (x - d.left));
                const auto py = static_cast<std::int32_t>((sy >> 1) - 32768 + s.top * 65536 + sy * (y - d.top));
                (sx > 65536 || sy > 65536 ? area : subpixel)(nullptr, px, py, &block, &want);
            }
            ASSERT_EQ(pixel_of<Pixel>(*dst, x, y), want) << x << "," << y;
        }
    }
}

template <int Mark> constexpr auto kMarks = &marking_sampler<QX_Pixel8, Mark>;
template <int Mark> constexpr auto kMarks16 = &marking_sampler<QX_Pixel16, Mark>;

/// Samplers that mark their pixels stand in the slots.
class CopyBitsHQ : public testing::Test {
protected:
    Born born_;
    CopyBitsHQ() {
        set_slot<Slot::SubpixelSample>(kMarks<3>), set_slot<Slot::SubpixelSamplePremul>(kMarks<4>);
        set_slot<Slot::AreaSample>(kMarks<5>), set_slot<Slot::AreaSamplePremul>(kMarks<6>);
        set_slot<Slot::SubpixelSample16>(kMarks16<64>), set_slot<Slot::AreaSample16>(kMarks16<65>);
    }
};

TEST_F(CopyBitsHQ, AsksTheSamplersOfTheSlots) {
    expect_hq<QX_Pixel8>(&QX_CopyBits_HQ_Straight, kMarks<3>, kMarks<5>);
    expect_hq<QX_Pixel8>(&QX_CopyBits_HQ_Premul, kMarks<4>, kMarks<6>);
    expect_hq<QX_Pixel16>(&QX_CopyBits_HQ_Straight, kMarks16<64>, kMarks16<65>);
    expect_hq<QX_PixelFloat>(&QX_CopyBits_HQ_Straight, &QX_SubpixelBilinearFloat,
                             &QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>);
    const World src = made(4, 4, 8, 1), dst = made(4, 4, 8, 2);
    const M_LRect endless{INT_MIN, 0, INT_MAX, 4};
    EXPECT_EQ(QX_CopyBits_HQ_Straight(nullptr, src.get(), dst.get(), nullptr, &endless), 0);
}

/// Premultiplied colour is not weighed by its alpha again: the mean of clear and opaque pixels is half of all. A
/// footprint of 40,000 pixels passes a signed 16.16 number.
TEST(CopyBitsHQPremul, MeansAreThoseOfTheChannels) {
    for (const auto& [level, size] : each(kLevels, std::array{2, 200})) {
        const Born born(1, level);
        const World src = make(size, size, 8), dst = make(1, 1, 8);
        for (const auto& [x, y] : places(size, size)) {
            if (x % 2 == y % 2) pixel_of<QX_Pixel8>(*src, x, y) = {254, 200, 100, 50};
        }
        ASSERT_EQ(QX_CopyBits_HQ_Premul(nullptr, src.get(), dst.get(), nullptr, nullptr), 0);
        EXPECT_EQ(pixel_of<QX_Pixel8>(*dst, 0, 0), (QX_Pixel8{127, 100, 50, 25})) << size;
    }
}

/// Asked every 64 rows from the first one that is drawn, wherever it lies; an answer ends the copy after its row.
TEST_F(CopyBitsHQ, AbortIsAskedEvery64RowsOfTheCopy) {
    const World src = made(2, 2, 8, 1), dst = made(1, 300, 8, 2);
    Polls polls;
    QX_ProgressInfo info{&polls, &Polls::abort, [](void*, std::int32_t, std::int32_t) { return 5; }};
    for (const auto& [top, limit] : each(std::array{-10, 0, 1, 63, 64, 200}, std::array{0, 2, 100})) {
        SCOPED_TRACE(testing::Message() << "top " << top << ", " << limit << " polls let pass");
        const M_LRect d{0, top, 1, 300};
        const int first = std::max(top, 0), last = std::min(first + 64 * limit, 299);
        std::memset(dst->data, 0, static_cast<std::size_t>(300 * dst->rowbytes));
        polls = {.stop_at = limit, .code = 77};
        EXPECT_EQ(QX_CopyBits_HQ_Straight(&info, src.get(), dst.get(), nullptr, &d), last < 299 ? 77 : 0);
        EXPECT_EQ(polls.calls.size(), static_cast<std::size_t>((last - first) / 64 + 1));
        for (int y = 0; y < 300; ++y) ASSERT_EQ(channel(*dst, 0, y, 0) != 0, y >= first && y <= last) << "row " << y;
    }
    info.abort_func = nullptr;
    EXPECT_EQ(QX_CopyBits_HQ_Straight(&info, src.get(), dst.get(), nullptr, nullptr), 0);
}

TEST(CopyBits, Refusals) {
    const Born born;
    const World w8 = made(4, 4, 8, 1), w16 = made(4, 3, 16, 2), small16 = made(2, 2, 16, 3);
    BadWorlds bad;
    OddWorld wider(5, 4, 1);
    const std::string unknown = "Unknown world bitdepth in##CONDITIONNAME";
    const auto call = [](CopyBitsFn* copy, QX_LayerDef* s, QX_LayerDef* d) {
        return [=] { return copy(nullptr, s, d, nullptr, nullptr); };
    };
    for (CopyBitsFn* copy : {&QX_CopyBits_Draft, &QX_CopyBits_HQ_Straight, &QX_CopyBits_HQ_Premul}) {
        expect_refused(kOnGpu, {call(copy, &bad.gpu, w8.get()), call(copy, w8.get(), &bad.gpu)});
        expect_refused(kBadParameter, {call(copy, nullptr, w8.get()), call(copy, w8.get(), nullptr),
                                       call(copy, &bad.empty, w8.get()), call(copy, w8.get(), &bad.empty)});
        expect_refused(unknown, {call(copy, &bad.odd, &wider)});
    }
    const std::string depths = "QX_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth";
    const auto matrix = [](QX_LayerDef* s, QX_LayerDef* d) {
        return [=] { return QX_CopyBits3_LO_Straight(nullptr, s, &kM_IdentityMatrix, 1, 0, d); };
    };
    expect_refused(depths, {call(&QX_CopyBits_HQ_Straight, w8.get(), w16.get()),
                            call(&QX_CopyBits_HQ_Premul, w8.get(), w16.get())});
    expect_refused(unknown, {call(&QX_CopyBits_HQ_Premul, w16.get(), small16.get()), matrix(&bad.odd, w8.get()),
                             matrix(w8.get(), &bad.odd)});
    expect_refused(kOnGpu, {matrix(&bad.gpu, w8.get())});
    expect_refused("dst_world is NULL", {matrix(w8.get(), nullptr)});
    expect_refused(kBadParameter, {matrix(nullptr, w8.get()), matrix(w8.get(), &bad.empty)});
}

TEST(CopyBitsMatrix, TakesTheNearestPixelAtAllDepths) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> part(-1.5, 1.5), shift(-6, 12);
    for (unsigned i = 0; i < 900; ++i) {
        const int from = kDepths[i % 3], to = kDepths[i / 3 % 3], field = static_cast<int>(i / 9 % 4);
        const World src = made(13, 10, from, i), dst = made(12, 11, to, i + 1), before = made(12, 11, to, i + 1);
        M_Matrix3 m{{{}, {}, {shift(random), shift(random), 1}}};
        for (const auto& [row, column] : places(2, 2)) m.m[row][column] = part(random);
        if (i % 4 == 0) m = {{{1, 0, 0}, {0, 1, 0}, {double(i % 7) - 3, 2, 1}}};
        const double det = m.m[0][0] * m.m[1][1] - m.m[0][1] * m.m[1][0];
        if (std::abs(det) < 0.05) continue;
        ASSERT_EQ(QX_CopyBits3_LO_Straight(nullptr, src.get(), &m, 0, field, dst.get()), 0);
        SCOPED_TRACE(i);
        expect_landed(*dst, *before, *src, [&](int x, int y) {
            const double u = x + 0.5 - m.m[2][0], v = y + 0.5 - m.m[2][1];
            const double sx = (u * m.m[1][1] - v * m.m[1][0]) / det, sy = (v * m.m[0][0] - u * m.m[0][1]) / det;
            const bool doubtful = std::abs(sx - std::round(sx)) < 0.01 || std::abs(sy - std::round(sy)) < 0.01;
            if (doubtful && i % 4 != 0) return kDoubtful;  // a rounding of steps away from the next pixel
            if ((field == 1 && y % 2 == 1) || (field == 2 && y % 2 == 0)) return kKept;
            const std::pair place(static_cast<int>(std::floor(sx)), static_cast<int>(std::floor(sy)));
            return holds({0, 0, 13, 10}, place.first, place.second) ? place : kCleared;
        });
        if (HasFatalFailure()) return;
    }
}

TEST(CopyBitsMatrix, ProgressAndWhatHasNoInverse) {
    const World src = made(2, 2, 8, 1), dst = made(2, 200, 8, 2), before = made(2, 200, 8, 2);
    for (const double odd : {0.0, double(NAN), double(INFINITY), 1e-300}) {
        const M_Matrix3 flat{{{odd, 0, 0}, {0, 0, 0}, {0, 0, 1}}};
        EXPECT_EQ(QX_CopyBits3_LO_Straight(nullptr, src.get(), &flat, 0, 0, dst.get()), 0);
    }
    expect_landed(*dst, *before, *src, [](int, int) { return kKept; });
    Polls polls{.stop_at = 2};
    const QX_ProgressInfo info{&polls, [](void*) { return 99; }, &Polls::progress};
    EXPECT_EQ(QX_CopyBits3_LO_Straight(&info, src.get(), &kM_IdentityMatrix, 0, 0, dst.get()), 517);
    EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{0, 200}, {64, 200}, {128, 200}}));
    EXPECT_EQ(channel(*dst, 0, 128, 0), 0);
    EXPECT_EQ(channel(*dst, 0, 129, 0), channel(*before, 0, 129, 0));
}

TEST(Chunks, SizesOfTypes) {
    const Cases<std::uint32_t, int> sizes = {{0x44424C38, 8}, {0x46495834, 4}, {0x464C5434, 4}, {0x4C4F4E34, 4},
                                             {0x55465834, 4}, {0x52474220, 3}, {0x53485432, 2}, {0x55535432, 2},
                                             {0, 1},          {0x20424752, 1}};
    for (const auto& [type, size] : sizes) {
        std::uint16_t got = 99;
        EXPECT_EQ(QX_ChunkDataSize(type, &got), 0);
        EXPECT_EQ(got, size) << std::hex << type;
    }
}

struct Chunk : QX_ChannelChunk {
    std::vector<std::uint8_t> bytes;
    Chunk(int w, int h, std::uint32_t type, int values, int padding, unsigned seed) : QX_ChannelChunk{} {
        std::uint16_t size = 0;
        QX_ChunkDataSize(type, &size);
        width = w, height = h, dimension = values, data_type = type, row_bytes = w * size * values + padding;
        bytes.resize(static_cast<std::size_t>(row_bytes * h));
        for (auto& b : bytes) b = static_cast<std::uint8_t>(seed = seed * 75 + 74);
        data = bytes.data();
    }
    std::uint8_t at(int i, int y) const { return bytes[static_cast<std::size_t>(y * row_bytes + i)]; }
};

TEST(ChannelCopy, MovesElementsOfAnySize) {
    Numbers number(5);
    const std::uint32_t types[] = {kQX_ChunkRGB, kQX_ChunkDouble, kQX_ChunkShort, 7};
    const int sizes[] = {3, 8, 2, 1};
    for (unsigned i = 0; i < 1200; ++i) {
        const int kind = number(0, 4), values = number(1, 4), size = sizes[kind] * values;
        const int w = number(1, 9), h = number(1, 7);
        const Chunk src(w, h, types[kind], values, number(0, 2) * 4, i);
        const bool whole = i % 4 == 0;
        Chunk dst(whole ? w : number(1, 9), whole ? h : number(1, 7), types[kind], values, number(0, 2) * 4, i + 1);
        const Chunk before = dst;
        M_LRect s{number(-4, w), number(-4, h), 0, 0}, d{number(-4, dst.width), number(-4, dst.height), 0, 0};
        s.right = s.left + number(1, 14), s.bottom = s.top + number(1, 14);
        d.right = d.left + number(1, 14), d.bottom = d.top + number(1, 14);
        ASSERT_EQ(QX_ChannelCopy(nullptr, &src, &dst, whole ? nullptr : &s, whole ? nullptr : &d), 0);
        if (whole) s = d = {0, 0, w, h};
        const auto from = landing(s, d, w, h, dst.width, dst.height);
        for (const auto& [k, y] : places(dst.width * size, dst.height)) {
            const auto [sx, sy] = from(k / size, y);
            const bool hit = sx >= 0 && sy >= 0;
            ASSERT_EQ(dst.at(k, y), hit ? src.at(sx * size + k % size, sy) : before.at(k, y)) << "case " << i;
        }
    }
}

TEST(ChannelCopy, Refusals) {
    Chunk a(4, 4, kQX_ChunkRGB, 1, 0, 1), b(4, 4, kQX_ChunkRGB, 1, 0, 2), other(4, 4, kQX_ChunkFloat, 1, 0, 3);
    Chunk none = a;
    none.data = nullptr;
    const M_LRect wide{-70000, 0, 70000, 4}, tall{0, -70000, 4, 70000};
    const auto copy = [](const QX_ChannelChunk* src, QX_ChannelChunk* dst, const M_LRect* rect = nullptr) {
        return [=] { return QX_ChannelCopy(nullptr, src, dst, rect, rect); };
    };
    const auto before = b.bytes;
    expect_refused(kBadParameter, {copy(nullptr, &b), copy(&a, nullptr), copy(&none, &b), copy(&a, &none)});
    expect_refused({{copy(&a, &other), "can#{rsquo}t copy different channel worlds"},
                    {copy(&a, &b, &wide), "QX_ChannelCopy x overflow detected"},
                    {copy(&a, &b, &tall), "QXp_CopyBitsUniversal y underflow detected"}});
    EXPECT_EQ(b.bytes, before);
}

}  // namespace
}  // namespace qx::test
