// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_Frame.h"

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Places.h"
#include "platform/TK_Memory.h"

namespace {

struct Attempt {
    std::size_t size;
    void* block;
};

/// Which of the two places a block of this size comes from and goes back to.
bool is_recycled(std::size_t size) { return size > qx::kRecycledThreshold; }

void try_once(void* context, bool* success) {
    auto* attempt = static_cast<Attempt*>(context);
    attempt->block =
        is_recycled(attempt->size)
            ? TK_GetRecycledPtrBaseAddress(TK_AllocateRecycledPtr(qx::kFrameSite, "BM WORLD", attempt->size))
            : TK_RuntimeMalloc(attempt->size);
    *success = attempt->block != nullptr;
}

}  // namespace

int BM_AllocateFrameQuiet(std::size_t size, int, void** out) {
    Attempt attempt{size, nullptr};
    const int code = TK_PurgeLoop(size, try_once, &attempt, 1);
    *out = attempt.block;
    return attempt.block == nullptr ? kQX_OutOfMemory : code;
}

int BM_FreeFrame(void* block, std::size_t size) {
    is_recycled(size) ? TK_FreeRecycledPtr(block, size) : TK_RuntimeFree(block);
    return 0;
}
