// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_Suites.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "QX/indep/QX_Guard.h"
#include "QX/suites/QX_CallbackPick.h"
#include "opticalflow/src/multiprocess/MultiProcess.h"
#include "platform/TK_Suites.h"

namespace {

using qx::Private;
using qx::Slot;
using qx::Source;

constexpr Source kProcessor[] = {Private::processor_flag0, Private::processor_flag1, Private::processor_flag2,
                                 Private::processor_flag3};
constexpr Source kHandles[] = {Private::new_handle,     Private::lock_handle,     Private::unlock_handle,
                               Private::dispose_handle, Private::get_handle_size, Private::resize_handle};
#define X(name, routine) Private::name,
constexpr Source kColour[] = {QX_COLOUR_ROUTINES(X, straight, Straight)};
constexpr Source kColour16[] = {QX_COLOUR_ROUTINES(X, straight16, Straight16)};
constexpr Source kColourFloat[] = {QX_COLOUR_ROUTINES(X, straight_float, StraightFloat)};
#undef X
/// Kept for old effects, which find the suite and nothing in it.
constexpr Source kBatchSampling[] = {Slot::None0, Slot::None0, Slot::None0, Slot::None0};
constexpr Source kSampling8[] = {Slot::NNSample, Slot::SubpixelSample, Slot::AreaSample};
constexpr Source kSampling16[] = {Slot::NNSample16, Slot::SubpixelSample16, Slot::AreaSample16};
constexpr Source kSamplingFloat[] = {Private::nn_sample_float, Private::subpixel_sample_float,
                                     Private::area_sample_float};
constexpr Source kWorld1[] = {Private::new_world, Private::dispose_world};
constexpr Source kWorld2[] = {Private::new_world_by_format, Private::dispose_world, Private::pixel_format_of_world};
constexpr Source kIterate8[] = {Slot::Iterate, Slot::IterateOrigin, Slot::IterateLUT, Slot::IterateOriginNoClip,
                                Slot::IterateGeneric};
constexpr Source kIterateDeep[] = {Slot::Iterate, Slot::IterateOrigin, Slot::IterateOriginNoClip};
constexpr Source kTransform[] = {Slot::CompositeRectBest, Private::blend_straight, Slot::Convolve,
                                 Slot::CopyBitsDraft,     Slot::CopyBitsHQ,        Private::transfer_rect,
                                 Private::transform_world};
constexpr Source kFillMatte[] = {Private::fill,
                                 Private::fill16,
                                 Private::fill_float,
                                 Private::premultiply,
                                 Private::premultiply_color,
                                 Private::premultiply_color16,
                                 Private::premultiply_color_float};
constexpr Source kPixelData[] = {Private::get_pixel_data8, Private::get_pixel_data16, Private::get_pixel_data_float,
                                 Private::get_pixel_data_float_gpu};

struct Suite {
    const char* name;
    int version, internal_version;
    std::span<const Source> entries;  ///< none: the mathematics of the block
};

/// In the order of registration.
constexpr Suite kSuites[] = {
    {"VN CPU Data Suite", 1, 1, kProcessor},
    {"QX ANSI Suite", 1, 1, {}},
    {"QX Handle Suite", 2, 1, kHandles},
    {"QX Color Suite", 1, 1, kColour},
    {"QX Color16 Suite", 1, 1, kColour16},
    {"QX ColorFloat Suite", 1, 1, kColourFloat},
    {"QX Batch Sampling Suite", 1, 1, kBatchSampling},
    {"QX Sampling8 Suite", 1, 1, kSampling8},
    {"QX Sampling16 Suite", 1, 1, kSampling16},
    {"QX SamplingFloat Suite", 1, 1, kSamplingFloat},
    {"QX World Suite", 1, 1, kWorld1},
    {"QX Iterate8 Suite", 1, 1, kIterate8},
    {"QX iterate16 Suite", 1, 1, kIterateDeep},
    {"QX iterateFloat Suite", 1, 1, kIterateDeep},
    {"QX World Transform Suite", 1, 1, kTransform},
    {"QX Fill Matte Suite", 2, 2, kFillMatte},
    {"QX Pixel Data Suite", 2, 2, kPixelData},
    {"QX Pixel Data Suite", 1, 1, std::span(kPixelData).first(3)},
    {"QX World Suite", 2, 2, kWorld2},
};

/// The last function of the block's mathematics is null and in no suite.
constexpr int kMostEntries = qx::kAnsiCount - 1;
void* tables[std::size(kSuites)][kMostEntries];

int fill(const Suite& suite, void** table) {
    if (suite.entries.empty()) {
        std::copy_n(qx::ansi_block(), kMostEntries, table);
        return kMostEntries;
    }
    std::transform(suite.entries.begin(), suite.entries.end(), table, [](const Source& s) { return s.address(); });
    return static_cast<int>(suite.entries.size());
}

}  // namespace

int QX_InstallSuites() {
    void*(*table)[kMostEntries] = tables;
    for (const Suite& suite : kSuites) {
        const int entries = fill(suite, *table);
        const int code = qx::guarded([&] {
            return TK_QS_AddQSSuite(nullptr, 0, suite.name, suite.version, suite.internal_version, entries, *table);
        });
        if (code != 0) return code;
        ++table;
    }
    return qx::guarded([] {
        const QSBasicSuite* basic = nullptr;
        qx::throw_if(TK_QS_GetQSBasicSuite(&basic));
        solvan_of::keepBasicSuite(basic);
    });
}
