// SPDX-License-Identifier: Apache-2.0
// Times of scopes, of which there are none until a volume is set.
#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>

#include "platform/standalone/Standalone.h"
#include "platform/tesselcore_Profiling.h"

namespace tesselcore::debug {

class ProfileDataLog {
public:
    explicit ProfileDataLog(std::string name) : name(std::move(name)) {}
    const std::string name;
    std::atomic<std::int64_t> scopes{0}, nanoseconds{0};
};

namespace {

std::atomic<int> volume{0};
std::mutex logs_lock;

std::deque<ProfileDataLog>& logs() {
    static auto* const all = new std::deque<ProfileDataLog>;  // scopes may end while the program does
    return *all;
}

std::int64_t now() { return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1); }

}  // namespace

bool CodeProfilerManager::IsConditionalProfiling() { return volume.load(std::memory_order_relaxed) > 0; }
int CodeProfilerManager::GetProfilingVolume() { return volume.load(std::memory_order_relaxed); }

ProfileDataLog* CodeProfilerManager::CreateNewProfileDataLog(const std::string& name, int) {
    const std::lock_guard lock(logs_lock);
    return &logs().emplace_back(name);
}

CodeProfiler::CodeProfiler(ProfileDataLog* log) : log_(log) {
    if (log_ != nullptr) start_ = now();
}
CodeProfiler::~CodeProfiler() {
    if (log_ == nullptr) return;
    log_->nanoseconds += now() - start_;
    ++log_->scopes;
}

}  // namespace tesselcore::debug

namespace standalone {

void SetProfilingVolume(int volume) { tesselcore::debug::volume = volume; }

std::vector<ProfiledScope> ProfiledScopes() {
    const std::lock_guard lock(tesselcore::debug::logs_lock);
    std::vector<ProfiledScope> all;
    for (const auto& log : tesselcore::debug::logs()) all.push_back({log.name, log.scopes, log.nanoseconds});
    return all;
}

}  // namespace standalone
