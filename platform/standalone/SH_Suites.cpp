// SPDX-License-Identifier: Apache-2.0
// The broker of suites: tables by name and version, and the basic suite that finds them.
#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>

#include "platform/TK_Memory.h"
#include "platform/TK_Report.h"
#include "platform/TK_Suites.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

constexpr int kRefused = 3, kBadParameter = 516;

std::mutex mutex;
RegistrationGate gate;

std::vector<RegisteredSuite>& Suites() {
    static std::vector<RegisteredSuite> suites;
    return suites;
}

/// Null for one that nobody has registered. Under the lock.
RegisteredSuite* Find(const char* name, int version) {
    if (name == nullptr) return nullptr;
    const auto is_it = [&](const RegisteredSuite& one) { return one.version == version && one.name == name; };
    const auto found = std::find_if(Suites().begin(), Suites().end(), is_it);
    return found == Suites().end() ? nullptr : &*found;
}

int Acquire(const char* name, int version, const void** suite) {
    if (suite == nullptr) return kBadParameter;
    const std::lock_guard lock(mutex);
    RegisteredSuite* const found = Find(name, version);
    *suite = found != nullptr ? found->table : nullptr;
    if (found == nullptr) return kRefused;
    ++found->out;
    return 0;
}

int Release(const char* name, int version) {
    const std::lock_guard lock(mutex);
    RegisteredSuite* const found = Find(name, version);
    if (found == nullptr || found->out == 0) return kRefused;
    --found->out;
    return 0;
}

int AreEqual(const char* one, const char* other) {
    return one != nullptr && other != nullptr && std::strcmp(one, other) == 0 ? 1 : 0;
}

int Reallocate(void* block, std::size_t bytes, void** resized) {
    if (resized == nullptr) return kBadParameter;
    const int code = TK_ResizePtr(bytes, &block);
    *resized = code == 0 ? block : nullptr;
    return code;
}

int Allocate(std::size_t bytes, void** block) { return Reallocate(nullptr, bytes, block); }

int Free(void* block) {
    TK_FreePtr(block);
    return 0;
}

int Undefined() { return kRefused; }

constexpr QSBasicSuite kBrokersOwn{Acquire, Release, AreEqual, Allocate, Free, Reallocate, Undefined};

const QSBasicSuite* basic_suite = &kBrokersOwn;
int basic_suite_code = 0;

int Register(const RegisteredSuite& suite) {
    const std::lock_guard lock(mutex);
    const RegisteredSuite* const known = Find(suite.name.c_str(), suite.version);
    if (known == nullptr) {
        Suites().push_back(suite);
        return 0;
    }
    const bool same = known->table == suite.table && known->entries == suite.entries &&
                      known->internal_version == suite.internal_version;
    return same ? 0 : kRefused;
}

}  // namespace

void SetBasicSuite(const QSBasicSuite* suite, int code) {
    basic_suite = suite == nullptr ? &kBrokersOwn : suite;
    basic_suite_code = code;
}

std::vector<RegisteredSuite> RegisteredSuites() {
    const std::lock_guard lock(mutex);
    return Suites();
}

std::int64_t SuitesOut() {
    std::int64_t out = 0;
    for (const RegisteredSuite& suite : RegisteredSuites()) out += suite.out;
    return out;
}

void ForgetSuites() {
    const std::lock_guard lock(mutex);
    Suites().clear();
}

void SetRegistrationGate(const RegistrationGate& asked) { gate = asked; }

}  // namespace standalone

int TK_QS_GetQSBasicSuite(const QSBasicSuite** suite) {
    *suite = standalone::basic_suite_code == 0 ? standalone::basic_suite : nullptr;
    return standalone::basic_suite_code;
}

int TK_QS_AddQSSuite(void*, int, const char* name, int version, int internal_version, int entries, const void* table) {
    if (standalone::gate) {
        if (const int code = standalone::gate(name, version)) return code;
    }
    if (name == nullptr || table == nullptr || entries < 1) return standalone::kBadParameter;
    try {
        return standalone::Register({name, version, internal_version, entries, table, 0});
    } catch (const std::exception& fault) {
        return TK_TranslateAndReportException(fault);
    }
}
