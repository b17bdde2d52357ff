// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Records.h"

/// What suites alone have.
namespace qx {

/// Whether one of the first four flags of the host's processor record is set. @return 0, or 516 for null after a report
int processor_flag0(bool* is_set);
int processor_flag1(bool* is_set);
int processor_flag2(bool* is_set);  ///< the vector unit
int processor_flag3(bool* is_set);

/// A world of the depth of a pixel-format code. @return as QX_NewEffectWorld; 3 after a report for a null record, for
/// the float format of a GPU and for codes that are none. Kept: the 16-bit code of a GPU makes a 16-bit world.
int new_world_by_format(void* ref, int width, int height, int clear, std::uint32_t format, QX_LayerDef* world);

/// The code of a world's depth and place. @return 0; 3 after a report, with `*format` as it was, for a null record and
/// where there is no such code; 516 after one for a null `format`
int pixel_format_of_world(const QX_LayerDef* world, std::uint32_t* format);

}  // namespace qx
