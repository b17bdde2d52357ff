// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"
#include "platform/TK_Memory.h"

inline constexpr std::uint32_t kQX_UnoBufferMagic = 0xFEEDABBA;

/// A mask or matte held apart from any world: one channel, its samples row by row without padding. 8-bit samples have
/// a full scale of 255, 16-bit ones (a "deep" buffer) of 32768, float ones of 1. Hosts know the layout.
class QX_EXPORT QX_UnoBuffer {
public:
    std::uint32_t magic;         ///< kQX_UnoBufferMagic in a live buffer
    std::int32_t width, height;  ///< in samples
    TK_Handle handle;            ///< the first sample at `*handle`
    std::int32_t depth;          ///< 8, 16 or 32

    /// Samples are not cleared. Throws 3 after a report for a side below 1 and for a depth other than 8, 16 and 32
    /// (1 stands for 8, 0 for 16), 4 when memory is short.
    QX_UnoBuffer(std::int32_t width, std::int32_t height, std::int32_t depth);
    ~QX_UnoBuffer();
    QX_UnoBuffer(const QX_UnoBuffer&) = delete;
    QX_UnoBuffer& operator=(const QX_UnoBuffer&) = delete;
};
static_assert(sizeof(QX_UnoBuffer) == 32 && offsetof(QX_UnoBuffer, handle) == 16 &&
              offsetof(QX_UnoBuffer, depth) == 24);

/// All routines on buffers refuse one that is null, has another magic number, no samples or a depth that they do not
/// take: "damaged mask buffer", 3. One call owns a buffer while it runs.

/// Makes a buffer of 8 or of 16 bits, whose samples are not cleared. @return 0; 3 for a side below 1; 4 when memory is
/// short. `*out` is null then.
QX_EXPORT int QX_NewUnoBuffer(std::int32_t width, std::int32_t height, QX_UnoBuffer** out);
QX_EXPORT int QX_NewDeepUnoBuffer(std::int32_t width, std::int32_t height, QX_UnoBuffer** out);
/// Ends a buffer that one of these made. Null is fine.
QX_EXPORT int QX_DisposeUnoBuffer(QX_UnoBuffer* buffer);

/// Sets the samples of a rectangle, cut to the buffer; null is all of it. The float form sets all samples.
QX_EXPORT int QX_FillUnoBuffer(std::uint8_t value, const M_LRect* rect, QX_UnoBuffer* buffer);
QX_EXPORT int QX_FillDeepUnoBuffer(std::uint16_t value, const M_LRect* rect, QX_UnoBuffer* buffer);
QX_EXPORT int QX_FillFloatUnoBuffer(float value, QX_UnoBuffer* buffer);

/// Multiplies all samples by an opacity, limited to 0..1, on the calling thread; `progress` is asked every 64 rows.
QX_EXPORT int QX_FadeUnoBuffer(const QX_ProgressInfo* progress, float opacity, QX_UnoBuffer* buffer);
/// Makes each sample what it lacks of full, times an opacity of 16.16, limited to 0..1. Runs on all processors; the
/// calling thread asks `progress`.
QX_EXPORT int QX_InvertAndFadeUnoBuffer(const QX_ProgressInfo* progress, std::int32_t opacity, QX_UnoBuffer* buffer);
QX_EXPORT int QX_InvertUnoBuffer(const QX_ProgressInfo* progress, QX_UnoBuffer* buffer);
