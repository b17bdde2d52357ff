// SPDX-License-Identifier: Apache-2.0
// Planes out of worlds and back, single channels of interleaved samples, and where pixels lie.
#include "tests/support/Test.h"

namespace qx::test {
namespace {

TEST(Planes, EveryMaskThereAndBack) {
    for (unsigned mask = 0; mask < 16; ++mask) {
        SCOPED_TRACE(mask);
        Canvas from{8, 13, 5, 8}, to{8, 13, 5, 0};
        const auto locks = standalone::Memory().handle_locks;
        for (std::size_t i = 0; i < from.memory.size(); ++i) from.memory[i] = static_cast<std::uint8_t>(i * 37);
        TK_Handle handle = nullptr;
        std::int32_t rowbytes = -1;
        ASSERT_EQ(QX_ExtractPlanes(nullptr, from.world.get(), mask, &handle, &rowbytes), 0);
        std::vector<int> planes;
        for (int c = 0; c < 4; ++c) {
            if (mask >> c & 1) planes.push_back(c);
        }
        const int n = static_cast<int>(planes.size());
        EXPECT_EQ(standalone::Memory().handle_locks, locks);
        ASSERT_EQ(rowbytes, (n * 21 + 3) / 2 * 2);
        ASSERT_EQ(TK_GetHandleSize(handle), static_cast<std::size_t>(5 * rowbytes));
        const auto* bytes = static_cast<const std::uint8_t*>(*handle);
        for (const auto& [i, y] : places(13 * n, 5)) {
            ASSERT_EQ(bytes[y * rowbytes + i],
                      from.first()[y * from.rowbytes + 4 * (i / n) + planes[static_cast<std::size_t>(i % n)]]);
        }
        ASSERT_EQ(QX_InsertPlanes(nullptr, handle, rowbytes, mask, to.world.get()), 0);
        EXPECT_EQ(standalone::Memory().handle_locks, locks);
        to.expect([&](int x, int y, int byte) {
            return mask >> byte & 1 ? from.first()[y * from.rowbytes + 4 * x + byte] : -1;
        });
        TK_FreeHandle(handle);
    }
}

TEST(Planes, RefusalsAndShortMemory) {
    const World world = make(4, 4, 8);
    BadWorlds bad;
    TK_Handle handle = nullptr;
    std::int32_t row = 0;
    void* block = nullptr;
    const auto extract = [](QX_LayerDef* w, std::uint32_t mask, TK_Handle* out, std::int32_t* rowbytes) {
        return [=] { return QX_ExtractPlanes(nullptr, w, mask, out, rowbytes); };
    };
    const auto insert = [](TK_Handle from, std::uint32_t mask, QX_LayerDef* w) {
        return [=] { return QX_InsertPlanes(nullptr, from, 8, mask, w); };
    };
    QX_LayerDef* const w = world.get();
    expect_refused({{extract(nullptr, 1, &handle, &row), kBadParameter, 3, 0x250004},
                    {insert(nullptr, 1, w), kBadParameter, 3, 0x250005},
                    {extract(&bad.gpu, 1, &handle, &row), kOnGpu}});
    expect_refused(kBadParameter,
                   {extract(&bad.empty, 1, &handle, &row), extract(w, 16, &handle, &row), extract(w, 1, nullptr, &row),
                    extract(w, 1, &handle, nullptr), insert(&block, ~0u, w), insert(&block, 1, &bad.empty)});
    const auto short_one = [&] { return short_of_memory(1, extract(w, 1, &handle, &row)); };
    expect_refused({{short_one, "out of memory: image plane buffer", 4}});
    EXPECT_EQ(handle, nullptr);
}

/// All alignments of a destination of bytes, odd sizes and places, against the address formula.
template <class T> void expect_interleave() {
    Numbers any(9);
    const auto number = [&](int n) { return any(0, n); };
    for (int i = 0; i < 400; ++i) {
        const M_Vector2T<int> size{number(23), number(4)}, from{number(5), number(3)}, to{number(9), number(3)};
        const int step = 1 + number(5), wide = 200, narrow = 40;
        std::vector<T> a(wide * 8), got(wide * 8);
        for (std::size_t k = 0; k < a.size(); ++k) a[k] = static_cast<T>(k * 7 % 251), got[k] = static_cast<T>(k % 13);
        std::vector<T> want = got;
        const auto at = [](int n) { return static_cast<std::size_t>(n); };
        for (const auto& [x, y] : places(size.x, size.y)) {
            want[at((to.y + y) * narrow + to.x + x)] = a[at((from.y + y) * wide + (from.x + x) * step)];
        }
        QX_Deinterleave1<T>(a.data(), step, wide, narrow, size, from, to, got.data());
        ASSERT_EQ(got, want) << "case " << i;
        for (const auto& [x, y] : places(size.x, size.y)) {
            want[at((to.y + y) * wide + 4 * (to.x + x))] = a[at((from.y + y) * narrow + from.x + x)];
        }
        QX_Interleave1to4<T>(a.data(), narrow, wide, size, from, to, got.data());
        ASSERT_EQ(got, want) << "case " << i;
    }
}
TEST(Interleave, Bytes) { expect_interleave<std::uint8_t>(); }
TEST(Interleave, Words) { expect_interleave<std::uint16_t>(); }
TEST(Interleave, Floats) { expect_interleave<float>(); }

TEST(PixelData, AnswersForItsDepthAlone) {
    BadWorlds bad;
    int other = 0;
    // Columns: routine, its depth, how it calls itself
    const Cases<decltype(&QX_GetPixelData8), int, std::string> getters = {
        {&QX_GetPixelData8, 8, "QX_GetPixelData8"},
        {&QX_GetPixelData16, 16, "QX_GetPixelData8"},
        {&QX_GetPixelDataFloat, 32, "QX_GetPixelDataFloat"}};
    for (const auto& [getter, depth, called] : getters) {
        for (const int of_world : kDepths) {
            const World world = make(2, 2, of_world);
            void *own = &other, *given = &other;
            EXPECT_EQ(getter(world.get(), nullptr, &own), 0);
            EXPECT_EQ(getter(world.get(), &other, &given), 0);
            EXPECT_EQ(own, of_world == depth ? world->data : nullptr);
            EXPECT_EQ(given, of_world == depth ? &other : nullptr);
        }
        void *kept = &other, *cleared = &other;
        expect_refused({{[&, get = getter] { return get(&bad.gpu, nullptr, &kept); }, kOnGpu},
                        {[&, get = getter] { return get(nullptr, nullptr, &cleared); },
                         "bad parameter passed to " + called, 516}});
        EXPECT_TRUE(kept == &other && cleared == nullptr);
    }
}

TEST(PixelData, OfFramesOnAGpu) {
    Reports reports;
    using tesselmediatypes::PixelFormat;
    // Columns: format, code, whether pixels are found, report
    const Cases<PixelFormat, int, bool, Text> cases = {
        {GK::kPixelFormat_GPU_BGRA_4444_32f, 0, true, ""},
        {GK::kPixelFormat_GPU_BGRA_4444_16f, 0, false,
         "unsupported gpu pixel format passed to QX_GetPixelDataFloatGPU"},
        {tesselmediatypes::kPixelFormat_ARGB_4444_32f, 516, false, "bad parameter passed to QX_GetPixelDataFloatGPU"},
    };
    for (const auto& [format, code, found, text] : cases) {
        reports.clear();
        QX_LayerDef world{};
        world.platform_ref = standalone::NewFakeFrame(format);
        void* out = &world;
        EXPECT_EQ(QX_GetPixelDataFloatGPU(&world, &out), code);
        EXPECT_TRUE((out != nullptr) == found && out != &world);
        EXPECT_EQ(reports.last_text(), text);
        FK::DisposeVPixFromVideoFrame(world.platform_ref);
        EXPECT_EQ(QX_GetPixelDataFloatGPU(&world, &out), 516) << "the frame is gone";
    }
    void* out = nullptr;
    EXPECT_EQ(QX_GetPixelDataFloatGPU(nullptr, &out), 516);
    EXPECT_EQ(QX_GetPixelDataFloatGPU(World(QX_World::New(1, 1, 32, 1)).get(), &out), 516);
}

}  // namespace
}  // namespace qx::test
