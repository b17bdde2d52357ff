// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// What the files of the stand-alone host share among themselves.
namespace standalone {

struct MemoryCounts;

std::string ToUtf8(const std::wstring& text);
/// Bytes that are no UTF-8 become U+FFFD.
std::wstring FromUtf8(const char* text);

/// Counts an allocation that is about to be made. @return false when a test wants this one to fail
bool AllocationMayGoOn();
void CountBlock(int difference);
void RecycledCounts(MemoryCounts* counts);  ///< fills the fields of the recycled pool

/// Runs body(context, i) for each i in [0, count) on the thread pool. `body` must not throw.
void RunOnPool(int limit, int count, void (*body)(void* context, int index), void* context);
int CoreCount();

}  // namespace standalone
