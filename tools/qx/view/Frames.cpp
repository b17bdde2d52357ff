// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Frames.h"

#include <algorithm>

#include "tools/qx/terminal/Interrupt.h"

namespace qx::tool {
namespace {

std::uint64_t bytes_of(const ShownFrame& frame) {
    const auto bytes = [](const QX_World& world) {
        return static_cast<std::uint64_t>(world.width) * static_cast<std::uint64_t>(world.height) *
               static_cast<std::uint64_t>(world.Depth() / 2);
    };
    const pictures::Picture& picture = *frame.picture;
    return frame.png.size() + bytes(*picture.world) + (picture.carried ? bytes(*picture.carried) : 0);
}

}  // namespace

class Frames::JobWatch final : public SignalWatch {
public:
    JobWatch(const Job& job, const std::atomic<bool>& stopping) : job_(job), stopping_(stopping) {}
    bool stops() const noexcept override { return job_.replaced || stopping_ || SignalWatch::stops(); }

private:
    const Job& job_;
    const std::atomic<bool>& stopping_;
};

Frames::Frames(std::uint64_t most_bytes) : most_bytes_(most_bytes), thread_([this] { run(); }) {}

Frames::~Frames() {
    stop();
    thread_.join();
}

void Frames::stop() {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
}

template <class Is> SharedFrame Frames::kept(const Is& is) {
    const auto found = std::find_if(kept_.begin(), kept_.end(), is);
    if (found == kept_.end()) return nullptr;
    kept_.splice(kept_.begin(), kept_, found);
    return kept_.front();
}

SharedFrame Frames::find(std::uint64_t id) {
    const std::lock_guard lock(mutex_);
    return kept([&](const SharedFrame& frame) { return frame->id == id; });
}

SharedFrame Frames::get(int side, const FrameKey& key, const Make& make) {
    std::unique_lock lock(mutex_);
    if (stopping_) throw pictures::Stopped{};
    if (const auto frame = kept([&](const SharedFrame& f) { return f->key == key; })) return frame;
    const SharedJob job = job_of(side, key, make);
    changed_.wait(lock, [&] { return job->ended || stopping_; });
    if (!job->ended) throw pictures::Stopped{};
    if (job->fault) std::rethrow_exception(job->fault);
    return job->frame;
}

/// One that somebody else waits for is shared.
Frames::SharedJob Frames::job_of(int side, const FrameKey& key, const Make& make) {
    for (const SharedJob& job : {current_, waiting_[0], waiting_[1]}) {
        if (job && job->key == key && !job->replaced) return job;
    }
    const bool is_outdated = current_ && current_->key.source == key.source && current_->key.number == key.number;
    if (is_outdated) current_->replaced = true;
    SharedJob& place = waiting_[static_cast<std::size_t>(side)];
    auto job = std::make_shared<Job>(side, key, make);
    job->turn = ++turns_;
    if (place) {
        place->fault = std::make_exception_ptr(Replaced{});
        place->ended = true;
    }
    place = std::move(job);
    changed_.notify_all();
    return place;
}

/// The one that has waited longest; null where none does.
Frames::SharedJob* Frames::next() {
    SharedJob* first = nullptr;
    for (SharedJob& job : waiting_) {
        if (job && (first == nullptr || job->turn < (*first)->turn)) first = &job;
    }
    return first;
}

void Frames::run() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        SharedJob* const waiting = next();
        if (waiting == nullptr) {
            changed_.wait(lock);
            continue;
        }
        current_ = std::exchange(*waiting, nullptr);
        lock.unlock();
        work_on(*current_);
        lock.lock();
        if (current_->frame) keep(current_->frame);
        current_->ended = true;
        current_.reset();
        changed_.notify_all();
    }
}

void Frames::work_on(Job& job) noexcept {
    try {
        JobWatch watch(job, stopping_);
        auto frame = std::make_shared<KeptFrame>();
        static_cast<ShownFrame&>(*frame) = job.make(watch);
        frame->key = job.key;
        frame->id = ++frames_;
        job.frame = std::move(frame);
    } catch (const pictures::Stopped&) {
        job.fault = job.replaced ? std::make_exception_ptr(Replaced{}) : std::current_exception();
    } catch (...) {
        job.fault = std::current_exception();
    }
}

void Frames::keep(const SharedFrame& frame) {
    try {
        kept_.push_front(frame);
    } catch (const std::bad_alloc&) {
        return;  // who waits has it all the same
    }
    std::uint64_t bytes = 0;
    std::size_t count = 0;
    const auto goes = [&](const SharedFrame& kept) {
        bytes += bytes_of(*kept);
        return ++count > kSides && bytes > most_bytes_;
    };
    kept_.erase(std::find_if(kept_.begin(), kept_.end(), goes), kept_.end());
}

}  // namespace qx::tool
