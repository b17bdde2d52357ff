// SPDX-License-Identifier: Apache-2.0
// The world of one pixel type: how it comes and goes, and its operations on whole areas.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"
#include "QX/pixelops/QX_PixelRun.h"
#include "QX/pixelops/QX_Premul.h"
#include "QX/world/QX_Frame.h"
#include "QX/world/QX_FrameLimits.h"
#include "QX/world/QX_FrameTexts.h"
#include "QX/world/QX_SubRecord.h"
#include "QX/world/QX_WorldCopy.h"
#include "QX/world/QX_WorldX.h"
#include "platform/TK_Report.h"

namespace {

constexpr unsigned char kGutterByte = 0x55;
constexpr std::size_t kAlignmentBytes = 8;  // at most so much lies before the first pixel

std::atomic<std::int32_t> live_worlds{0};
void count_world(int difference) { live_worlds.fetch_add(difference, std::memory_order_relaxed); }

/// Text for the user, then the code.
[[noreturn]] void throw_invalid_size(int width, int height) {
    char text[256], number[16];
    std::snprintf(text, sizeof text, "%s", TK_ZString(qx::kInvalidSizeKey));
    std::snprintf(number, sizeof number, "%i", width);
    qx::throw_if(TK_SubString(text, sizeof text, "^L1", number));
    std::snprintf(number, sizeof number, "%i", height);
    qx::throw_if(TK_SubString(text, sizeof text, "^L2", number));
    TKp_ReportErrString(qx::site(qx::Place::world_size), qx::kReportSeverity, text);
    throw int{kQX_BadParameter};
}

std::size_t block_size(std::size_t width, std::size_t height, std::size_t rowbytes, std::size_t pixel) {
    return (height - 1) * rowbytes + width * pixel + (rowbytes - pixel) + kAlignmentBytes;
}

/// Rows of an owning world begin on multiples of 16 bytes.
std::size_t rowbytes_of(std::size_t width, std::size_t pixel) { return (width * pixel + 15) & ~std::size_t{15}; }

/// The frame allocator's blocks are aligned to 8; pixels are aligned to 16.
std::byte* aligned(void* block) {
    return static_cast<std::byte*>(block) + (reinterpret_cast<std::uintptr_t>(block) & 8);
}

}  // namespace

std::int32_t qx::live_world_count() { return live_worlds.load(std::memory_order_relaxed); }
void qx::reset_live_world_count() { live_worlds.store(0, std::memory_order_relaxed); }

template <class Pixel> QX_WorldX<Pixel>::QX_WorldX(int w, int h, int flags) : QX_World() {
    constexpr std::size_t P = sizeof(Pixel);
    if (!qx::valid_size(w, h)) throw_invalid_size(w, h);
    const auto columns = static_cast<std::size_t>(w), rows = static_cast<std::size_t>(h);
    rowbytes = static_cast<std::int32_t>(rowbytes_of(columns, P));
    BM_AllocateFrameQuiet(block_size(columns, rows, static_cast<std::size_t>(rowbytes), P), 0, &allocation);
    if (allocation == nullptr) {
        BM_ReportWorldAllocationFailure(kQX_OutOfMemory, rowbytes, static_cast<short>(w), static_cast<short>(h),
                                        static_cast<short>(P * 8));
        throw int{kQX_OutOfMemory};
    }
    data = aligned(allocation);
    allocated_width = static_cast<std::int16_t>(w);
    allocated_height = static_cast<std::int16_t>(h);
    width = w;
    height = h;
    std::memset(qx::pixel_address(*this, w, h - 1, P), kGutterByte, static_cast<std::size_t>(rowbytes) - P);
    extent_hint = qx::whole_of(*this);
    QXp_SetWorldDepth(this, Depth());
    if ((flags & 1) != 0) Clear(nullptr);
    world = this;
    count_world(1);
}

template <class Pixel> QX_WorldX<Pixel>::QX_WorldX(QX_LayerDef* record, bool) : QX_World() {
    width = record->width;
    height = record->height;
    rowbytes = record->rowbytes;
    data = record->data;
    world_flags = record->world_flags;
    extent_hint = record->extent_hint;
    world = this;
}

template <class Pixel> QX_WorldX<Pixel>::QX_WorldX(QX_WorldX* parent, const M_LRect& rect) : QX_World() {
    static_cast<QX_LayerDef&>(*this) = qx::sub_record(*parent, rect, sizeof(Pixel));
    pix_aspect_num = parent->pix_aspect_num;
    pix_aspect_den = parent->pix_aspect_den;
    world = this;
}

