// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_ParallelRun.h"

namespace qx {

namespace {

using Progress = boost::shared_ptr<ThreadProgress<QX_ProgressInfo>>;

/// One part of the iterations.
struct IterateGenericFunctor {
    std::int32_t start, total, thread_index, count;
    void* refcon;
    Progress progress;
    QX_IterateGenericFunc fn;

    void operator()() const {
        int code = 0;
        for (std::int32_t j = 0; j < count && code == 0; ++j) code = fn(refcon, thread_index, start + j, total);
        progress->keep_error(code);
    }
};

struct Split {
    Progress progress;
    std::vector<IterateGenericFunctor> parts{};
};

/// Equal parts, of which the last takes the remainder; below one iteration a part there are fewer parts.
/// -1 iterations are one part of one iteration for every thread.
void make_parts(Split& split, std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn) {
    const std::int32_t n = acceleration.bands;
    const std::int32_t total = iterations == -1 ? n : iterations;
    const std::int32_t each = total > n ? total / n : 1;
    split.parts.reserve(static_cast<std::size_t>(n));
    for (std::int32_t i = 0; i < n && each * i < total; ++i) {
        const std::int32_t start = each * i;
        split.parts.push_back({start, total, i, i == n - 1 ? total - start : each, refcon, split.progress, fn});
    }
}

constexpr std::int32_t kNothingDrawn = -1;  ///< the calling thread has not begun part 0
constexpr std::int32_t kAllDone = -2;       ///< part 0 has begun, and no index is parked

/// Part 0 runs on the calling thread, whatever index that thread draws first: it parks the index, runs part 0, and
/// the parked part is taken up by whoever comes last: one task more than there are parts, or the call's end.
class SplitTask {
public:
    explicit SplitTask(const boost::shared_ptr<Split>& split) : split_(split) {}

    void operator()(int k) const {
        if (progress().first_error() != 0) return;
        std::int32_t index = progress().on_main_thread() ? drawn_by_caller(k) : drawn_by_worker(k);
        if (index >= parts()) index = take_pending();
        run(index);
    }

    /// What no task has run, on the calling thread.
    void finish() const {
        if (progress().first_error() != 0) return;
        const std::int32_t left = progress().pending_index.read();
        run(left == kNothingDrawn ? 0 : left);
    }

private:
    ThreadProgress<QX_ProgressInfo>& progress() const { return *split_->progress; }
    std::int32_t parts() const { return static_cast<std::int32_t>(split_->parts.size()); }

    static std::int32_t drawn_by_worker(int k) { return k == 0 ? kAllDone : k; }

    std::int32_t drawn_by_caller(int k) const {
        if (k != 0) return progress().pending_index.swap_if(kNothingDrawn, k) == kNothingDrawn ? 0 : k;
        const std::int32_t before = settle();
        return before == kNothingDrawn ? 0 : before;
    }

    /// A parked index, for the one thread that gets it; negative when there is none.
    std::int32_t take_pending() const {
        const std::int32_t seen = progress().pending_index.read();
        return seen >= 0 && progress().pending_index.swap_if(seen, kAllDone) == seen ? seen : kAllDone;
    }

    /// Sets "all done". @return what stood before
    std::int32_t settle() const {
        std::int32_t seen = progress().pending_index.read();
        for (std::int32_t now; (now = progress().pending_index.swap_if(seen, kAllDone)) != seen;) seen = now;
        return seen;
    }

    void run(std::int32_t index) const {
        if (index >= 0 && index < parts()) split_->parts[static_cast<std::size_t>(index)]();
    }

    boost::shared_ptr<Split> split_;
};

}  // namespace

int accelerated_iterate_generic(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn) {
    const bool nothing_to_split = iterations == 1 || iterations == 0 || iterations < -1;
    if (nothing_to_split || fn == nullptr) {
        return guarded([&] { return slot<Slot::IterateGeneric>(acceleration.saved)(iterations, refcon, fn); });
    }
    return run_parallel<QX_ProgressInfo>(nullptr, [&](const Progress& progress) {
        const auto split = boost::make_shared<Split>(Split{progress});
        make_parts(*split, iterations, refcon, fn);
        const SplitTask task(split);
        const int tasks = static_cast<int>(split->parts.size()) + 1;
        tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, tasks);
        task.finish();
    });
}

}  // namespace qx
