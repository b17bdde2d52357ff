// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>
#include <utility>

#include "platform/Platform_Export.h"

/// Reports show a fault to the user or the log and return; codes are the caller's business.
/// `site` has the library's number in its upper 16 bits and a place in it in the lower. Any thread.
PLATFORM_EXPORT void TK_ReportError(int site, int severity, const std::wstring& text);
PLATFORM_EXPORT void TKp_ReportErrString(int site, int severity, const char* text);
PLATFORM_EXPORT void TK_ReportFailedVerification(int site, int line, int flags, const char* message);

/// Tells which argument the next report of this thread is about, in plain words (UTF-8), which are copied. A host may
/// show them beside the report's text, which stands as it is.
PLATFORM_EXPORT void TK_ReportDetail(const char* words);

/// Reports what a library threw and gives the code for it: 4 for a failed allocation, else 3.
PLATFORM_EXPORT int TK_TranslateAndReportException(const std::exception& fault);

/// While a section is open on a thread, reports made on that thread are kept back. Sections nest. The end of one
/// gives 0, or a code of the host's for what it kept back.
PLATFORM_EXPORT void TK_StartQuietErrorsOnCurrentThread();
PLATFORM_EXPORT int TK_EndQuietErrorsOnCurrentThread();

/// Opens a quiet section for a scope, and closes it also when the scope ends with an exception.
class TK_QuietErrors {
public:
    TK_QuietErrors() { TK_StartQuietErrorsOnCurrentThread(); }
    ~TK_QuietErrors() { end(); }
    /// Closes it early. @return what the end of the section gave; 0 for one that is closed
    int end() { return std::exchange(open_, false) ? TK_EndQuietErrorsOnCurrentThread() : 0; }
    TK_QuietErrors(const TK_QuietErrors&) = delete;
    TK_QuietErrors& operator=(const TK_QuietErrors&) = delete;

private:
    bool open_ = true;
};
