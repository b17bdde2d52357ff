// SPDX-License-Identifier: Apache-2.0
// Reports go to the sink, or as a line to standard error, unless the thread is in a quiet section.
#include <atomic>
#include <cstdio>
#include <mutex>
#include <new>

#include "platform/TK_Report.h"
#include "platform/TK_Strings.h"
#include "platform/standalone/SH_Internal.h"
#include "platform/standalone/Standalone.h"
#include "platform/tesselcore_Debug.h"

namespace standalone {
namespace {

thread_local int quiet_depth = 0;
thread_local char detail[160] = "";
std::atomic<bool> debugger_attached{false};
std::atomic<int> quiet_end_code{0};
std::recursive_mutex mutex;  // a sink may itself run into a report
ReportSink sink;

void Deliver(ReportKind kind, int site, int severity, const std::string& text) {
    const struct Forget {
        ~Forget() { detail[0] = '\0'; }
    } when_it_is_told;
    const std::lock_guard lock(mutex);
    if (sink) return sink({kind, site, severity, text});
    const bool bare = detail[0] == '\0';
    std::fprintf(stderr, "QX: %s%s%s (site %x)\n", text.c_str(), bare ? "" : ": ", detail, static_cast<unsigned>(site));
}

}  // namespace

void SetReportSink(const ReportSink& new_sink) {
    const std::lock_guard lock(mutex);
    sink = new_sink;
}

std::string ReportDetail() { return detail; }

void SetDebuggerAttached(bool attached) { debugger_attached = attached; }
void SetQuietEndCode(int code) { quiet_end_code.store(code, std::memory_order_relaxed); }

}  // namespace standalone

void TK_ReportDetail(const char* words) {
    if (standalone::quiet_depth > 0) return;
    std::snprintf(standalone::detail, sizeof standalone::detail, "%s", words);
}

void TK_ReportError(int site, int severity, const std::wstring& text) {
    if (standalone::quiet_depth > 0) return;
    standalone::Deliver(standalone::ReportKind::error, site, severity, standalone::ToUtf8(text));
}

void TKp_ReportErrString(int site, int severity, const char* text) {
    if (standalone::quiet_depth > 0) return;
    standalone::Deliver(standalone::ReportKind::error_string, site, severity, text == nullptr ? "" : TK_ZString(text));
}

void TK_ReportFailedVerification(int site, int, int, const char* message) {
    if (standalone::quiet_depth > 0) return;
    standalone::Deliver(standalone::ReportKind::failed_verification, site, 0, message == nullptr ? "" : message);
}

int TK_TranslateAndReportException(const std::exception& fault) {
    const bool no_memory = dynamic_cast<const std::bad_alloc*>(&fault) != nullptr;
    TKp_ReportErrString(0, 8, no_memory ? "out of memory" : fault.what());
    return no_memory ? 4 : 3;
}

void TK_StartQuietErrorsOnCurrentThread() { ++standalone::quiet_depth; }

int TK_EndQuietErrorsOnCurrentThread() {
    if (standalone::quiet_depth > 0) --standalone::quiet_depth;
    return standalone::quiet_end_code.load(std::memory_order_relaxed);
}

namespace tesselcore::debug {

bool BreakAfterAssertDialog(const char* condition, const char* function, const char* file, int line,
                            const char* message) {
    if (standalone::quiet_depth > 0) return false;
    char text[512];
    std::snprintf(text, sizeof text, "%s (%s, in %s, %s:%d)", message, condition, function, file, line);
    try {
        standalone::Deliver(standalone::ReportKind::assertion, 0, 0, text);
    } catch (const std::bad_alloc&) {  // memory may be what the assertion is about
        std::fprintf(stderr, "QX: %s\n", text);
    }
    return false;
}

bool IsDebuggerAttached() { return standalone::debugger_attached; }

}  // namespace tesselcore::debug
