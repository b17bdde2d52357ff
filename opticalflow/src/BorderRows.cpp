// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BorderRows.h"

#include <algorithm>

namespace solvan_of {

bool BorderRows::save(const FieldTexture& field) {
    const int parts = processorCount();
    if ((saved_.width() != field.width() || saved_.height() != 2 * parts || !saved_.has_pixels()) &&
        !saved_.allocate(field.width(), 2 * parts))
        return false;
    for (int part = 0; part < parts; ++part) {
        const PartRows rows = rows_of_part(field.height(), part, parts);
        const auto copy = [&](std::int32_t from, int to) {
            if (from >= 0 && from < field.height()) std::copy_n(field.row(from), field.width(), saved_.row(to));
        };
        copy(rows.begin - 1, 2 * part);
        copy(rows.end, 2 * part + 1);
    }
    return true;
}

}  // namespace solvan_of
