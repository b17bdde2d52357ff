// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Texture.h"
#include "opticalflow/src/multiprocess/MultiProcess.h"

namespace solvan_of {

/// The rows above and below each part of a field, as they were before a pass that changes the field in place. A part
/// that looks at its neighbours' rows so sees the same however the parts run.
class BorderRows {
public:
    /// Copies the rows. @return false where there is no memory
    bool save(const FieldTexture& field);

    /// A row for a part: its own rows as they are, those beside it as they were; null beside the field.
    const HvVec2* row(const FieldTexture& field, int part, const PartRows& mine, std::int32_t y) const {
        if (y < 0 || y >= field.height()) return nullptr;
        if (y >= mine.begin && y < mine.end) return field.row(y);
        return saved_.row(2 * part + (y < mine.begin ? 0 : 1));
    }

private:
    FieldTexture saved_;
};

}  // namespace solvan_of
