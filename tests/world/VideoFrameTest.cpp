// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_VideoFrame.h"

#include <gtest/gtest.h>

#include <memory>

#include "QX/world/QX_EffectWorld.h"
#include "QX/world/QX_VideoFrameFactory.h"
#include "tests/support/TestHost.h"
#include "tests/world/FrameDoubles.h"

namespace {

using namespace qx::test;
using namespace vn::qx::VideoFrameFactory;
using tesselcore::classref::NullInterfaceException;
using tesselmediatypes::PixelFormat;
using Frame = InterfaceRef<MK::IVideoFrame>;

constexpr PixelFormat kFormats[] = {tesselmediatypes::kPixelFormat_ARGB_4444_8u,
                                    tesselmediatypes::kPixelFormat_ARGB_4444_15u,
                                    tesselmediatypes::kPixelFormat_ARGB_4444_32f};
constexpr short kDepths[] = {8, 16, 32};
const tesselmediatypes::color::ColorSpace kSpace{kQX_BT709_RGB_Full};

/// All frames, handles and worlds are gone in the end.
struct VideoFrames : testing::Test {
    ~VideoFrames() override {
        EXPECT_EQ(DoubleFrameBase::live, 0);
        EXPECT_EQ(standalone::LiveFrameHandles(), handles);
        EXPECT_EQ(qx::live_world_count(), worlds);
    }
    const int handles = standalone::LiveFrameHandles();
    const std::int32_t worlds = qx::live_world_count();
};

std::unique_ptr<QX_World> new_world(short depth, int width = 7, int height = 5) {
    std::unique_ptr<QX_World> world(QX_World::New(width, height, depth, 0));
    auto* byte = static_cast<unsigned char*>(world->data);
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < width * depth / 2; ++i)
            byte[y * world->rowbytes + i] = static_cast<unsigned char>(y * 31 + i);
    }
    return world;
}

std::vector<unsigned char> row_of(const QX_World& world, int y) {
    const auto* first = static_cast<const unsigned char*>(world.data) + std::ptrdiff_t{y} * world.rowbytes;
    return {first, first + world.width * world.Depth() / 2};
}

TEST_F(VideoFrames, ShowAWorldAndComeBackWithoutACopy) {
    for (int d = 0; d < 3; ++d) {
        for (const bool flip : {false, true}) {
            for (const int origin : {0, 3, -4, INT_MIN}) {
                const auto world = new_world(kDepths[d]);
                world->origin_x = origin;
                world->origin_y = origin / 2;
                world->pix_aspect_num = 12;
                world->pix_aspect_den = 5;
                const Frame frame = CreateFromQXWorld(world.get(), kSpace, flip, nullptr);
                const auto block = frame.query<FK::IVideoFrameMemoryAccess>();
                EXPECT_TRUE(frame->GetPixelFormat() == kFormats[d] && frame->GetColorSpace() == kSpace);
                EXPECT_EQ(block->GetSize(), 5u * static_cast<unsigned>(world->rowbytes));
                const auto bounds = frame->GetBounds();
                const auto rest = [](unsigned side, int from) { return static_cast<int>(side - unsigned(from)); };
                EXPECT_TRUE(bounds.left == origin && bounds.top == origin / 2 && bounds.width == rest(7, origin) &&
                            bounds.height == rest(5, origin / 2));
                EXPECT_EQ(block->GetMemory(), world->data) << "all bytes lie in the world, flipped or not";
                EXPECT_EQ(frame->GetPixelAspectRatio().GetNumerator(), 12u);
                EXPECT_EQ(frame->GetPixelAspectRatio().GetDenominator(), 5u);
                const std::unique_ptr<QX_World> back(CreateFromIVideoFrame(frame));
                ASSERT_TRUE(back && back->Depth() == kDepths[d] && back->width == 7 && back->height == 5);
                auto* const first = static_cast<std::byte*>(world->data);
                EXPECT_EQ(back->data, flip ? first + 4 * world->rowbytes : first);
                EXPECT_EQ(back->rowbytes, flip ? -world->rowbytes : world->rowbytes);
                for (int y = 0; y < 5; ++y) EXPECT_EQ(row_of(*back, y), row_of(*world, flip ? 4 - y : y));
            }
        }
    }
}

