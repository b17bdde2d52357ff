// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace qx {

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
    static void copy(void* to, const void* from, std::size_t bytes);

private:
    const bool on_;
};

}  // namespace qx
