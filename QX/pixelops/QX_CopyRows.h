// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "QX/indep/QX_Export.h"

namespace qx {

/// Copies `columns` pixels of a row, which may lie at any address, to another depth. `dither` adds noise on the way
/// from 16 bits and from float to 8 bits. Source and destination may overlap when their depths are equal.
using CopyRow = void (*)(const std::byte* src, std::byte* dst, std::size_t columns, bool dither);

/// The row of a pair of depths; null when one of them is none of 8, 16, 32.
CopyRow copy_row(int from_depth, int to_depth);

/// The same between rows that do not overlap, by way of a buffer and past the caches (QX_PastCaches.h). Depths are
/// those of `row`.
void copy_row_past_caches(CopyRow row, int from_depth, int to_depth, const std::byte* src, std::byte* dst,
                          std::size_t columns, bool dither);

}  // namespace qx
