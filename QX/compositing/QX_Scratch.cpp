// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cstddef>

#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "platform/TK_Memory.h"

namespace {

constexpr const char* kRowName = "$$$/VN/QX/LStr/0015=blending scratch buffer";

struct MotionBuffer {
    const char* name;
    std::size_t bytes;
};
constexpr MotionBuffer kMotionBuffers[7] = {
    {"motion blur scratch data1", 2048},  {"motion blur scratch data2", 2048}, {"motion blur scratch data3", 2048},
    {"motion blur scratch data4", 4096},  {"motion blur scratch data5", 4096}, {"motion blur scratch data6", 18432},
    {"motion blur scratch data7", 26624},
};

/// The block that calls share, one at a time, and the bytes of its mask row.
QX_ScratchBlock shared{};
std::size_t shared_row_bytes = 0;
std::atomic_flag shared_is_lent;

void free_rows(QX_ScratchBlock& block) {
    for (void** row : {&block.alpha_row, &block.mask_row, &block.spare_row}) {
        TK_FreePtr(*row);
        *row = nullptr;
    }
}

/// All three rows or none.
bool allocate_rows(std::size_t row_bytes, QX_ScratchBlock& block) {
    block.alpha_row = TK_AllocatePtr(qx::site(qx::Place::scratch), kRowName, row_bytes / 4);
    if (block.alpha_row != nullptr) block.mask_row = TK_AllocatePtr(qx::site(qx::Place::scratch), kRowName, row_bytes);
    if (block.mask_row != nullptr) block.spare_row = TK_AllocatePtr(qx::site(qx::Place::scratch), kRowName, row_bytes);
    if (block.spare_row != nullptr) return true;
    free_rows(block);
    return false;
}

std::size_t row_bytes_for(int width, int bytes_per_channel) {
    return static_cast<std::size_t>(width > 0 ? width : 1) * 4 * static_cast<std::size_t>(bytes_per_channel);
}

void ensure_motion_buffers() {
    if (shared.motion[0] != nullptr) return;
    if (const int code = QX_AllocateMotionBlurScratch(shared.motion)) {
        QX_DisposeMotionBlurScratch(shared.motion);
        throw code;
    }
}

}  // namespace

int QX_AllocateMotionBlurScratch(void* buffers[7]) {
    for (int i = 0; i < 7; ++i) buffers[i] = nullptr;
    for (int i = 0; i < 7; ++i) {
        buffers[i] = TK_AllocatePtr(qx::site(qx::Place::scratch), kMotionBuffers[i].name, kMotionBuffers[i].bytes);
        if (buffers[i] == nullptr) return kQX_OutOfMemory;
    }
    return kQX_NoError;
}

void QX_DisposeMotionBlurScratch(void* buffers[7]) {
    for (int i = 0; i < 7; ++i) {
        TK_FreePtr(buffers[i]);
        buffers[i] = nullptr;
    }
}

int QXp_ReallocScratch(int width, int bytes_per_channel, bool fresh, QX_ScratchBlock* scratch) {
    if (bytes_per_channel != 1 && bytes_per_channel != 2 && bytes_per_channel != 4) {
        return qx::report_failed_verification(qx::Place::scratch, "Unexpected bitdepth in QXp_ReallocScratch()");
    }
    ensure_motion_buffers();
    const std::size_t row_bytes = row_bytes_for(width, bytes_per_channel);
    if (fresh || shared.alpha_row == nullptr || row_bytes > shared_row_bytes) {
        QX_ScratchBlock grown{};
        if (!allocate_rows(row_bytes, grown)) {
            shared_row_bytes = 0;  // the next request tries anew
            return kQX_OutOfMemory;
        }
        free_rows(shared);
        shared.alpha_row = grown.alpha_row;
        shared.mask_row = grown.mask_row;
        shared.spare_row = grown.spare_row;
        shared_row_bytes = row_bytes;
    }
    *scratch = shared;
    return kQX_NoError;
}

namespace qx {

void free_shared_scratch() {
    free_rows(shared);
    QX_DisposeMotionBlurScratch(shared.motion);
    shared_row_bytes = 0;
}

OwnScratch::~OwnScratch() {
    free_rows(block_);
    QX_DisposeMotionBlurScratch(block_.motion);
}

int OwnScratch::allocate(int width, int bytes_per_channel, bool with_motion) {
    if (!allocate_rows(row_bytes_for(width, bytes_per_channel), block_)) return kQX_OutOfMemory;
    return with_motion ? QX_AllocateMotionBlurScratch(block_.motion) : kQX_NoError;
}

LentScratch::LentScratch(int width, int bytes_per_channel)
    : is_shared_(!shared_is_lent.test_and_set(std::memory_order_acquire)) {
    if (!is_shared_) {
        throw_if(own_.allocate(width, bytes_per_channel, true));
        block_ = *own_.get();
        return;
    }
    try {
        throw_if(QXp_ReallocScratch(width, bytes_per_channel, false, &block_));
    } catch (...) {
        shared_is_lent.clear(std::memory_order_release);
        throw;
    }
}

LentScratch::~LentScratch() {
    if (is_shared_) shared_is_lent.clear(std::memory_order_release);
}

}  // namespace qx
