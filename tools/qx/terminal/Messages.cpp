// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Messages.h"

#include <cstdio>
#include <mutex>

#include "pictures/Failure.h"
#include "platform/standalone/Standalone.h"

namespace qx::tool {
namespace {

Talk level = Talk::normal;
std::mutex mutex;
std::string report_text;
bool line_shown = false;

void say(const std::string& words) {
    show_line("");
    std::fprintf(stderr, "qx: %s\n", pictures::one_line(words).c_str());
}

}  // namespace

void set_talk(Talk talk) { level = talk; }
Talk talk() { return level; }

void say_error(const std::string& words) { say(words); }
void say_note(const std::string& words) {
    if (level != Talk::quiet) say("note: " + words);
}
void say_detail(const std::string& words) {
    if (level == Talk::verbose) say(words);
}

void show_line(const std::string& words) {
    if (line_shown) std::fputs("\r\x1B[K", stderr);
    line_shown = !words.empty();
    if (!line_shown) return;
    std::fputs(words.c_str(), stderr);
    std::fflush(stderr);
}

void collect_reports() {
    standalone::SetReportSink([](const standalone::Report& report) {
        const std::lock_guard lock(mutex);
        report_text = report.text;
    });
}

std::string last_report() {
    const std::lock_guard lock(mutex);
    return report_text;
}

}  // namespace qx::tool
