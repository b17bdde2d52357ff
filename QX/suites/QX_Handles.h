// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/TK_Memory.h"

/// The host's movable memory, as effects have it in the callback block and in a suite: `*handle` is the block.
namespace qx {

/// Quiet. @return null when memory is short
TK_Handle new_handle(std::uint64_t bytes);
/// The block, null for a null handle. Kept: nothing is counted, so that a resize may move a block that is locked.
void* lock_handle(TK_Handle handle);
void unlock_handle(TK_Handle handle);   ///< does nothing
void dispose_handle(TK_Handle handle);  ///< null is allowed
std::uint64_t handle_size(TK_Handle handle);
/// Makes the block longer or shorter and keeps its contents; quiet.
/// @return 0; 516 for a null handle or pointer; the host's code, 4 when memory is short, with the handle as it was;
///         else the code with which the host ends the quiet section
int resize_handle(std::uint64_t bytes, TK_Handle* handle);

}  // namespace qx
