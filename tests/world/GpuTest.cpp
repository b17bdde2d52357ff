// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_GPU.h"

#include <gtest/gtest.h>

#include "QX/indep/QX_WorldDepth.h"
#include "tests/support/TestHost.h"
#include "tests/world/FrameDoubles.h"

namespace {

using namespace qx::test;
namespace GPU = vn::qx::GPU;

constexpr Guid kNone{}, kOther{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

/// Leaves the identity as it was at the start.
struct Renderers : testing::Test {
    ~Renderers() override { GPU::SetRendererID(kNone); }
};

std::string written(const Guid& guid) {
    std::uint8_t bytes[16];
    tesselcore::utility::GuidToBytes(guid, bytes);
    std::string text;
    for (int i = 0; i < 16; ++i) {
        char two[4];
        std::snprintf(two, sizeof two, "%02X", bytes[i]);
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += two;
    }
    return text;
}

TEST(RendererTable, HasTheHostsIdentities) {
    const char* const known[] = {"7EE0AB59-822D-44CC-AC10-16279D041016", "BE93941A-7488-4117-8A46-7E3596950307",
                                 "6ED1497E-17AD-4A5B-846F-52BB81E20104", "C4471277-D5D1-4EA7-A36C-B93AC76DFD41"};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(written(GPU::kGPURenderers[i]), known[i]);
    EXPECT_EQ(written(GPU::kSoftwareRenderer), "F33089E2-1EDE-47C1-8A9E-B232BB1CC1A4");
}

TEST_F(Renderers, ChangeTheDeviceAndAreToldToTheirLibrary) {
    std::vector<Guid> told;
    std::vector<int> asked;
    const boost::shared_ptr<GK::Device> device(new DoubleDevice);
    const HasGpu gpu({.device = [&](GK::DeviceFramework f) { return asked.push_back(static_cast<int>(f)), device; },
                      .renderer_changed = [&](const Guid& id) { told.push_back(id); }});
    EXPECT_TRUE(GPU::GetRendererID() == kNone && GPU::IsRendererGPU() && !GPU::GetCurrentDevice());
    for (int i = 0; i < 4; ++i) {
        GPU::SetRendererID(GPU::kGPURenderers[i]);
        EXPECT_TRUE(GPU::IsRendererGPU() && GPU::GetRendererID() == GPU::kGPURenderers[i]);
        EXPECT_EQ(GPU::GetCurrentDevice(), device);
        ASSERT_EQ(asked.size(), static_cast<std::size_t>(i + 1));
        EXPECT_EQ(asked.back(), i);
        EXPECT_TRUE(told.back() == GPU::kGPURenderers[i]);
    }
    GPU::SetRendererID(GPU::kSoftwareRenderer);
    EXPECT_TRUE(!GPU::IsRendererGPU() && told.back() == kNone && !GPU::GetCurrentDevice());
    GPU::SetRendererID(kOther);
    EXPECT_TRUE(GPU::IsRendererGPU() && told.back() == kOther && !GPU::GetCurrentDevice() && asked.size() == 4);
}

TEST_F(Renderers, KeepTheNewOneWhenTheirLibraryThrows) {
    const HasGpu gpu({.renderer_changed = [](const Guid&) { throw int{7}; }});
    EXPECT_THROW(GPU::SetRendererID(kOther), int);
    EXPECT_TRUE(GPU::GetRendererID() == kOther);  // and the lock is free
    standalone::SetGpu({});
    GPU::SetRendererID(kNone);
}

TEST_F(Renderers, AreReadAndSetByThreadsAtOnce) {
    std::atomic<int> told{0};
    const HasGpu gpu({.renderer_changed = [&](const Guid&) { ++told; }});
    in_threads(16, [](int i) {
        for (int k = 0; k < 200; ++k) {
            GPU::SetRendererID(i % 2 == 0 ? kOther : GPU::kSoftwareRenderer);
            const Guid seen = GPU::GetRendererID();
            EXPECT_TRUE(seen == kOther || seen == GPU::kSoftwareRenderer);
            EXPECT_FALSE(GPU::GetCurrentDevice());
        }
    });
    EXPECT_EQ(told, 3200);
}

TEST(RendererTable, AnswersOfFrameworksFlagsAndFormats) {
    for (const auto& [framework, number] : {std::pair{0, 3}, {1, 1}, {2, 2}, {3, 0}, {4, 0}, {-1, 0}}) {
        EXPECT_EQ(GPU::DeviceFrameworkToQXFramework(GK::DeviceFramework{framework}), number);
    }
    for (int bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(GPU::IsEffectVNGPUSDKSupported(static_cast<int>(1u << bit)), bit == 25);
    }
    const auto supported = [](std::uint32_t code) { return GPU::IsPixelFormatGPUSupported(static_cast<int>(code)); };
    EXPECT_TRUE(supported(kQX_PixelFormat_GPUFloat));
    EXPECT_FALSE(supported(kQX_PixelFormat_GPU16) || supported(kQX_PixelFormat_ARGBFloat));
}

}  // namespace
