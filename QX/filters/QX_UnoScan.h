// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Blurs of one line of a mask buffer, in place. The line has `len` samples, beyond whose ends the first and the last
/// one repeat; of it the span from `start` to before `end` is wanted, and nothing is done where there is none.
/// `scratch` holds `len` samples. `radius` is 16.16. Any number of calls may run at once, on lines and scratch of their
/// own.

/// A running mean in one pass, or in three where `passes` is not 0, whose shape is smoother. The passes go over the
/// span and a margin on both sides, as one span; the rest of the line stays. Small radii go to QX_GBlurUnoScan, with
/// `passes` as its kind.
/// @return 0, what QX_GBlurUnoScan gives, or 3 after a report for a missing line or scratch
QX_EXPORT int QX_BoxBlurUnoScan(int passes, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                                std::uint8_t* scratch, std::uint8_t* scan);
QX_EXPORT int QX_BoxBlurDeepUnoScan(int passes, std::int32_t len, std::int32_t start, std::int32_t end,
                                    std::int32_t radius, std::uint16_t* scratch, std::uint16_t* scan);

/// Kind 1 weighs the samples around by a bell of this radius, any other takes the plain mean of 2 k + 1 samples, where
/// k is half the radius, rounded. Nothing but the span changes.
/// @return 0; 3 after a report for a bell below 0 or above 32767, or a missing line or scratch; 4 when there is no
/// memory for the bell's weights. The line is as it was then.
QX_EXPORT int QX_GBlurUnoScan(int kind, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                              std::uint8_t* scratch, std::uint8_t* scan);
QX_EXPORT int QX_GBlurDeepUnoScan(int kind, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                                  std::uint16_t* scratch, std::uint16_t* scan);
