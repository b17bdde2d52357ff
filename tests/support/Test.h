// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What every test begins with: everything exported, worlds and pixels, the host's switches, refusals, and the standard
/// headers that most tests use.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <random>
#include <ranges>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tests/support/Refusals.h"
#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

namespace qx::test {

/// A table of cases, whose columns a comment names.
template <class... Columns> using Cases = std::vector<std::tuple<Columns...>>;
using Text = const char*;

/// The seeds of a random run, whose cases they remake: from 1 on, or as QX_SEEDS=FIRST-LAST in the environment asks,
/// where FIRST alone is one case.
inline auto seeds(std::uint64_t count) {
    unsigned long long first = 1, last = count;
    const char* wanted = std::getenv("QX_SEEDS");
    if (wanted != nullptr && std::sscanf(wanted, "%llu-%llu", &first, &last) == 1) last = first;
    return std::views::iota(first, last + 1);
}

/// A test at every depth, with the library born.
template <class Pixel, int Bands, standalone::ProcessorLevel level = standalone::ProcessorLevel::widest>
class BornAtDepth : public testing::Test {
    Born born_{Bands, level};
};

}  // namespace qx::test
