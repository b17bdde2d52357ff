// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What stands in the table of slots and in the callback block by number, but has no routine in this version yet.
/// A family that lands takes its numbers out; a test holds these lists to the truth.
namespace qx {

/// Slots of families still to come: rectangle composites, blurs, convolution, destinations, mask buffers.
inline constexpr int kPendingSlots[] = {7,  8,  9,  10, 26, 27, 28, 45, 46, 54,  55,
                                        56, 62, 81, 82, 85, 88, 89, 92, 93, 113, 114};

/// Slots that stay null for good: old entries kept for position's sake, and the old batch samplers 17 to 22.
inline constexpr int kEmptySlots[] = {0,  1,  11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22,
                                      29, 30, 33, 34, 49, 50, 59, 66, 67, 69, 79, 80, 90, 91};

/// Fields of the callback block whose routines are still to come.
inline constexpr int kPendingBlockFields[] = {5, 6, 7, 10, 20, 21, 22, 23, 46, 47, 48, 49, 50, 51, 52, 53, 55, 58};

/// Fields of the callback block that are null for good.
inline constexpr int kEmptyBlockFields[] = {0, 4, 45, 68};

}  // namespace qx
