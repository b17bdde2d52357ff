// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/RenderStages.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

#include "pictures/Picture.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {

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
