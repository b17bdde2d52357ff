// SPDX-License-Identifier: Apache-2.0
// The reports of a frame that could not be allocated.
#include <cstdlib>

#include "QX/indep/QX_Report.h"
#include "QX/world/QX_Frame.h"
#include "QX/world/QX_FrameTexts.h"
#include "platform/TK_Report.h"

namespace {

constexpr int kPlace = static_cast<int>(qx::Place::frame_allocation);
constexpr int kHostOutOfMemory = -108;  // what some callers pass on from their system
constexpr const char* kChangingBufferKey = "$$$/VN/BM/LStr/0027=changing pixel buffer.";

struct Failure {
    int place, error, rowbytes;
    int width, height, bits_per_pixel;
    std::size_t size;  ///< 0 when it is to be computed
};

std::uint64_t bytes_of(const Failure& f) {
    if (f.size != 0) return f.size;
    const auto count = [](int n) { return static_cast<std::uint64_t>(n < 0 ? 0 : n); };
    if (f.rowbytes != 0) return count(f.rowbytes) * count(f.height);
    return count(f.bits_per_pixel / 8) * count(f.width) * count(f.height);
}

void show(const Failure& f) {
    if (f.error != kQX_OutOfMemory && f.error != kHostOutOfMemory) {
        // Kept: this one report goes out with the bare place, without the library's number.
        TK_ReportError(f.place, qx::kReportSeverity, TK_ZStringToUTF16String(kChangingBufferKey));
        return;
    }
    const qx::FrameSize frame{f.width, f.height, f.bits_per_pixel / 4, bytes_of(f)};
    const bool possible = frame.bytes < qx::kProcessorFrameLimit;
    TK_ReportError(qx::site(f.place), qx::kReportSeverity,
                   possible ? qx::not_enough_memory_text(frame) : qx::memory_limit_text(frame));
}

/// Making the text may fail for want of the memory that it complains of; then it is dropped.
void report(const Failure& f) {
    if (f.error == kQX_NoError) return;
    try {
        show(f);
    } catch (...) {
    }
}

}  // namespace

int BM_ReportWorldAllocationFailure(int error, int rowbytes, short width, short height, short bits_per_pixel) {
    report({kPlace, error, rowbytes, width, height, bits_per_pixel, 0});
    return 0;
}

void BMp_ReportWorldAllocFail(short site, int error, int rowbytes, const M_Rect* rect, int bits_per_pixel,
                              std::size_t size) {
    report({site, error, rowbytes, rect->right - rect->left, rect->bottom - rect->top, bits_per_pixel, size});
}
