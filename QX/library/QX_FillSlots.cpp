// SPDX-License-Identifier: Apache-2.0
#include "QX/library/QX_FillSlots.h"

#include "QX/compositing/QX_CompositingSlots.h"
#include "QX/geometry/QX_GeometrySlots.h"
#include "QX/iterate/QX_IterateSlots.h"
#include "QX/pixelops/QX_PixelopsSlots.h"
#include "QX/sampling/QX_SamplingSlots.h"

void qx::fill_slots(bool vector, bool faster) {
    fill_iterate_slots();
    fill_pixelops_slots();
    fill_sampling_slots(vector, faster);
    fill_compositing_slots(vector, faster);
    fill_geometry_slots();
}
