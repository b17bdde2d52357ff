// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_FrameTexts.h"

#include "platform/TK_Strings.h"
#include "platform/tesselcore_Utility.h"

using tesselcore::utility::NumberToString;
using tesselcore::utility::ReplaceInString;

namespace qx {
namespace {

constexpr double kGigabytesPerByte = 9.313225746154785e-10;  // 2 to the power -30

std::wstring frame_text(const char* key, const FrameSize& frame) {
    std::wstring text = TK_ZStringToUTF16String(key);
    ReplaceInString(text, L"@0", NumberToString(frame.width));
    ReplaceInString(text, L"@1", NumberToString(frame.height));
    ReplaceInString(text, L"@2", NumberToString(frame.bits_per_channel));
    ReplaceInString(text, L"@3", NumberToString(static_cast<double>(frame.bytes) * kGigabytesPerByte, 1));
    ReplaceInString(text, L"@@", L"@");
    return text;
}

}  // namespace

std::wstring invalid_size_text(int width, int height) {
    std::wstring text = TK_ZStringToUTF16String(kInvalidSizeKey);
    ReplaceInString(text, L"^L1", NumberToString(width));
    ReplaceInString(text, L"^L2", NumberToString(height));
    return text;
}

std::wstring memory_limit_text(const FrameSize& frame) {
    return frame_text(
        "$$$/VN/BM/MemoryLimitReached=Image buffers of size @0 x @1 @@ @2 bpc (@3 GB) exceed internal limits. "
        "Decrease the memory requirements for the rendering of this frame. (12804).",
        frame);
}

std::wstring not_enough_memory_text(const FrameSize& frame) {
    return frame_text(
        "$$$/VN/BM/CannotAllocateEnoughMemory=Unable to allocate enough memory to render the current frame "
        "(@0 x @1 @@ @2 bpc). Either decrease the memory requirements for the rendering of this frame, or install "
        "more RAM. (12805).",
        frame);
}

}  // namespace qx
