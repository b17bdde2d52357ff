// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/standalone/SH_ColourContext.h"
#include "platform/standalone/SH_ColourForms.h"
#include "platform/standalone/SH_ColourProfile.h"

namespace standalone {

/// Something that is made when it is first asked for, by one thread; when making it throws, the next asks again.
template <class Made> class OnceMade {
public:
    /// @param make  gives a std::unique_ptr, which may be null
    template <class Make> const Made* get(const Make& make) {
        if (!done_.load(std::memory_order_acquire)) {
            const std::lock_guard lock(mutex_);
            if (!done_.load(std::memory_order_relaxed)) {
                made_ = make();
                done_.store(true, std::memory_order_release);
            }
        }
        return made_.get();
    }

private:
    std::atomic<bool> done_{false};
    std::mutex mutex_;
    std::unique_ptr<const Made> made_;
};

/// How pixels lie in memory: alpha and three colours, or four inks, which are never floats.
struct ColourLayout {
    ColourDepth depth;
    bool inks;
};

/// What a transform gives: the colour library's pipeline in floats, without optimisation. Values of integer pixels are
/// divided by their full one, results rounded to the nearest, halves up, and limited; what is not a number is 0 there.
class ColourLaw : public TK_MemTrackedObject {
public:
    /// Throws ColourFault and std::bad_alloc.
    ColourLaw(const ColourProfile& from, const ColourProfile& to, Intent intent, bool black_point_compensation);
    /// Colours of `count` pixels; alphas of the destination stay as they are. Both may be the same memory where the
    /// depths are alike. Any thread.
    /// @param clip  limits float results to 0..1
    void run(const void* src, ColourLayout from, void* dst, ColourDepth to, bool clip, std::int64_t count) const;

private:
    const ColourForm* form(ColourDepth from, ColourDepth to, bool clip) const;

    ColourArena arena_;
    const cmsPipeline* pipeline_ = nullptr;
    mutable OnceMade<ColourForm> forms_[3][3][2];
};

}  // namespace standalone
