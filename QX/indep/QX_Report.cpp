// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Report.h"

#include <cstdarg>
#include <cstdio>
#include <iterator>

#include "platform/TK_Report.h"

namespace {

constexpr const char* keys[] = {
    "$$$/VN/QX/LStr/0000=invalid callback selector",
    "$$$/VN/QX/LStr/0001=invalid parameter",
    "$$$/VN/QX/LStr/0002=effects modules should only dispose worlds they have allocated",
    "$$$/VN/QX/LStr/0003=image plane buffer",
    "$$$/VN/QX/LStr/0004=bad parameter passed to effect callback",
    "$$$/VN/QX/LStr/0005=problem opening plug-in acceleration module.",
    "$$$/VN/QX/LStr/0006=unimplemented blending mode.",
    "$$$/VN/QX/LStr/0007=noise table.",
    "$$$/VN/QX/LStr/0008=Unable to guess alpha channel.",
    "$$$/VN/QX/LStr/0009=Obsolete routine",
    "$$$/VN/QX/LStr/0010=memory for blurring",
    "$$$/VN/QX/LStr/0011=memory for mask buffer",
    "$$$/VN/QX/LStr/0012=damaged mask buffer",
    "$$$/VN/QX/LStr/0013=can#{rsquo}t unlock QX Mask Buffer",
    "$$$/VN/QX/LStr/0014=gaussian weight array",
    "$$$/VN/QX/LStr/0015=blending scratch buffer",
    "$$$/VN/QX/LStr/0016=can#{rsquo}t copy different channel worlds",
    "$$$/VN/QX/LStr/0017=out of memory for channel chunk",
    "$$$/VN/QX/LStr/0018=image buffer",
    "$$$/VN/QX/LStr/0019=effect plug-in passed invalid world to get_platform_refs",
};
static_assert(std::size(keys) == static_cast<int>(qx::Text::platform_refs) + 1);

}  // namespace

constinit const TK_ZRef QX_G_zref{static_cast<int>(std::size(keys)), keys};

namespace qx {

const char* text_of(Text text) { return TK_ZLookupLStrCache(QX_G_zref, static_cast<int>(text)); }

void report_text(Place place, Text text) {
    if (const char* words = text_of(text)) TKp_ReportErrString(site(place), kReportSeverity, words);
}

int report_bad_parameter(Place place) {
    report_text(place, Text::bad_parameter);
    return kQX_FailedVerification;
}

int report_invalid_parameter(Place place) {
    report_text(place, Text::invalid_parameter);
    return kQX_BadParameter;
}

int report_failed_verification(Place place, const char* message) {
    TK_ReportFailedVerification(site(place), static_cast<int>(place), 0, message);
    return kQX_FailedVerification;
}

void tell_detail(const char* format, ...) {
    char words[128];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(words, sizeof words, format, arguments);
    va_end(arguments);
    TK_ReportDetail(words);
}

int must_have_depth(int destination, int depth, const char* argument, Place place, const char* message) {
    if (depth == destination) return kQX_NoError;
    tell_detail("%s depth %d, destination %d", argument, depth, destination);
    return report_failed_verification(place, message);
}

int report_gpu_world(Place place) {
    return report_failed_verification(place, "gpu effect world is not supported yet.");
}

}  // namespace qx