TEST_F(VideoFrames, ReadOddRecordsAsStated) {
    const auto world = new_world(8);
    for (const auto& [num, den, told_num, told_den] :
         {std::array<std::uint32_t, 4>{0, 0, 1, 1}, {0x80000001u, 3, 1, 3}, {7, 0, 7, 1}}) {
        world->pix_aspect_num = num;
        world->pix_aspect_den = den;
        const auto aspect = CreateFromQXWorld(world.get(), kSpace, false, nullptr)->GetPixelAspectRatio();
        EXPECT_TRUE(aspect.GetNumerator() == told_num && aspect.GetDenominator() == told_den);
    }
    const PixelFormat odd{0x1234567890ABCDEF};
    EXPECT_TRUE(CreateFromQXWorld(world.get(), kSpace, false, &odd)->GetPixelFormat() == odd);
    EXPECT_FALSE(CreateFromQXWorld(static_cast<QX_World*>(nullptr), kSpace, false, nullptr));
    EXPECT_EQ(CreateFromIVideoFrame(nullptr), nullptr);
    void* found = world.get();
    const Frame frame = CreateFromQXWorld(world.get(), kSpace, false, nullptr);
    EXPECT_EQ(frame->QueryInterface(Guid{}, &found), static_cast<std::int32_t>(0xA00A0001));
    EXPECT_EQ(found, nullptr);
    EXPECT_FALSE(frame.query<FK::IVideoFrameGPUMemoryAccess>());
}

TEST_F(VideoFrames, ClearThePixelsOfTheirRowsAlone) {
    for (const bool flip : {false, true}) {
        std::vector<unsigned char> bytes(3 * 24, 0xEE);
        const std::unique_ptr<QX_World> world(QX_World::NewReference(bytes.data(), 4, 3, 8, 24));
        const Frame frame = CreateFromQXWorld(world.get(), kSpace, flip, nullptr);
        frame.query<MK::IVideoFrameClearable>()->Clear();
        for (std::size_t i = 0; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], i % 24 < 16 ? 0 : 0xEE) << i;
    }
}

TEST_F(VideoFrames, AndWorldsKeepEachOtherAlive) {
    Frame frame;
    {
        const boost::shared_ptr<QX_World> world(new_world(16).release());
        frame = CreateFromQXWorld(world, kSpace, true, nullptr);
    }
    EXPECT_EQ(qx::live_world_count(), worlds + 1);
    std::unique_ptr<QX_World> shown(CreateFromIVideoFrame(frame));
    frame = {};
    EXPECT_EQ(row_of(*shown, 0), row_of(*new_world(16), 4));
    shown.reset();
}

TEST_F(VideoFrames, OfTheHostBecomeWorlds) {
    for (int d = 0; d < 3; ++d) {
        const Frame frame = new_frame({.format = kFormats[d]});
        const std::unique_ptr<QX_World> world(CreateFromIVideoFrame(frame));
        ASSERT_TRUE(world && world->Depth() == kDepths[d] && world->width == 4 && world->height == 3);
        EXPECT_EQ(world->data, frame.query<FK::IVideoFrame2DPixelMemoryAccess>()->GetPixels());
    }
    // The depth comes from the bytes of a pixel alone, less the lowest two bits: 3 bytes are none, 5 are 8 bits.
    const auto format = [](unsigned precision, unsigned layout) {
        return PixelFormat{std::uint64_t{1u << 19 | layout << 8 | precision << 1} << 32};
    };
    EXPECT_EQ(CreateFromIVideoFrame(new_frame({.format = format(0, 0)})), nullptr);
    EXPECT_EQ(CreateFromIVideoFrame(new_frame({.format = format(4, 1)})), nullptr);  // 12 bytes
    EXPECT_EQ(std::unique_ptr<QX_World>(CreateFromIVideoFrame(new_frame({.format = format(1, 1)})))->Depth(), 8);
    EXPECT_EQ(CreateFromIVideoFrame(new_frame({.format = kFormats[0], .bounds = {0, 0, 0, 3}})), nullptr);
    EXPECT_THROW(CreateFromIVideoFrame(new_frame({.format = kFormats[0], .has_block = false})), NullInterfaceException);
    EXPECT_THROW(CreateFromIVideoFrame(new_frame({.format = kFormats[0], .has_pixels = false})),
                 NullInterfaceException);
}

