// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Library.h"

#include <mutex>
#include <new>

#include "QX/indep/QX_Errors.h"
#include "QX/library/QX_Library.h"
#include "QX/suites/QX_Suites.h"
#include "QX/world/QX_GPU.h"
#include "host/LastReport.h"
#include "platform/standalone/Host.h"
#include "scene/Faults.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {

std::mutex report_mutex;
std::string report_text;

}  // namespace

Library::Library() {
    standalone::SetReportSink([](const standalone::Report& report) {
        const std::lock_guard lock(report_mutex);
        const std::string detail = standalone::ReportDetail();
        report_text = detail.empty() ? report.text : report.text + ": " + detail;
        host::keep_report(report_text);
    });
    int code = QX_Birth();
    if (code == 0) code = QX_InstallSuites();
    if (code == kQX_OutOfMemory) throw std::bad_alloc();
    if (code != 0) throw WorkFailed("the library does not start (code " + std::to_string(code) + ")");
    vn::qx::GPU::SetRendererID(vn::qx::GPU::kSoftwareRenderer);
}

Library::~Library() { QX_Death(); }

std::string reason_of(int code) {
    const std::lock_guard lock(report_mutex);
    const bool quiet =
        report_text.empty() && code == kQX_OutOfMemory;  // some routines are short of it without a report
    return (quiet ? "out of memory" : report_text) + " (code " + std::to_string(code) + ")";
}

void tell_fault(const std::function<void(std::string_view)>& say) {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        say("out of memory");
    } catch (const scene::WorkFault& fault) {
        say(fault.subject() + ": " + reason_of(fault.code()));
    } catch (const std::exception& fault) {
        say(fault.what());
    } catch (int code) {
        say("failed: " + reason_of(code));
    }
}

}  // namespace qx::tool
