// SPDX-License-Identifier: Apache-2.0
// The long random run of forms against each other: qx_differential [--count N] [--first SEED] [--seed SEED].
// Seeds count up from 1, or from --first; a case that fails is printed with its seed, which reruns it alone.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/compositing/Differential.h"
#include "tests/support/TestHost.h"

namespace {

int usage() {
    std::fputs(
        "usage: qx_differential [--count N] [--first SEED] [--seed SEED]\n"
        "  --count N     cases to run, from seed 1 or --first on (100000)\n"
        "  --seed SEED   runs one case alone\n",
        stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::uint64_t first = 1, count = 100000;
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 == argc) return usage();
        char* end = nullptr;
        const std::uint64_t value = std::strtoull(argv[i + 1], &end, 10);
        if (*end != '\0') return usage();
        if (std::strcmp(argv[i], "--count") == 0) {
            count = value;
        } else if (std::strcmp(argv[i], "--first") == 0) {
            first = value;
        } else if (std::strcmp(argv[i], "--seed") == 0) {
            first = value;
            count = 1;
        } else {
            return usage();
        }
    }
    qx::test::levels();
    const qx::test::Born born(1);  // for the tables that the kernels read
    std::uint64_t failures = 0;
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const qx::test::Case c = qx::test::random_case(seed);
        if (count == 1) std::printf("%s\n", qx::test::describe(c).c_str());
        if (const auto fault = qx::test::run_case(c)) {
            std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed), fault->c_str());
            ++failures;
        }
        if (seed % 100000 == 0) std::fprintf(stderr, "%llu cases\n", static_cast<unsigned long long>(seed - first + 1));
    }
    std::printf("%llu cases, %llu failed\n", static_cast<unsigned long long>(count),
                static_cast<unsigned long long>(failures));
    return failures == 0 ? 0 : 1;
}
