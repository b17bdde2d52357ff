// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <future>

#include "tests/support/Test.h"

namespace qx::test {

/// An executor that runs the indices one after another in the order given, those of `on_caller` on the calling
/// thread and each other on a thread of its own. Indices that the order leaves out run last, in their order.
struct ChosenOrder {
    std::vector<int> order{};
    std::set<int> on_caller{};

    void operator()(const boost::function<void(int)>& task, int count) const {
        std::set<int> done;
        const auto run = [&](int i) {
            if (i >= count || !done.insert(i).second) return;
            on_caller.count(i) != 0 ? task(i) : std::async(std::launch::async, task, i).get();
        };
        for (const int i : order) run(i);
        for (int i = 0; i < count; ++i) run(i);
    }
};

inline void run_in_turn(const boost::function<void(int)>& task, int count) {
    for (int i = 0; i < count; ++i) task(i);
}

/// Puts an executor in the pool's place for a scope.
class WithExecutor {
public:
    explicit WithExecutor(const standalone::Executor& executor) { standalone::SetExecutor(executor); }
    ~WithExecutor() { standalone::SetExecutor({}); }
    WithExecutor(WithExecutor&&) = delete;
};

}  // namespace qx::test
