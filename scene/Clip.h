// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "pictures/Movie.h"
#include "pictures/Picture.h"
#include "scene/Frames.h"
#include "scene/Rational.h"

/// Frames with times: a movie, or numbered pictures.
namespace qx::scene {

using SharedPicture = std::shared_ptr<const pictures::Picture>;

/// The frames that were used last, within so many bytes. For any number of threads; a frame that several ask for is
/// made once.
class FrameStore {
public:
    explicit FrameStore(std::uint64_t most_bytes) : most_bytes_(most_bytes) {}
    /// The frame, made if it is not there; what `make` throws is thrown. No lock is held while it runs.
    SharedPicture get(int number, const std::function<SharedPicture()>& make);

private:
    struct Slot {
        std::mutex making;
        SharedPicture picture;
        std::uint64_t bytes = 0;
        std::list<int>::iterator place;
    };
    std::shared_ptr<Slot> slot_of(int number);  ///< the one used last from now on
    void count(Slot& slot);
    void drop_oldest();

    std::mutex mutex_;
    std::map<int, std::shared_ptr<Slot>> slots_;
    std::list<int> order_;  ///< the last used first
    std::uint64_t most_bytes_, bytes_ = 0;
};

/// What all frames of a clip have.
struct ClipFacts {
    int width = 0, height = 0;
    int depth = 8;  ///< of the first frame; pictures may differ
    bool has_alpha = false, has_audio = false, is_movie = false;
    Rational rate;                   ///< frames a second: of a movie on average, of pictures as told
    pictures::MovieColours colours;  ///< of a movie
    int orientation = 1;             ///< that frames are still to have, as EXIF numbers them
    Rational aspect = 1;             ///< width of a pixel by its height
    bool is_even = true;             ///< all frames last as long as the rate tells
    std::string time_code;           ///< of the first frame of a movie; empty for none
};

/// Any number of threads may ask at once.
class Clip {
public:
    virtual ~Clip() = default;
    Clip(const Clip&) = delete;
    Clip& operator=(const Clip&) = delete;

    const ClipFacts& facts() const { return facts_; }
    int frames() const { return static_cast<int>(times_.size()) - 1; }
    /// In seconds, rising with `index`, from 0 to `frames()`, where the last frame ends.
    const Rational& time_of(int index) const { return times_[static_cast<std::size_t>(index)]; }
    const Rational& end() const { return times_.back(); }
    /// The last frame that begins at a time or before it; the first one for times before all.
    int frame_at(const Rational& time) const;
    /// Of a picture the number in its name, of a movie `index`.
    virtual int number_of(int index) const { return index; }
    virtual std::string name_of(int index) const = 0;  ///< of its file
    const std::vector<std::string>& notes() const { return notes_; }

    /// A frame of the clip's size. Throws pictures::Failure or pictures::Stopped.
    virtual SharedPicture frame(int index, pictures::Watch& watch = pictures::unwatched()) = 0;
    /// Throws as `frame` does, where that can be known without decoding.
    virtual void check(int, pictures::Watch&) const {}

protected:
    Clip() = default;
    ClipFacts facts_;
    std::vector<Rational> times_;  ///< one more than there are frames
    std::vector<std::string> notes_;
};

/// The index of the frame with a number. Throws BadText, which tells the numbers there are.
int index_of_number(const Clip& clip, int number);

struct ClipOptions {
    std::uint64_t most_bytes = std::uint64_t{512} << 20;  ///< of frames that are kept
    int threads = 1;                                      ///< of a movie's decoder; no bit depends on them
    bool orient = true;                                   ///< frames are turned as they are to be seen
};

/// Throws pictures::Failure.
std::unique_ptr<Clip> open_movie_clip(const std::string& path, const ClipOptions& options = {});

/// Pictures by their numbers, which count frames of `rate`. A number that is missing is a fault, or with `gaps` makes
/// the frame before it last longer, or with `holes` is a frame that cannot be read. Throws pictures::Failure.
struct NumberedPictures {
    FramePattern name;
    FrameRange range;
    Rational rate = 25;
    bool gaps = false, holes = false;
};
std::unique_ptr<Clip> open_pictures_clip(const NumberedPictures& pictures, const ClipOptions& options = {},
                                         pictures::Watch& watch = pictures::unwatched());

}  // namespace qx::scene