template <class Pixel> QX_WorldX<Pixel>::QX_WorldX(void* pixels, int w, int h, int bytes_of_row) : QX_World() {
    width = w;
    height = h;
    rowbytes = bytes_of_row;
    data = pixels;
    extent_hint = qx::whole_of(*this);
    QXp_SetWorldDepth(this, Depth());
    world = this;
}

template <class Pixel> QX_WorldX<Pixel>::~QX_WorldX() {
    if (allocation != nullptr) {
        BM_FreeFrame(allocation, BlockSize());
        count_world(-1);
    }
    // A record that still points here can be told to be dead; a plain store into a dying object may be left out.
    *const_cast<volatile std::uint32_t*>(&ownership_mark) = kQX_DeadMark;
}

/// Kept: by the rowbytes of now, which are another world's after ReReference. The block itself ends at BlockEnd.
template <class Pixel> std::size_t QX_WorldX<Pixel>::BlockSize() const {
    return block_size(static_cast<std::size_t>(allocated_width), static_cast<std::size_t>(allocated_height),
                      static_cast<std::size_t>(rowbytes), sizeof(Pixel));
}

template <class Pixel> const std::byte* QX_WorldX<Pixel>::BlockEnd() const {
    const auto columns = static_cast<std::size_t>(allocated_width), rows = static_cast<std::size_t>(allocated_height);
    return static_cast<const std::byte*>(allocation) +
           block_size(columns, rows, rowbytes_of(columns, sizeof(Pixel)), sizeof(Pixel));
}

template <class Pixel> std::int16_t QX_WorldX<Pixel>::Depth() const { return qx::DepthOf<Pixel>::number; }

template <class Pixel> void QX_WorldX<Pixel>::Clear(const M_LRect* rect) {
    const M_LRect area = qx::clip_to(*this, rect);
    if (M_EmptyLRect(area)) return;
    const std::size_t row_size = qx::columns_of(area) * sizeof(Pixel);
    if (static_cast<std::ptrdiff_t>(row_size) != rowbytes) {
        qx::fill_area(*this, area, Pixel{});
        return;
    }
    // Kept: the count is that of the whole world from row `top` on, so it passes `bottom`, and the last row too.
    std::byte* first = qx::pixel_address(*this, 0, area.top, sizeof(Pixel));
    std::size_t bytes = static_cast<std::size_t>(height) * static_cast<std::size_t>(width) * sizeof(Pixel);
    if (allocation != nullptr && first >= allocation && first < BlockEnd()) {
        bytes = std::min(bytes, static_cast<std::size_t>(BlockEnd() - first));
    }
    qx::PixelRun(Pixel{}, bytes).store(first, bytes);
}

template <class Pixel> void QX_WorldX<Pixel>::ClearExceptRect(const M_LRect& rect) {
    const M_LRect keep = qx::clip_to(*this, &rect);
    if (M_EmptyLRect(keep)) return Clear(nullptr);
    if (keep == qx::whole_of(*this)) return;
    const M_LRect around[] = {{0, 0, width, keep.top},
                              {0, keep.top, keep.left, keep.bottom},
                              {keep.right, keep.top, width, keep.bottom},
                              {0, keep.bottom, width, height}};
    for (const M_LRect& part : around) qx::fill_area(*this, part, Pixel{});
}

template <class Pixel>
template <class Colour>
void QX_WorldX<Pixel>::FillWith(const Colour& colour, const M_LRect* rect) {
    const M_LRect area = qx::clip_to(*this, rect);
    if (!M_EmptyLRect(area)) qx::fill_area(*this, area, qx::colour_argument<Pixel>(&colour));
}

template <class Pixel> void QX_WorldX<Pixel>::Fill(const QX_PixelFloat& colour, const M_LRect* rect) {
    FillWith(colour, rect);
}

template <class Pixel> void QX_WorldX<Pixel>::Fill(const QX_Pixel16& colour, const M_LRect* rect) {
    FillWith(colour, rect);
}

template <class Pixel> void QX_WorldX<Pixel>::FillAlpha() {
    using D = qx::DepthOf<Pixel>;
    using Channel = typename D::Channel;
    qx::for_each_row<Channel>(*this, qx::whole_of(*this), sizeof(Pixel), [](auto* row, std::size_t columns) {
        for (std::size_t i = 0; i < columns; ++i) row[4 * i].value = static_cast<Channel>(D::full);
    });
}

