// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/multiprocess/MultiProcess.h"

#include <new>

#include "tests/support/Test.h"

namespace qx::test {
namespace {

namespace of = solvan_of;

/// A worker that runs out of memory while the host is asked is not forgotten over the host's answer.
TEST(FlowParts, WantOfMemoryOutlivesAPoll) {
    of::InterruptState state;
    state.data = &state;
    state.poll = [](void* self) {
        static_cast<of::InterruptState*>(self)->stop(4);
        return 0;
    };
    EXPECT_EQ(of::checkInterrupt(state, 0), 4);
    EXPECT_TRUE(state.is_stopped());
}

/// Whatever tells of it, want of memory in a part is code 4.
TEST(FlowParts, WorkersTellWantOfMemory) {
    const Reports reports;
    const auto code_after = [](of::PartFunction work) {
        of::InterruptState state;
        EXPECT_TRUE(of::runOnAllProcessors(state, work, 0, nullptr));
        return state.current_code();
    };
    EXPECT_EQ(code_after(reinterpret_cast<of::PartFunction>(+[](int) { throw 4; })), 4);
    EXPECT_EQ(code_after(reinterpret_cast<of::PartFunction>(+[](int) { throw std::bad_alloc(); })), 4);
}

}  // namespace
}  // namespace qx::test
