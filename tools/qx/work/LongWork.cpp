// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/LongWork.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

#include "pictures/Picture.h"
#include "scene/Faults.h"
#include "tools/qx/Library.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {

std::string fault_of(const std::function<void()>& work) {
    try {
        work();
    } catch (const pictures::Failure& fault) {
        return fault.what();
    } catch (const scene::WorkFault& fault) {
        return fault.subject() + ": " + reason_of(fault.code());
    }
    return "";
}

void tell_failures(const std::vector<int>& failures, int frames) {
    if (failures.empty()) return;
    std::string list;
    for (const int frame : failures) list += (list.empty() ? "" : ",") + std::to_string(frame);
    say_error(std::to_string(failures.size()) + " of " + std::to_string(frames) + " frames failed: " + list);
    throw EndedWith{kSomeFailed};
}

void tell_stats(const FrameProgress& progress, const Stages& stages) {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    const double reading = pictures::seconds_of_reading(), making = double(stages.making) / 1e9 - reading;
    char words[256];
    std::snprintf(words, sizeof words,
                  "%d frames in %.2f s; threads spent %.2f s reading, %.2f s making, %.2f s writing; %.2f s of "
                  "processors; at most %.0f MB",
                  progress.made(), progress.seconds(), reading, std::max(making, 0.0), double(stages.writing) / 1e9,
                  seconds(used.ru_utime) + seconds(used.ru_stime), double(used.ru_maxrss) / 1024);
    say_error(words);
}

}  // namespace qx::tool
