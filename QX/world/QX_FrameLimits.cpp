// SPDX-License-Identifier: Apache-2.0
// Could a frame be allocated at all? The host asks before it plans to render one.
#include "QX/world/QX_FrameLimits.h"
#include "QX/indep/QX_Area.h"
#include "QX/world/QX_FrameTexts.h"
#include "platform/tesselmediatypes.h"

namespace qx::numeric_limits {
namespace {

using Answer = std::tuple<bool, std::wstring>;

constexpr auto kGpuFormat = GK::kPixelFormat_GPU_BGRA_4444_32f;

std::uint64_t round_up(std::uint64_t bytes, std::size_t alignment) {
    return (bytes + alignment - 1) & ~(std::uint64_t{alignment} - 1);
}

}  // namespace

Answer CanAllocateCPUFrame(int width, int height, short depth, std::size_t alignment) {
    if (!valid_size(width, height)) return {false, invalid_size_text(width, height)};
    const auto pixel = std::uint64_t{bytes_of_pixel(depth)};
    const std::uint64_t used = pixel * static_cast<std::uint64_t>(width);
    const std::uint64_t rowbytes = round_up(used, alignment);
    const std::uint64_t bytes = static_cast<std::uint64_t>(height - 1) * rowbytes + (rowbytes - pixel) + used + 8;
    if (bytes >= kProcessorFrameLimit) return {false, memory_limit_text({width, height, depth, bytes})};
    return {true, {}};
}

Answer CanAllocateGPUFrame(int width, int height, short, std::size_t alignment) {
    if (!valid_size(width, height)) return {false, invalid_size_text(width, height)};
    const std::uint64_t row = round_up(tesselmediatypes::PixelFormatSize(kGpuFormat, width, 1), alignment);
    const std::uint64_t bytes = row != 0 ? static_cast<std::uint64_t>(height) * row
                                         : tesselmediatypes::PixelFormatSize(kGpuFormat, width, height);
    if (bytes > kGpuFrameLimit)
        return {false, memory_limit_text({width, height, tesselmediatypes::ComponentBits(kGpuFormat), bytes})};
    return {true, {}};
}

}  // namespace qx::numeric_limits
