// SPDX-License-Identifier: Apache-2.0
#include "scene/Transform.h"

#include "QX/geometry/QX_TransformWorld.h"
#include "scene/RowCount.h"

namespace qx::scene {

int transform(const Transfer& t, QX_World& background, pictures::Watch& watch) {
    TransferRecords records(t, background);
    RowCount rows(watch, background.height);
    RowPart part(rows, background.height);
    const QX_ProgressInfo info = part.info();
    const int code =
        QX_TransformWorld(&info, t.quality, 0, t.field, &records.layer, &records.mode, t.tables, records.mask(),
                          t.matrices.data(), static_cast<int>(t.matrices.size()), true, nullptr, &records.background);
    if (watch.stops()) return kQX_Interrupted;  // a code of the layer's own may have come first
    if (code == 0) part.finish();
    return code;
}

}  // namespace qx::scene