template <class Pixel> void QX_WorldX<Pixel>::InvertAlpha() {
    using D = qx::DepthOf<Pixel>;
    using Channel = typename D::Channel;
    qx::for_each_row<Channel>(*this, qx::whole_of(*this), sizeof(Pixel), [](auto* row, std::size_t columns) {
        for (std::size_t i = 0; i < columns; ++i) {
            const typename D::Lane alpha = row[4 * i].value;
            row[4 * i].value = static_cast<Channel>(D::comp(alpha));
        }
    });
}

template <class Pixel> void QX_WorldX<Pixel>::Premultiply() { PremultiplyBlack(true); }
template <class Pixel> void QX_WorldX<Pixel>::Unmultiply() { PremultiplyBlack(false); }
template <class Pixel> void QX_WorldX<Pixel>::PremulColor(const QX_Pixel16& colour) { Matte(colour, true); }
template <class Pixel> void QX_WorldX<Pixel>::UnmulColor(const QX_Pixel16& colour) { Matte(colour, false); }

// Kept: there is no float form of these four operations.
template <class Pixel> void QX_WorldX<Pixel>::PremultiplyBlack(bool forward) {
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) throw int{kQX_FailedVerification};
    qx::throw_if(QX_Premul(nullptr, forward, this));
}

template <class Pixel> void QX_WorldX<Pixel>::Matte(const QX_Pixel16& colour, bool forward) {
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
        const QX_Pixel8 at_depth = qx::colour_argument<QX_Pixel8>(&colour);
        qx::throw_if(QX_PremulColor(nullptr, this, &at_depth, forward, this));
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        qx::throw_if(QX_PremulColor16(nullptr, this, &colour, forward, this));
    } else {
        throw int{kQX_FailedVerification};
    }
}

template <class Pixel> void QX_WorldX<Pixel>::CopyRect(const QX_World* src, const M_LRect& rect, int x, int y) {
    if (src->Depth() != Depth()) {
        throw qx::report_failed_verification(qx::Place::copy_rect,
                                             "Src and dest bitdepths are different in QX_World::CopyRect");
    }
    qx::copy_pixels({src, Depth(), rect}, {this, sizeof(Pixel) * 2, x, y}, {false, 0, nullptr});
}

template <class Pixel>
void QX_WorldX<Pixel>::CopyRectPossiblyDifferentBitdepth(const QX_World* src, const M_LRect& rect, bool dither, int x,
                                                         int y, QX_ProgressInfo* progress) {
    if (qx::copy_pixels({src, src->Depth(), rect}, {this, sizeof(Pixel) * 2, x, y}, {dither, 0, progress})) return;
    TKp_ReportErrString(qx::site(qx::Place::copy_rect), qx::kReportSeverity,
                        "Unknown bit depth in QX_World::CopyRectPossiblyDifferentBitdepths");
}

template <class Pixel>
void QX_WorldX<Pixel>::CopyRectPossiblyDifferentBitdepthWithField(const QX_World* src, const M_LRect& rect, int field) {
    if (qx::copy_pixels({src, src->Depth(), rect}, {this, sizeof(Pixel) * 2, 0, 0}, {true, field, nullptr})) return;
    TKp_ReportErrString(qx::site(qx::Place::copy_rect), qx::kReportSeverity,
                        "Unknown bit depth in QX_World::CopyRectPossiblyDifferentBitdepthsWithField");
}

template <class Pixel> bool QX_WorldX<Pixel>::SubWorldSafetyGutterHasBeenOverWritten() const {
    constexpr auto P = static_cast<std::ptrdiff_t>(sizeof(Pixel));
    if (allocation == nullptr || rowbytes <= P) return false;
    // Kept: by the rowbytes of now. Where those lead out of the block there is nothing to be told.
    const std::byte* start = aligned(allocation);
    const std::ptrdiff_t offset = std::ptrdiff_t{rowbytes} * (allocated_height - 1) + P * allocated_width;
    if (offset + rowbytes - P > BlockEnd() - start) return false;
    return std::any_of(start + offset, start + offset + rowbytes - P,
                       [](std::byte b) { return b != std::byte{kGutterByte}; });
}

template <class Pixel> void QX_WorldX<Pixel>::GiveUpAllocation() {
    if (allocation != nullptr) count_world(-1);
    allocation = nullptr;
}

template class QX_WorldX<QX_Pixel8>;
template class QX_WorldX<QX_Pixel16>;
template class QX_WorldX<QX_PixelFloat>;
