// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "lanes/Levels.h"

namespace qx {

/// Whole lines of 64 bytes, to where a line begins: each from the next, or all from one.
struct PastCachesKernels {
    void (*copy)(std::byte* to, const std::byte* from, std::size_t lines);
    void (*fill)(std::byte* to, const std::byte* line, std::size_t lines);
};
QX_DECLARE_LEVELS(PastCachesKernels, past_caches_kernels)

/// Chooses the kernels, at the library's start. Until then they are the plain ones.
void choose_past_caches_kernels(Level level);

/// How a routine stores what it makes: as always, or past the caches where it touches more than they hold, so that no
/// line is read before it is overwritten, and what others have in the caches stays there. One object a routine; its end
/// waits for the stores, before anyone is told that they are there.
class PastCaches {
public:
    /// @param bytes  that the routine reads and writes in all
    explicit PastCaches(std::size_t bytes);
    ~PastCaches();
    PastCaches(const PastCaches&) = delete;
    PastCaches& operator=(const PastCaches&) = delete;

    explicit operator bool() const { return on_; }

    /// Copies bytes that do not overlap, past the caches whatever the object says. Nothing outside is touched.
    static void copy(std::byte* to, const std::byte* from, std::size_t bytes);
    /// Stores the 16 bytes of `pattern` again and again, in the same way. The pattern has 16 more bytes, in which it
    /// begins anew.
    static void fill(std::byte* to, const std::byte* pattern, std::size_t bytes);

private:
    const bool on_;
};

}  // namespace qx
