// SPDX-License-Identifier: Apache-2.0
// The log: lines for whoever asked for them.
#include <mutex>

#include "platform/ALOG.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {
std::recursive_mutex mutex;
LogSink sink;
}  // namespace

void SetLogSink(const LogSink& new_sink) {
    const std::lock_guard lock(mutex);
    sink = new_sink;
}

}  // namespace standalone

void ALOG_Log(int level, const char* module, const char* section, const char* text) {
    const std::lock_guard lock(standalone::mutex);
    if (standalone::sink) standalone::sink(level, std::string(module) + "/" + section + ": " + text);
}
