// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/multiprocess/MultiProcess.h"

namespace solvan_of {

/// Work in passes that processors share out, with or without an image.
class FnMultiProcessor : public FnInteruptable {
public:
    explicit FnMultiProcessor(InterruptState& state) : FnInteruptable(state) {}

    void set_parallel(bool parallel) { options_ = parallel ? options_ | kParallel : options_ & ~kParallel; }
    void set_pass_count(int count) { pass_count_ = count; }
    virtual void process();

protected:
    virtual void initialise() {}
    virtual void processPart(int part) = 0;
    virtual void finish() {}
    virtual void prePass() {}
    virtual void postPass() {}
    virtual void run();

    static constexpr std::uint32_t kInParallel = 1, kParallel = 1;
    std::uint32_t flags_ = 0, options_ = kParallel;
    int pass_count_ = 1, pass_ = 0;

private:
    void run_part(int part) { processPart(part); }
};

}  // namespace solvan_of
