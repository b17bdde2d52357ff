// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/Judge.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace failures {
namespace {

/// The lines of a stack in the report, from the innermost on.
Words stack(const std::string& report, const std::string& headline) {
    Words frames;
    std::istringstream lines(report.substr(std::min(report.find(headline), report.size())));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && line[0] != '=')
        frames.push_back(line.substr(line.rfind('/', line.find('(')) + 1));
    return frames;
}

bool begins_with_one_of(const std::string& text, const Words& beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(), [&](const auto& b) { return text.rfind(b, 0) == 0; });
}

/// Modules whose frames tell nothing of the fault: they raise what others have caused.
bool is_means(const std::string& frame) {
    return begins_with_one_of(frame, {"libqx_fail", "libc.so", "libstdc++", "libgcc_s", "ld-linux"});
}
bool is_ours(const std::string& frame) { return begins_with_one_of(frame, {"qx(", "libQX", "libqxmovie"}); }

/// "library(function)", or with the place in the library where the function has no name for others.
std::string named(const std::string& frame) {
    const std::size_t open = frame.find('('), plus = frame.find('+', open);
    if (plus == std::string::npos || plus == open + 1) return frame.substr(0, frame.find(')') + 1);
    char* name = abi::__cxa_demangle(frame.substr(open + 1, plus - open - 1).c_str(), nullptr, nullptr, nullptr);
    const std::string text = name == nullptr ? frame.substr(open + 1, plus - open - 1) : name;
    std::free(name);
    return frame.substr(0, open + 1) + text.substr(0, text.find('(')) + ")";
}

/// The three innermost frames that tell something.
std::string place(const Words& frames) {
    std::string words;
    int told = 0;
    for (const std::string& frame : frames) {
        if (is_means(frame) || told == 3) continue;
        words += (told++ == 0 ? "" : " < ") + named(frame);
    }
    return words;
}

bool is_whole(const Outcome& outcome, const Outcome& clean) {
    return std::all_of(outcome.files.begin(), outcome.files.end(), [&](const auto& file) {
        const auto same = clean.files.find(file.first);
        return same != clean.files.end() && same->second == file.second;
    });
}

/// A run of several files leaves those that were whole before the failure.
bool is_refusal(const Outcome& outcome, const Outcome& clean) {
    const bool one_line = outcome.said.rfind("qx: ", 0) == 0 && outcome.said.find('\n') == outcome.said.size() - 1;
    const bool reason = outcome.said.find("memory") != std::string::npos;  // and not that a file is damaged
    return outcome.status == 1 && one_line && reason && is_whole(outcome, clean) &&
           outcome.files.size() < clean.files.size();
}

}  // namespace

Judgement judge(const Outcome& outcome, const Outcome& clean) {
    const bool same = outcome.status == 0 && outcome.said == clean.said && outcome.files == clean.files;
    if (outcome.report.empty() && same) return {Verdict::untouched, ""};
    if (same) return {Verdict::ok, ""};
    if (is_refusal(outcome, clean)) return {Verdict::refused, ""};

    std::string reason = outcome.hung ? "hangs" : "status " + std::to_string(outcome.status);
    for (const auto& [name, bytes] : outcome.files) {
        const auto expected = clean.files.find(name);
        if (expected == clean.files.end()) reason += ", leaves " + name.substr(0, 4);
        if (expected != clean.files.end() && expected->second != bytes) reason += ", " + name + " is wrong";
    }
    if (!outcome.said.empty()) reason += ", says " + outcome.said.substr(0, outcome.said.find('\n'));
    if (outcome.report.rfind("= failed before main", 0) == 0) return {Verdict::foreign, "before main"};
    const Words crash = stack(outcome.report, "= crashed");
    const auto fault = std::find_if_not(crash.begin(), crash.end(), is_means);
    const bool foreign = fault != crash.end() && !is_ours(*fault) && !outcome.hung;
    if (foreign) return {Verdict::foreign, reason + ": " + place(crash)};
    return {Verdict::ours, reason + ": " + (crash.empty() ? "" : place(crash) + ", after a failure in ") +
                               place(stack(outcome.report, "= failed"))};
}

}  // namespace failures
