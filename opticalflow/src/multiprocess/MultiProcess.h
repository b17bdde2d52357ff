// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "opticalflow/src/multiprocess/InterruptState.h"

struct QSBasicSuite;

namespace solvan_of {

/// How many parts a stage has: what the host's executor answers, asked once.
int processorCount();
/// The count is asked for again.
void forgetProcessorCount();

inline constexpr int kMostArguments = 6;
/// Takes so many arguments, and behind them the processor's index.
using PartFunction = void (*)();

/// Runs the function once for each processor and waits. A worker that runs out of memory stops `state` with code 4.
/// @return true
bool runOnAllProcessors(InterruptState& state, PartFunction function, int argumentCount,
                        const std::intptr_t* arguments);

/// Rows of one part of a stage: [begin, end), counted from 0.
struct PartRows {
    std::int32_t begin, end;
};
/// Each part has the same number of rows, rounded up; what is left for the last ones may be less or nothing. A negative
/// part, or a count below 1, means all rows.
PartRows rows_of_part(std::int32_t rows, int part, int parts);

/// Runs `stage.*member(part)` for all parts.
template <class Stage, void (Stage::*member)(int)> void run_parts(InterruptState& state, Stage& stage) {
    const auto enter = +[](std::intptr_t object, int part) { (reinterpret_cast<Stage*>(object)->*member)(part); };
    const auto argument = reinterpret_cast<std::intptr_t>(&stage);
    runOnAllProcessors(state, reinterpret_cast<PartFunction>(enter), 1, &argument);
}

/// What hosts that iterate through a suite are asked by; kept from call to call.
void keepBasicSuite(const QSBasicSuite* suite);
/// Gets the suite "QX Iterate8 Suite", version 1, or reports once and throws the code.
struct QX_Iterate8Suite1;
template <class Suite> struct MissingSuiteError { void operator()(int code) const; };
const QX_Iterate8Suite1* iterateSuite();

/// Forgets which messages were shown, so that each is shown once more.
void forgetShownMessages();

}  // namespace solvan_of
