// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/Platform_Export.h"

/// What a program that embeds the library sets of the stand-alone host. Set it while nothing runs, and the band count
/// before QX_Birth.
namespace standalone {

/// Bands of parallel work, 1 and up (32 from the start, the same on every machine; results that depend
/// on the band count then agree between machines). 1 leaves the plain single-thread routines in place.
PLATFORM_EXPORT void SetBandCount(int bands);
PLATFORM_EXPORT int BandCount();
/// Threads of the pool, the caller's included; 0 is as many as there are cores. Never changes a result.
PLATFORM_EXPORT void SetPoolLimit(int threads);
PLATFORM_EXPORT int PoolLimit();
PLATFORM_EXPORT int PoolThreads();  ///< the limit, or the number of cores where none is set

enum class ReportKind { error, error_string, failed_verification, assertion };
/// A fault that a routine tells besides its code.
struct Report {
    ReportKind kind;
    int site;  ///< the library's number in the upper 16 bits, a place in it in the lower
    int severity;
    std::string text;  ///< UTF-8
};
/// Receives every report that no quiet section holds back, on the thread that made it, one at a time.
using ReportSink = std::function<void(const Report&)>;
PLATFORM_EXPORT void SetReportSink(const ReportSink& sink);  ///< An empty one: standard error.
/// Within a sink: which argument the report is about, such as "mask depth 8, destination 16"; empty where that is not
/// told.
PLATFORM_EXPORT std::string ReportDetail();
/// Receives lines of the log; levels rise with detail.
using LogSink = std::function<void(int level, const std::string& line)>;
PLATFORM_EXPORT void SetLogSink(const LogSink& sink);  ///< An empty one: nowhere.

/// A suite as the broker of suites has it.
struct RegisteredSuite {
    std::string name;
    int version, internal_version, entries;
    const void* table;
    std::int64_t out;  ///< how often it was acquired and not released yet
};
/// What the broker has, in the order of registration.
PLATFORM_EXPORT std::vector<RegisteredSuite> RegisteredSuites();

}  // namespace standalone
