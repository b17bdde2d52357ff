// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "QX/indep/QX_Progress.h"
#include "QX/indep/QX_Records.h"
#include "platform/tesselcore_Threads.h"

namespace qx {

/// A value shared by the tasks of one call. Reads are compare-and-swaps too, so that every access takes its place
/// in one order.
class SharedCode {
public:
    explicit SharedCode(std::int32_t value) : value_(value) {}
    std::int32_t read() {
        std::int32_t seen = 0;
        value_.compare_exchange_strong(seen, 0);
        return seen;
    }
    /// Becomes `next` if it still is `before`. @return what it was
    std::int32_t swap_if(std::int32_t before, std::int32_t next) {
        value_.compare_exchange_strong(before, next);
        return before;
    }

private:
    std::atomic<std::int32_t> value_;
};

/// The record that tasks find behind `effect_ref`. It comes first, as the host's own record does there.
template <class Info> struct ThreadInfoField {};
template <> struct ThreadInfoField<QX_InData> { QX_ProgressInfo thread_info{}; };

/// The shared state of one parallel call: the first failure, and callbacks for the tasks that reach the caller's
/// own on the caller's thread only. Other threads learn of an abort from their next poll. Held by shared pointers,
/// for a pool may still be unwinding a task when the call returns.
template <class Info> struct ThreadProgress : ThreadInfoField<Info> {
    const std::uint32_t main_thread = tesselcore::threads::GetCurrentThreadID();
    Info info_copy{};
    Info* source_info;
    SharedCode error{0};
    SharedCode pending_index{-1};

    explicit ThreadProgress(const Info* source) : source_info(const_cast<Info*>(source)) {
        if (source == nullptr) return;
        info_copy = *source;
        redirect();
    }
    ThreadProgress(const ThreadProgress&) = delete;
    ThreadProgress& operator=(const ThreadProgress&) = delete;

    /// What a task hands on in the caller's record's place; null if there was none.
    Info* info() { return source_info != nullptr ? &info_copy : nullptr; }
    /// The first non-zero code of any task.
    int first_error() { return error.read(); }
    /// @return the first code, which this one is if there was none
    int keep_error(int code) {
        if (code != 0) error.swap_if(0, code);
        return first_error();
    }
    bool on_main_thread() const { return tesselcore::threads::GetCurrentThreadID() == main_thread; }

private:
    void redirect();

    /// The frame of the thread-safe forms: `ask` calls the caller's callback.
    template <class Ask> static int forward(void* refcon, const Ask& ask) {
        auto* self = static_cast<ThreadProgress*>(refcon);
        return self->keep_error(self->on_main_thread() ? ask(*self->source_info) : 0);
    }

    static int ask_abort(const QX_ProgressInfo& host) {
        return host.abort_func != nullptr ? host.abort_func(host.refcon) : 0;
    }
    static const QX_ProgressInfo& host_record(const QX_InData& source) {
        return *static_cast<const QX_ProgressInfo*>(source.effect_ref);
    }
};

/// A callback that the caller does not have stays null: who asks then asks the other one.
template <class Callback> void replace_unless_null(Callback& callback, Callback by) {
    if (callback != nullptr) callback = by;
}

template <> inline void ThreadProgress<QX_ProgressInfo>::redirect() {
    info_copy.refcon = this;
    replace_unless_null<QX_AbortFunc>(info_copy.abort_func, [](void* refcon) { return forward(refcon, &ask_abort); });
    replace_unless_null<QX_ProgressFunc>(
        info_copy.progress_func, [](void* refcon, std::int32_t count, std::int32_t total) {
            return forward(refcon, [&](const QX_ProgressInfo& host) { return ask_progress(&host, count, total); });
        });
}

/// What stands behind `effect_ref` is read when somebody asks, not before. Kept: without an `effect_ref` the copy keeps
/// the caller's callbacks, and every thread calls them directly.
template <> inline void ThreadProgress<QX_InData>::redirect() {
    if (info_copy.effect_ref == nullptr) return;
    info_copy.effect_ref = this;
    replace_unless_null<QX_AbortFunc>(info_copy.abort, [](void* refcon) {
        return forward(refcon, [](const QX_InData& source) { return source.abort(source.effect_ref); });
    });
    replace_unless_null<QX_ProgressFunc>(info_copy.progress, [](void* refcon, std::int32_t count, std::int32_t total) {
        return forward(refcon,
                       [&](const QX_InData& source) { return source.progress(source.effect_ref, count, total); });
    });
    thread_info.refcon = this;
    thread_info.abort_func = [](void* refcon) {
        return forward(refcon, [](const QX_InData& source) { return ask_abort(host_record(source)); });
    };
    thread_info.progress_func = [](void* refcon, std::int32_t count, std::int32_t total) {
        return forward(refcon,
                       [&](const QX_InData& source) { return ask_progress(&host_record(source), count, total); });
    };
}

// `effect_ref` of the copy is the object, and routines read a QX_ProgressInfo there.
static_assert(std::is_base_of_v<ThreadInfoField<QX_InData>, ThreadProgress<QX_InData>>);

}  // namespace qx