TEST_F(VideoFrames, OnTheGpuAreReadBack) {
    const Frame frame = new_frame(on_gpu());
    EXPECT_THROW(CreateFromIVideoFrame(frame), NullInterfaceException);
    PixelFormat asked{};
    const HasGpu gpu({.read_back = [&](const Frame& read, PixelFormat format) {
        EXPECT_EQ(read.get(), frame.get());
        asked = format;
        return new_frame({.format = format});
    }});
    const std::unique_ptr<QX_World> world(CreateFromIVideoFrame(frame));
    EXPECT_TRUE(world && world->Depth() == 32 && asked == kFormats[2]);
}

TEST_F(VideoFrames, BecomeRecordsOfGpuWorlds) {
    for (const auto& [format, depth] :
         {std::pair{GK::kPixelFormat_GPU_BGRA_4444_32f, 32}, {GK::kPixelFormat_GPU_BGRA_4444_16f, 16}}) {
        FrameTraits traits = on_gpu(format);
        traits.bounds = {5, -6, 4, 3};
        QX_LayerDef record;
        std::memset(&record, 0xAB, sizeof record);
        InitEffectWorldFromIVideoFrame(new_frame(traits), &record);
        EXPECT_TRUE(IsEffectWorldGPUBased(&record) && QXp_WorldDepth(&record) == depth);
        EXPECT_EQ(record.world_flags, depth == 16 ? 1u : 0u);
        EXPECT_TRUE(record.width == 4 && record.height == 3 && record.rowbytes == 4 * depth / 2);
        EXPECT_TRUE(record.extent_hint.left == 5 && record.extent_hint.bottom == -3 && record.extent_hint.right == 9);
        EXPECT_TRUE(record.origin_x == -5 && record.origin_y == 6 && record.pix_aspect_num == 10 &&
                    record.pix_aspect_den == 11 && record.world == nullptr && record.ownership_mark == 0);
        const Frame behind = GetGPUIVFFromQXEffectWorld(&record);
        EXPECT_TRUE(behind && behind->GetPixelFormat() == format);
        EXPECT_EQ(GetGPUVPixFromQXEffectWorld(&record), record.platform_ref);
        record.ownership_mark = kQX_OwnedMark;
        EXPECT_EQ(QX_DisposeEffectWorld(&record), 0);
    }
    QX_LayerDef kept{};
    kept.width = 9;
    InitEffectWorldFromIVideoFrame(new_frame({.format = kFormats[0], .has_block = false}), &kept);
    InitEffectWorldFromIVideoFrame(nullptr, &kept);
    EXPECT_EQ(kept.width, 9);
    EXPECT_FALSE(GetGPUIVFFromQXEffectWorld(nullptr) || GetGPUIVFFromQXEffectWorld(&kept));
    EXPECT_EQ(GetGPUVPixFromQXEffectWorld(nullptr), nullptr);
    VPix* address = nullptr;
    MapEffectWorldToVPix(&address, nullptr);
    MapEffectWorldToVPix(&address, &kept);
    EXPECT_EQ(kept.platform_ref, &address);
    kept.data = &kept;
    EXPECT_FALSE(IsEffectWorldGPUBased(&kept));
}

/// What making a GPU world comes to, with the device free again.
int code_of_creation(PixelFormat format, bool clear = true, const RectT<int>& rect = {2, 3, 6, 6}) {
    const boost::shared_ptr<DoubleDevice> device(new DoubleDevice);
    int code = 0;
    try {
        QX_LayerDef* record = CreateGPUEffectWorld(device, rect, {1, 1}, 0, clear, format);
        EXPECT_TRUE(record->width == 4 && record->height == 3 && record->origin_x == -2 && record->origin_y == -3);
        EXPECT_NE(record->platform_ref, nullptr);
        FK::DisposeVPixFromVideoFrame(record->platform_ref);
        TK_FreePtr(record);
    } catch (int thrown) {
        code = thrown;
    } catch (const NullInterfaceException&) {
        code = -1;
    }
    EXPECT_TRUE(device->acquired == 1 && device->holders == 0);
    return code;
}

