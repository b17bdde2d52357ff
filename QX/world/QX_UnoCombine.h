// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/world/QX_UnoBuffer.h"

/// Operators by which one mask goes into another, of a source sample s and a destination sample d.
enum QX_UnoOperator : int {
    kQX_Uno_NoisyScreen = -1,  ///< screen, rounded by the library's running noise
    kQX_Uno_Screen = 1,        ///< full - (full - s) * (full - d); 0 is the same
    kQX_Uno_Subtract = 2,      ///< (full - s) * d
    kQX_Uno_Intersect = 3,     ///< s * d
    kQX_Uno_Maximum = 4,
    kQX_Uno_Minimum = 5,
    kQX_Uno_Difference = 6,
    kQX_Uno_Add = 7
};

/// All routines below refuse damaged buffers as those of QX_UnoBuffer.h do. They run on all processors, the calling
/// thread asks `progress` every 64 rows, and its answer ends the work with whole rows done. `rect` is in coordinates of
/// the source, and null is all of it; `point` is where its corner, as given, lands in `dst`, and null is that corner
/// itself. What lies outside of a buffer is left out.

/// Combines `src` into `dst`, of the same depth; an 8-bit one into a deep one by Add alone.
///
/// Full opacity and limit give the operators as told. Below that s is multiplied by `opacity`, and the two screens go
/// towards `limit` in place of full, leaving a d that is there or above; each other operator adds, up to full. Both are
/// limited to 0..1. Intersect and Minimum, unless nothing is left of the rectangle, also clear each sample of `dst`
/// over which `src` has none, inside of the rectangle or not.
/// @return 0; 3 after a report for another operator or depths that do not go together; the answer of `progress`
QX_EXPORT int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode, float opacity,
                                      float limit, const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst);
QX_EXPORT int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode,
                                      const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst);
QX_EXPORT int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode,
                                      const M_LRect* rect, QX_UnoBuffer* dst);

/// Blends `b` into `dst`, as far as `a`, which lies over `b`, covers each sample. All three have one depth, which may
/// be float. `mode` does not change that: Intersect and Minimum clear what the part that `a` and `b` share does not
/// cover.
QX_EXPORT int QX_TransferUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* a, const QX_UnoBuffer* b,
                                    int mode, const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst);

/// Makes samples of another depth of deep ones in the same place, of which a step is worth `precision`. Integers are
/// divided by 1, 4, 8, or 16 for any other precision, to the nearest, and keep their low bits; floats by the precision.
/// @return 0, also with nothing done for a source that is not deep; 3 after a report for floats by a precision of 0
QX_EXPORT int QX_ConvertDeepUnoBuffer(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, const M_LRect* rect,
                                      std::int32_t precision, QX_UnoBuffer* dst);
