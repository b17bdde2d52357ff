// SPDX-License-Identifier: Apache-2.0
// Layouts of the records that hosts and effects hold and whose headers do not tell all of it. What the compiler takes,
// holds.
#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackBlock.h"
#include "platform/TK_Strings.h"
#include "platform/TK_Suites.h"
#include "tests/support/Test.h"

namespace {

#define SIZE(record, size) static_assert(sizeof(record) == (size));
#define AT(record, field, offset) static_assert(offsetof(record, field) == (offset));

SIZE(QX_InData, 256)
AT(QX_InData, abort, 0)
AT(QX_InData, progress, 8) AT(QX_InData, effect_ref, 96) AT(QX_ProgressInfo, refcon, 0)
    AT(QX_ProgressInfo, progress_func, 16) SIZE(QX_MaskWorld, 136) AT(QX_MaskWorld, world, 0) AT(QX_MaskWorld, y, 124)
        AT(QX_LayerDef, reserved1, 8) AT(QX_LayerDef, pix_aspect_den, 92) AT(QX_LayerDef, origin_y, 108)
            AT(QX_LayerDef, reserved4, 114) AT(M_LRect, left, 0) AT(M_LRect, bottom, 12) AT(M_Rect, top, 0)
                AT(M_Rect, right, 6) AT(M_LPoint, y, 4) SIZE(M_Vector2T<std::int16_t>, 4)
                    SIZE(M_Vector2T<std::int32_t>, 8) SIZE(M_Vector2T<float>, 8) SIZE(M_FloatPoint, 16)
                        SIZE(M_FloatRect, 32) AT(M_FloatRect, bottom, 24)

                            AT(QX_CompositeMode, xfer, 0) AT(QX_CompositeMode, rand_seed, 4)
                                AT(QX_CompositeMode, opacity, 8) AT(QX_CompositeMode, rgb_only, 9)
                                    AT(QX_CompositeModePlus, xfer, 0) AT(QX_CompositeModePlus, rand_seed, 4)
                                        AT(QX_CompositeModePlus, rgb_only, 8) AT(QX_CompositeModePlus, tables, 16)
                                            SIZE(QX_ScratchBlock, 80) AT(QX_ScratchBlock, mask_row, 8)
                                                AT(QX_ScratchBlock, spare_row, 16) AT(QX_ScratchBlock, motion, 24)
                                                    AT(QX_SampPB, x_radius, 0) AT(QX_SampPB, y_radius, 4)
                                                        AT(QX_SampPB, reserved, 28)

                                                            template <class Pixel, std::size_t mode_size>
                                                            constexpr bool rows_hold() {
    using Mode = QX_BlendingMode<Pixel>;
    using Descriptor = QX_BlendModeDescriptor<Pixel>;
    SIZE(Mode, mode_size)
    AT(Mode, xfer, 0) AT(Mode, rand_seed, 4) AT(Mode, opacity, 8) AT(Mode, rgb_only, 8 + sizeof(QX_ChannelOf<Pixel>))
        SIZE(Descriptor, 72) AT(Descriptor, behind_row, 16) AT(Descriptor, pre_filter, 24)
            AT(Descriptor, post_filter, 32) AT(Descriptor, row, 40) AT(Descriptor, alpha_merge, 48)
                AT(Descriptor, pre_post, 56) AT(Descriptor, behind_first, 57) AT(Descriptor, keeps_alpha, 58)
                    AT(Descriptor, merges_alpha, 59) AT(Descriptor, tables, 64) SIZE(QX_SamplerSet<Pixel>, 48)
                        AT(QX_SamplerSet<Pixel>, area, 16) AT(QX_SamplerSet<Pixel>, span, 40) return true;
}
static_assert(rows_hold<QX_Pixel8, 12>() && rows_hold<QX_Pixel16, 12>() && rows_hold<QX_PixelFloat, 16>());

AT(QX_ChannelChunk, width, 0)
AT(QX_ChannelChunk, height, 4) AT(QX_ChannelChunk, dimension, 8) AT(QX_Destination, reserved, 8) SIZE(QX_FloatQuad, 16)
    SIZE(QX_Int32Quad, 16) SIZE(QX_Mask128, 16)
        SIZE(QX_Solvan_Time, 8) static_assert(sizeof(QXp_G_OverFuncs) == 118 * sizeof(void*));
SIZE(TK_ZRef, 16)
AT(TK_ZRef, keys, 8) SIZE(QSBasicSuite, 56) AT(QSBasicSuite, ReleaseSuite, 8) AT(QSBasicSuite, IsEqual, 16)
    AT(QSBasicSuite, AllocateBlock, 24) AT(QSBasicSuite, FreeBlock, 32) AT(QSBasicSuite, ReallocateBlock, 40)
        AT(QSBasicSuite, Undefined, 48)

}  // namespace
