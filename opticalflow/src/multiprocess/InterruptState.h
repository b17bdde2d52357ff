// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

namespace solvan_of {

/// Why a render is to stop, shared by all that works for it. Threads that see an old zero work one row longer.
struct InterruptState {
    void* data = nullptr;                                                                ///< what the polls get
    std::int32_t (*poll)(void* data) = nullptr;                                          ///< one thread at a time
    std::int32_t (*threadSafePoll)(void* data, std::int32_t* code, int zero) = nullptr;  ///< in its place
    std::atomic<std::int32_t> stopped{0};
    std::atomic<std::int32_t> code{0};

    bool is_stopped() const { return stopped.load(std::memory_order_relaxed) != 0; }
    std::int32_t current_code() const { return code.load(std::memory_order_relaxed); }
    /// The first reason stays.
    void stop(std::int32_t why) {
        std::int32_t none = 0;
        code.compare_exchange_strong(none, why, std::memory_order_relaxed);
        stopped.store(1, std::memory_order_relaxed);
    }
};

/// Asks the host whether to go on, from part 0 alone, which runs on the render's own thread.
/// @return the code, 0 to go on
std::int32_t checkInterrupt(InterruptState& state, int part);

/// Base of all that works for a render.
class FnInteruptable {
public:
    explicit FnInteruptable(InterruptState& state) : state_(&state) {}
    virtual ~FnInteruptable() = default;

    InterruptState& state() const { return *state_; }
    bool stopped() const { return state_->is_stopped(); }
    /// Asks, and tells whether to stop.
    bool interrupted(int part) const { return checkInterrupt(*state_, part) != 0 || stopped(); }

private:
    InterruptState* state_;
};

}  // namespace solvan_of
