// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace qx::pictures {

/// Thrown by work that its Watch has stopped. No fault: nobody has to say anything of it.
struct Stopped {};

/// What long work asks whether to go on, and tells how far it has come.
class Watch {
public:
    Watch() = default;
    virtual ~Watch() = default;
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Both are called often, from any threads of the work and from within libraries in C: nothing is thrown.
    virtual bool stops() const noexcept { return false; }
    /// Hears that `done` rows of `total` are done. Where several threads work, a smaller count may come behind.
    virtual void rows(std::int64_t done, std::int64_t total) noexcept = 0;

    /// Before each row. @return false when the work is to stop
    bool next_row(std::int64_t done, std::int64_t total) {
        rows(done, total);
        return !stops();
    }
    /// The same, but throws Stopped.
    void must_next_row(std::int64_t done, std::int64_t total) {
        if (!next_row(done, total)) throw Stopped{};
    }
    void must_go_on() const {
        if (stops()) throw Stopped{};
    }
};

/// A watch that never stops and hears nothing, for any number of threads.
Watch& unwatched();

}  // namespace qx::pictures
