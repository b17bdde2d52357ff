// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>

namespace solvan_of {

/// Guards polls and the memory of textures, which some hosts serve to one thread at a time.
std::recursive_mutex& engineLock();

/// Memory of the host under the engine's lock; null where there is none.
void* engineAllocate(std::size_t bytes);
/// The same without the lock, for rows and lists: parts that run side by side would wait for each other.
void* engineAllocateUnlocked(std::size_t bytes);
void engineFree(void* block);  ///< Null is allowed.

struct EngineFree {
    void operator()(void* block) const { engineFree(block); }
};
/// A block of numbers or records that need no construction.
template <class T> using EngineBlock = std::unique_ptr<T[], EngineFree>;
/// Null where there is no memory. The contents are unset.
template <class T> EngineBlock<T> engineBlock(std::size_t count) {
    return EngineBlock<T>(static_cast<T*>(engineAllocateUnlocked(count * sizeof(T))));
}

}  // namespace solvan_of
