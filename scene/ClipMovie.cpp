// SPDX-License-Identifier: Apache-2.0
// A movie as a clip.
#include <algorithm>
#include <utility>

#include "pictures/Orientation.h"
#include "scene/Clip.h"

namespace qx::scene {
namespace {

Rational exact(const movie::Ratio& ratio) { return {ratio.number, ratio.per}; }

class MovieClip : public Clip {
public:
    MovieClip(const std::string& path, const ClipOptions& options)
        : movie_(path, options.threads), store_(options.most_bytes) {
        const movie::Facts& facts = movie_.facts();
        facts_ = {.width = facts.width,
                  .height = facts.height,
                  .depth = facts.depth,
                  .has_alpha = facts.has_alpha,
                  .has_audio = facts.has_audio,
                  .is_movie = true,
                  .rate = exact(facts.rate),
                  .colours = movie_.colours(),
                  .orientation = facts.showing.orientation,
                  .aspect = exact(facts.showing.aspect),
                  .is_even = facts.regular,
                  .time_code = facts.time_code != nullptr ? facts.time_code : ""};
        if (options.orient) turn_facts();
        notes_ = movie_.notes();
        short_way_ = short_way(options);
        find_times();
    }
    std::string name_of(int) const override { return movie_.path(); }

    SharedPicture frame(int index, pictures::Watch& watch) override {
        watch.must_go_on();
        return store_.get(index, [&] { return decode(index, watch); });
    }

private:
    /// To those of frames as they are to be seen.
    void turn_facts() {
        const auto size = pictures::turned_size(movie_.in_file());
        if (pictures::turn_of(facts_.orientation).exchanged) facts_.aspect = Rational(1) / facts_.aspect;
        facts_.width = size.width;
        facts_.height = size.height;
        turn_ = std::exchange(facts_.orientation, 1);
    }

    /// Stamps that the container's units have rounded are brought back to the rate, so that times meet.
    void find_times() {
        const Rational unit = exact(movie_.facts().time_base);
        const auto stamps = movie_.stamps();
        const Rational first = Rational(stamps[0]) * unit;
        times_.reserve(stamps.size());
        for (std::size_t i = 0; i < stamps.size(); ++i) {
            const Rational number(static_cast<std::int64_t>(i));
            times_.push_back(movie_.facts().regular ? first + number / facts_.rate : Rational(stamps[i]) * unit);
        }
    }

    SharedPicture read(int index) {
        pictures::Picture frame = movie_.read(index);
        if (turn_ != 1) {
            frame.in_file = movie_.in_file();
            pictures::turn(movie_.path(), frame);
        }
        return std::make_shared<const pictures::Picture>(std::move(frame));
    }

    /// How far the way to a frame is short: frames that it leads past are kept for a while, since other threads ask for
    /// them next and the way back would be long.
    int short_way(const ClipOptions& options) const {
        constexpr std::uint64_t most = 8, share = 4;  // of the bytes for frames
        const auto pixels = static_cast<std::uint64_t>(facts_.width) * static_cast<std::uint64_t>(facts_.height);
        return static_cast<int>(std::min(most, options.most_bytes / share / (pixels * 8)));
    }

    SharedPicture decode(int index, pictures::Watch& watch) {
        const std::lock_guard lock(mutex_);
        if (const auto passed = passed_.find(index); passed != passed_.end()) return passed->second;
        const int last = std::exchange(last_, -1);  // of a movie whose frame cannot be read nothing is known
        const bool is_short = last >= 0 && index > last && index - last <= short_way_;
        for (int i = last + 1; is_short && i < index; ++i) {
            watch.must_go_on();
            passed_[i] = read(i);
        }
        SharedPicture picture = read(index);
        std::erase_if(passed_, [&](const auto& one) { return one.first > index || one.first + short_way_ < index; });
        last_ = index;
        return picture;
    }

    std::mutex mutex_;  ///< of all that follows, but for the store
    pictures::MovieReader movie_;
    int turn_ = 1;   ///< that frames get
    int last_ = -1;  ///< the frame that was read last
    int short_way_ = 0;
    std::map<int, SharedPicture> passed_;
    FrameStore store_;
};

}  // namespace

std::unique_ptr<Clip> open_movie_clip(const std::string& path, const ClipOptions& options) {
    return std::make_unique<MovieClip>(path, options);
}

}  // namespace qx::scene
