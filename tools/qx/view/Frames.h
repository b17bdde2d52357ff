// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "pictures/Watch.h"
#include "scene/Clip.h"

namespace qx::tool {

/// What makes a frame another one.
struct FrameKey {
    int source = 0, number = 0;
    std::string stamp;  ///< of its files
    bool operator==(const FrameKey&) const = default;
};

/// A frame that is shown: its pixels as they were worked, and its file.
struct ShownFrame {
    scene::SharedPicture picture;
    std::string png;
};
struct KeptFrame : ShownFrame {
    std::uint64_t id = 0;  ///< never given twice
    FrameKey key;
};
using SharedFrame = std::shared_ptr<const KeptFrame>;

/// Thrown to who asked for a frame that nobody waits for any more, since its side shows another one.
struct Replaced {};

/// Makes frames one at a time on a thread of its own, and keeps those that were asked for last. For any number of
/// threads.
class Frames {
public:
    using Make = std::function<ShownFrame(pictures::Watch& watch)>;
    static constexpr int kSides = 2;

    /// @param most_bytes  of frames that are kept; one for each side is in any case
    explicit Frames(std::uint64_t most_bytes);
    ~Frames();
    Frames(const Frames&) = delete;
    Frames& operator=(const Frames&) = delete;

    /// Waits for the frame. A side has one that waits to be made: the next one that it asks for takes its place, and
    /// stops a frame at work that is the same but for its files. Throws Replaced, pictures::Stopped once this is to
    /// end, or what `make` throws.
    SharedFrame get(int side, const FrameKey& key, const Make& make);
    /// Null for a frame that is not kept.
    SharedFrame find(std::uint64_t id);
    /// Nobody waits any longer, and nothing is made.
    void stop();

private:
    struct Job {
        Job(int side_, FrameKey key_, Make make_) : side(side_), key(std::move(key_)), make(std::move(make_)) {}
        const int side;
        const FrameKey key;
        const Make make;
        std::uint64_t turn = 0;
        std::atomic<bool> replaced{false};
        bool ended = false;
        SharedFrame frame;
        std::exception_ptr fault;
    };
    using SharedJob = std::shared_ptr<Job>;
    class JobWatch;

    SharedJob job_of(int side, const FrameKey& key, const Make& make);
    SharedJob* next();
    void run();
    void work_on(Job& job) noexcept;
    void keep(const SharedFrame& frame);
    template <class Is> SharedFrame kept(const Is& is);

    const std::uint64_t most_bytes_;
    std::mutex mutex_;  // of all but `stopping_`
    std::condition_variable changed_;
    std::array<SharedJob, kSides> waiting_;
    SharedJob current_;
    std::list<SharedFrame> kept_;  ///< the last used first
    std::uint64_t frames_ = 0, turns_ = 0;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

}  // namespace qx::tool
