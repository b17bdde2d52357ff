// SPDX-License-Identifier: Apache-2.0
#include "QX/library/QX_FillSlots.h"

#include "QX/compositing/QX_CompositingSlots.h"
#include "QX/filters/QX_FiltersSlots.h"
#include "QX/geometry/QX_GeometrySlots.h"
#include "QX/iterate/QX_IterateSlots.h"
#include "QX/pixelops/QX_PixelopsSlots.h"
#include "QX/sampling/QX_SamplingSlots.h"
#include "QX/world/QX_Chunk.h"
#include "QX/world/QX_UnoKernels.h"
#include "opticalflow/src/Kernels.h"

void qx::fill_slots(const Processor& processor) {
    fill_iterate_slots();
    fill_pixelops_slots(processor.level());
    choose_uno_kernels(processor.level());
    fill_sampling_slots(processor);
    fill_filters_slots(processor.level());
    fill_compositing_slots(processor.level());
    solvan_of::begin(processor.level());
    fill_geometry_slots();
    fill_destination_slots();
}
