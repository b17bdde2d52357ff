// SPDX-License-Identifier: Apache-2.0
// The basic suite of a host that has no broker: it finds no other suite.
#include <cstring>

#include "platform/TK_Memory.h"
#include "platform/TK_Suites.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

constexpr int kNotFound = 3;

int Acquire(const char*, int, const void** suite) {
    *suite = nullptr;
    return kNotFound;
}
int Release(const char*, int) { return 0; }
int AreEqual(const char* one, const char* other) { return std::strcmp(one, other) == 0 ? 1 : 0; }
int Allocate(std::size_t bytes, void** block) {
    *block = nullptr;
    return TK_ResizePtr(bytes, block);
}
int Free(void* block) {
    TK_FreePtr(block);
    return 0;
}
int Reallocate(void* block, std::size_t bytes, void** resized) {
    const int code = TK_ResizePtr(bytes, &block);
    *resized = code == 0 ? block : nullptr;
    return code;
}
int Undefined() { return kNotFound; }

constexpr QSBasicSuite kFindsNothing{Acquire, Release, AreEqual, Allocate, Free, Reallocate, Undefined};

const QSBasicSuite* basic_suite = &kFindsNothing;
int basic_suite_code = 0;

}  // namespace

void SetBasicSuite(const QSBasicSuite* suite, int code) {
    basic_suite = suite == nullptr ? &kFindsNothing : suite;
    basic_suite_code = code;
}

}  // namespace standalone

int TK_QS_GetQSBasicSuite(const QSBasicSuite** suite) {
    *suite = standalone::basic_suite_code == 0 ? standalone::basic_suite : nullptr;
    return standalone::basic_suite_code;
}
