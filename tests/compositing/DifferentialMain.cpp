// SPDX-License-Identifier: Apache-2.0
// The long random run of forms against each other.
#include "tests/compositing/Differential.h"
#include "tests/support/RandomRun.h"

int main(int argc, char** argv) {
    using namespace qx::test;
    levels();
    const Born born(1);  // for the tables that the kernels read
    return random_run(
        argc, argv, [](std::uint64_t seed) { return run_case(random_case(seed)).value_or(""); },
        [](std::uint64_t seed) { return describe(random_case(seed)); });
}
