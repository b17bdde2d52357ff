// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace qx {

inline constexpr std::uint64_t kProcessorFrameLimit = 0x80000000;  ///< so many bytes or more cannot be allocated
inline constexpr std::uint64_t kGpuFrameLimit = 0xFFFFFFFF;        ///< more bytes cannot be allocated

inline constexpr const char* kInvalidSizeKey =
    "$$$/VN/QX/QX_WorldX/Constructor/InvalidSizeError=invalid image buffer size (^L1x^L2).";

/// A frame as messages name it.
struct FrameSize {
    int width, height;
    int bits_per_channel;
    std::uint64_t bytes;
};

std::wstring invalid_size_text(int width, int height);
std::wstring memory_limit_text(const FrameSize& frame);       ///< the frame is above what can be allocated at all
std::wstring not_enough_memory_text(const FrameSize& frame);  ///< the frame could not be had now

}  // namespace qx
