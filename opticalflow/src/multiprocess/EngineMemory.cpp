// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/multiprocess/EngineMemory.h"

#include "platform/TK_Memory.h"

namespace solvan_of {

std::recursive_mutex& engineLock() {
    static std::recursive_mutex lock;
    return lock;
}

void* engineAllocate(std::size_t bytes) {
    const std::unique_lock<std::recursive_mutex> held(engineLock());
    return engineAllocateUnlocked(bytes);
}

void* engineAllocateUnlocked(std::size_t bytes) { return TK_AllocatePtr(0, "Solvan image", bytes); }

void engineFree(void* block) {
    if (block != nullptr) TK_FreePtr(block);
}

}  // namespace solvan_of
