// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/Host.h"
#include "platform/standalone/Host_C.h"

void QXHost_SetThreads(int threads) { standalone::SetPoolLimit(threads); }

void QXHost_SetBands(int bands) { standalone::SetBandCount(bands); }

void QXHost_SetReports(void (*report)(void* refcon, const char* text), void* refcon) {
    if (report == nullptr) return standalone::SetReportSink({});
    standalone::SetReportSink([=](const standalone::Report& told) {
        const std::string detail = standalone::ReportDetail();
        report(refcon, (detail.empty() ? told.text : told.text + ": " + detail).c_str());
    });
}
