// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Places.h"
#include "QX/indep/QX_Records.h"
#include "platform/TK_Strings.h"

/// The library's table of localised messages, by number.
QX_EXPORT extern const TK_ZRef QX_G_zref;

namespace qx {

/// Numbers of the messages in QX_G_zref.
enum class Text : int {
    invalid_selector = 0,
    invalid_parameter = 1,
    not_your_world = 2,
    plane_buffer = 3,
    bad_parameter = 4,
    acceleration_module = 5,
    unimplemented_mode = 6,
    noise_table = 7,
    guess_alpha = 8,
    obsolete = 9,
    blurring = 10,
    mask_buffer = 11,
    damaged_mask = 12,
    unlock_mask = 13,
    gaussian_weights = 14,
    blending_scratch = 15,
    channel_worlds = 16,
    channel_chunk = 17,
    image_buffer = 18,
    platform_refs = 19
};

inline constexpr int kReportSeverity = 8;

/// The localised text; null when the host has none.
const char* text_of(Text text);

/// "bad parameter passed to effect callback" at this site. @return 3
int report_bad_parameter(Place place);
/// "invalid parameter". @return 516
int report_invalid_parameter(Place place);
/// An assertion-style failure. @return 3
int report_failed_verification(Place place, const char* message);
/// Tells which argument the next report of this thread is about, in the manner of printf.
[[gnu::format(printf, 1, 2)]] void tell_detail(const char* format, ...);
/// Whether an argument has the depth of a call's destination. @return 0; 3 after the report, which tells both depths
int must_have_depth(int destination, int depth, const char* argument, Place place, const char* message);
/// Text of the table through the narrow report.
void report_text(Place place, Text text);

/// "gpu effect world is not supported yet." @return 3
int report_gpu_world(Place place);

/// True when the record stands for a GPU frame: no pixels, but a frame behind it.
constexpr bool is_gpu_world(const QX_LayerDef* world) {
    return world != nullptr && world->data == nullptr && world->platform_ref != nullptr;
}

}  // namespace qx
