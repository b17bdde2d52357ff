// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace qx::test {

/// The program of a long random run: NAME [--count N] [--first SEED] [--seed SEED]. Seeds count up from 1, or from
/// --first; a case that fails is printed with its seed, which reruns it alone.
/// @param run  what is wrong with the case of a seed; nothing when it passes
/// @param describe  of a case that is run alone
inline int random_run(int argc, char** argv, const std::function<std::string(std::uint64_t)>& run,
                      const std::function<std::string(std::uint64_t)>& describe) {
    std::uint64_t first = 1, count = 100000;
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        char* end = nullptr;
        const std::uint64_t value = i + 1 < argc ? std::strtoull(argv[i + 1], &end, 10) : 0;
        if (end == nullptr || *end != '\0' || (option != "--count" && option != "--first" && option != "--seed")) {
            std::fprintf(stderr, "usage: %s [--count N] [--first SEED] [--seed SEED]\n", argv[0]);
            return 2;
        }
        (option == "--count" ? count : first) = value;
        if (option == "--seed") count = 1;
    }
    std::uint64_t failed = 0;
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        if (count == 1) std::printf("%s\n", describe(seed).c_str());
        const std::string fault = run(seed);
        if (!fault.empty()) std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed), fault.c_str());
        failed += fault.empty() ? 0 : 1;
        if (seed % 100000 == 0) std::fprintf(stderr, "%llu\n", static_cast<unsigned long long>(seed));
    }
    std::printf("%llu of %llu cases failed\n", static_cast<unsigned long long>(failed),
                static_cast<unsigned long long>(count));
    return failed == 0 ? 0 : 1;
}

}  // namespace qx::test