TEST_F(VideoFrames, AreMadeOnADevice) {
    const Reports quiet;
    FrameTraits traits = on_gpu();
    std::int32_t answer = 0;
    const HasGpu gpu({.new_frame = [&](PixelFormat format, const MK::FrameBounds& bounds, Frame* frame) {
        traits.format = format;
        traits.bounds = bounds;
        if (answer >= 0) *frame = new_frame(traits);
        return answer;
    }});
    constexpr auto format = GK::kPixelFormat_GPU_BGRA_4444_32f;
    EXPECT_EQ(CreateGPUEffectWorld({}, {0, 0, 1, 1}, {1, 1}, 0, false, format), nullptr);
    EXPECT_EQ(code_of_creation(format), 0);
    EXPECT_EQ(code_of_creation(format, true, {0, 0, 30001, 1}), 4);
    EXPECT_EQ(code_of_creation(format, true, {INT_MAX - 1, 0, INT_MIN + 2, 3}), 4) << "the side does not wrap to 4";
    EXPECT_EQ(code_of_creation(PixelFormat{0x55}), 3);
    EXPECT_EQ(quiet.last_text(), "Unsupported QX_PixelFormat");
    traits.is_clearable = false;
    EXPECT_EQ(code_of_creation(format), -1);
    EXPECT_EQ(code_of_creation(format, false), 0);
    answer = -5;
    EXPECT_EQ(code_of_creation(format), 4);
    answer = 0;
    for (int nth = 1, code = 4; code != 0; ++nth) {
        const auto before = blocks_in_use();
        code = short_of_memory(nth, [&] { return code_of_creation(format, false); });
        EXPECT_TRUE((code == 0 || code == 4) && blocks_in_use() == before);
        ASSERT_LT(nth, 9);
    }
}

TEST_F(VideoFrames, TellTheirDeviceMemory) {
    Reports reports;
    void* out = &reports;
    QX_LayerDef record{};
    InitEffectWorldFromIVideoFrame(new_frame(on_gpu()), &record);
    EXPECT_EQ(QX_GetPixelDataFloatGPU(&record, &out), 0);
    EXPECT_EQ(out, GetGPUIVFFromQXEffectWorld(&record).query<FK::IVideoFrameGPUMemoryAccess>()->GetDeviceMemory());
    EXPECT_EQ(QX_GetPixelDataFloatGPU(&record, nullptr), 516);
    EXPECT_EQ(QX_GetPixelDataFloatGPU(nullptr, &out), 516);
    EXPECT_EQ(reports.last_text(), "bad parameter passed to QX_GetPixelDataFloatGPU");
    FK::DisposeVPixFromVideoFrame(record.platform_ref);
    InitEffectWorldFromIVideoFrame(new_frame(on_gpu(GK::kPixelFormat_GPU_BGRA_4444_16f)), &record);
    out = &reports;
    EXPECT_EQ(QX_GetPixelDataFloatGPU(&record, &out), 0);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(reports.last_text(), "unsupported gpu pixel format passed to QX_GetPixelDataFloatGPU");
    FK::DisposeVPixFromVideoFrame(record.platform_ref);
}

/// The rule once more, by cases, over all values of the bits that count.
TEST(FrameFormats, BytesOfAPixelOverAllProperties) {
    for (std::uint32_t p = 0; p < 1u << 21; ++p) {
        if ((p & ~(3u << 19 | 3u << 11 | 7u << 8 | 7u << 1)) != 0) continue;
        const std::uint32_t code = (p & 0xE) / 2, kind = p >> 19, packing = (p & 0x1800) / 0x800,
                            layout = (p & 0x700) / 0x100;
        std::uint32_t c = 0;
        if (code == 0) c = 8;
        if (code == 1) c = 10;
        if (code == 2 || code == 3) c = 16;
        if (code == 4) c = 24;
        if (code == 5) c = 32;
        std::uint32_t bytes;
        if (kind == 1 && packing == 0 && layout > 0) {
            bytes = c / 2;
        } else if (kind == 1 && packing == 1) {
            bytes = c == 10 ? 0 : c / 4;
        } else if (c == 10) {
            bytes = 4;
        } else {
            bytes = kind == 1 && packing == 0 && layout == 0 ? c * 3 / 8 : 0;
        }
        ASSERT_EQ(tesselmediatypes::BytesPerPixel({std::uint64_t{p} << 32 | 77}), bytes) << p;
        ASSERT_EQ(FK::PixelFormatComponentPrecision({std::uint64_t{p} << 32}), kind == 1 ? static_cast<int>(c) : 0);
    }
}

}  // namespace
