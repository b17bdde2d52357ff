// SPDX-License-Identifier: Apache-2.0
// Frames of a view: which are made, which are kept, and who waits.
#include <chrono>
#include <future>
#include <thread>

#include "tests/tools/RunQx.h"
#include "tools/qx/view/Frames.h"

namespace {

using namespace qx::test;
using qx::tool::FrameKey;
using qx::tool::Frames;
using qx::tool::Replaced;
using qx::tool::SharedFrame;
using qx::tool::ShownFrame;

constexpr std::uint64_t kMuch = 1 << 30;
FrameKey key(int number, const std::string& stamp = "s") { return {0, number, stamp}; }

/// A frame of 10 x 10 at 8 bits: 400 bytes.
ShownFrame small_frame() {
    const auto clear = [](int, int) { return argb(0, 0, 0, 0); };
    return {std::make_shared<const qx::pictures::Picture>(picture<QX_Pixel8>(10, 10, true, clear)), ""};
}

/// Makes frames when it is told to, and counts them.
class Maker {
public:
    Frames::Make make(bool waits = false) {
        return [this, waits](qx::pictures::Watch& watch) {
            ++begun;
            while (waits && !open_) {
                watch.must_go_on();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            return small_frame();
        };
    }
    void open() { open_ = true; }
    void wait_for(int frames) const {
        while (begun < frames) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::atomic<int> begun{0};

private:
    std::atomic<bool> open_{false};
};

/// What becomes of a request on a thread of its own.
std::future<std::string> asked(Frames& frames, int side, const FrameKey& key, const Frames::Make& make) {
    return std::async(std::launch::async, [&frames, side, key, make]() -> std::string {
        try {
            return "frame " + std::to_string(frames.get(side, key, make)->key.number);
        } catch (const Replaced&) {
            return "replaced";
        } catch (const qx::pictures::Stopped&) {
            return "stopped";
        } catch (const std::exception& fault) {
            return fault.what();
        }
    });
}

TEST(ViewFrames, OneIsMadeOnceAndKept) {
    Frames frames(kMuch);
    Maker maker;
    const SharedFrame first = frames.get(0, key(1), maker.make());
    EXPECT_EQ(frames.get(1, key(1), maker.make()), first);
    EXPECT_EQ(frames.find(first->id), first);
    EXPECT_EQ(frames.find(first->id + 1), nullptr);
    EXPECT_NE(frames.get(0, key(1, "saved"), maker.make()), first);
    EXPECT_NE(frames.get(0, {1, 1, "s"}, maker.make()), first);
    EXPECT_EQ(maker.begun, 3);
}

TEST(ViewFrames, KeptOnesAreWithinTheirBytesAndTheLastUsed) {
    Frames frames(3 * 400);
    Maker maker;
    for (const int number : {1, 2, 3, 1, 4}) frames.get(0, key(number), maker.make());
    EXPECT_EQ(maker.begun, 4);
    for (const int number : {1, 3, 4}) frames.get(0, key(number), maker.make());
    EXPECT_EQ(maker.begun, 4);
    frames.get(0, key(2), maker.make());
    EXPECT_EQ(maker.begun, 5) << "was dropped";
}

TEST(ViewFrames, OneASideIsKeptHoweverLarge) {
    Frames frames(1);
    Maker maker;
    const auto a = frames.get(0, key(1), maker.make()), b = frames.get(1, key(2), maker.make());
    EXPECT_EQ(frames.find(a->id), a);
    EXPECT_EQ(frames.find(b->id), b);
    frames.get(0, key(3), maker.make());
    EXPECT_EQ(frames.find(a->id), nullptr);
}

TEST(ViewFrames, OneThatWaitsGivesWayToTheNextOfItsSideAlone) {
    Frames frames(kMuch);
    Maker maker;
    auto at_work = asked(frames, 0, key(1), maker.make(true));
    maker.wait_for(1);
    auto second = asked(frames, 0, key(2), maker.make());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the order of the two is the matter
    auto other_side = asked(frames, 1, key(9), maker.make());
    auto third = asked(frames, 0, key(3), maker.make());
    EXPECT_EQ(second.get(), "replaced");
    maker.open();
    EXPECT_EQ(at_work.get(), "frame 1") << "is not stopped: it will be wanted again";
    EXPECT_EQ(third.get(), "frame 3");
    EXPECT_EQ(other_side.get(), "frame 9");
    EXPECT_EQ(maker.begun, 3);
}

TEST(ViewFrames, OneAtWorkIsStoppedWhenItsFilesHaveBeenSaved) {
    Frames frames(kMuch);
    Maker old, saved;
    auto outdated = asked(frames, 0, key(1, "old"), old.make(true));
    old.wait_for(1);
    EXPECT_EQ(asked(frames, 0, key(1, "saved"), saved.make()).get(), "frame 1");
    EXPECT_EQ(outdated.get(), "replaced");
}

TEST(ViewFrames, WhoAsksForTheSameFrameWaitsForTheSameWork) {
    Frames frames(kMuch);
    Maker maker;
    auto first = asked(frames, 0, key(1), maker.make(true));
    maker.wait_for(1);
    auto second = asked(frames, 1, key(1), maker.make());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    maker.open();
    EXPECT_EQ(first.get() + second.get(), "frame 1frame 1");
    EXPECT_EQ(maker.begun, 1);
}

TEST(ViewFrames, FaultsReachWhoAskedAndAreNotKept) {
    Frames frames(kMuch);
    Maker maker;
    const auto fails = [](qx::pictures::Watch&) -> ShownFrame { throw std::runtime_error("no such file"); };
    EXPECT_EQ(asked(frames, 0, key(1), fails).get(), "no such file");
    EXPECT_EQ(asked(frames, 0, key(1), maker.make()).get(), "frame 1");
}

TEST(ViewFrames, AStopEndsAllThatWaitAndWork) {
    Frames frames(kMuch);
    Maker maker;
    auto at_work = asked(frames, 0, key(1), maker.make(true));
    maker.wait_for(1);
    auto waiting = asked(frames, 1, key(2), maker.make());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    frames.stop();
    EXPECT_EQ(at_work.get() + waiting.get(), "stoppedstopped");
    EXPECT_EQ(asked(frames, 0, key(3), maker.make()).get(), "stopped");
    EXPECT_EQ(maker.begun, 1);
}

}  // namespace
