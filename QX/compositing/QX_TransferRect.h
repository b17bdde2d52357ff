// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Rows and buffers that one transfer at a time may use, for a width w and c bytes a channel (1, 2 or 4).
/// The buffers of motion blur stand behind the rows.
struct QX_ScratchBlock {
    void* alpha_row;  ///< w * c bytes: saved destination alpha
    void* mask_row;   ///< w * 4 * c bytes: computed coverage
    void* spare_row;  ///< w * 4 * c bytes
    void* motion[7];
};

/// Composites a rectangle of one world onto another of the same depth.
/// @param progress  may be null; its progress function is called on rows whose number is a multiple of 128
/// @param quality   accepted and never read, as `flags` is
/// @param field     1 keeps even rows of the destination, 2 odd rows, anything else all
/// @param src_rect  in source coordinates; clipped to both worlds and to a mask of kind 0 or 2
/// @param tables    null blends the stored values, else in linear light. `mode->tables` is not read.
/// @param mask      may be null, except for xfer_mask_crossfade
/// @param dest_x    where the corner of `src_rect` lands, with `dest_y`
/// @return 0 (also when the clip is empty); 3 for a GPU world, different or unknown depths, 4 for missing scratch,
///         5 for an unknown mode: nothing is written then. A code of the progress function ends after whole rows.
/// Any number of calls at once on different destinations.
QX_EXPORT int QX_TransferRect(const QX_ProgressInfo* progress, int quality, int flags, int field,
                              const M_LRect* src_rect, QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                              const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask, int dest_x, int dest_y,
                              QX_LayerDef* dst_world);
/// The routine behind QX_TransferRect.
QX_EXPORT int QX_TransferRect_S(const QX_ProgressInfo* progress, int quality, int flags, int field,
                                const M_LRect* src_rect, QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                                const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask, int dest_x, int dest_y,
                                QX_LayerDef* dst_world);
/// With a scratch block of the caller's, as wide as the rectangle: any number of calls run at once on different
/// rows. A null block is the shared one.
QX_EXPORT int QX_TransferRectPlus(const QX_ProgressInfo* progress, int quality, int flags, int field,
                                  const M_LRect* src_rect, QX_LayerDef* src_world, const QX_CompositeModePlus* mode,
                                  const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                                  QX_ScratchBlock* scratch, int dest_x, int dest_y, QX_LayerDef* dst_world);

/// Fills the seven buffers of motion blur. @return 0, or 4 with what was had left for the dispose call
QX_EXPORT int QX_AllocateMotionBlurScratch(void* buffers[7]);
QX_EXPORT void QX_DisposeMotionBlurScratch(void* buffers[7]);

/// Fills `*scratch` from the block that the library shares, growing it to `width` pixels; it never shrinks unless
/// `fresh` asks for new rows of just this size. @return 0, 4, or 3 for bytes per channel other than 1, 2, 4.
/// Throws 4 when the buffers of motion blur cannot be had on first use.
QX_EXPORT int QXp_ReallocScratch(int width, int bytes_per_channel, bool fresh, QX_ScratchBlock* scratch);

namespace qx {
/// Frees the shared scratch block, for QX_Death.
void free_shared_scratch();

/// A scratch block of its own for one band of `width` pixels, freed with the object.
class QX_EXPORT OwnScratch {
public:
    OwnScratch() = default;
    ~OwnScratch();
    OwnScratch(const OwnScratch&) = delete;
    OwnScratch& operator=(const OwnScratch&) = delete;
    /// @return 0 or 4. @param with_motion  also the buffers of motion blur
    int allocate(int width, int bytes_per_channel, bool with_motion);
    QX_ScratchBlock* get() { return &block_; }

private:
    QX_ScratchBlock block_{};
};

/// A scratch block for one call: the library's shared one, or where another call has that, one of its own.
class LentScratch {
public:
    /// Throws 4 where there is no memory.
    LentScratch(int width, int bytes_per_channel);
    ~LentScratch();
    LentScratch(const LentScratch&) = delete;
    LentScratch& operator=(const LentScratch&) = delete;
    const QX_ScratchBlock& block() const { return block_; }

private:
    const bool is_shared_;
    OwnScratch own_;
    QX_ScratchBlock block_{};
};
}  // namespace qx
