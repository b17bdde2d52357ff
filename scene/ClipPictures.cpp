// SPDX-License-Identifier: Apache-2.0
// Numbered pictures as a clip.
#include "scene/Clip.h"

namespace qx::scene {
namespace {

std::string size_words(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

class PicturesClip : public Clip {
public:
    PicturesClip(const NumberedPictures& pictures, const ClipOptions& options, pictures::Watch& watch)
        : pictures_(pictures), options_{.orient = options.orient}, store_(options.most_bytes) {
        find_numbers();
        for (const int number : numbers_) times_.push_back(time_of_number(number));
        const FrameRange& range = pictures_.range;
        times_.push_back(time_of_number(range.frame(range.count() - 1) + range.step));
        look_at_first(watch);
    }
    int number_of(int index) const override { return numbers_[static_cast<std::size_t>(index)]; }
    std::string name_of(int index) const override { return pictures_.name.name(number_of(index)); }

    SharedPicture frame(int index, pictures::Watch& watch) override {
        watch.must_go_on();
        return store_.get(index, [&] { return read(index, watch); });
    }

    void check(int index, pictures::Watch& watch) const override {
        check_size(index, pictures::picture_size(name_of(index), watch, options_));
    }

private:
    void find_numbers() {
        for (int i = 0; i < pictures_.range.count(); ++i) {
            const int number = pictures_.range.frame(i);
            const std::string name = pictures_.name.name(number);
            if (pictures::is_there(name) || (pictures_.holes && !pictures_.gaps)) {
                numbers_.push_back(number);
            } else if (!pictures_.gaps) {
                throw pictures::Failure(name, "frame " + std::to_string(number) + " is missing");
            }
        }
        if (numbers_.empty()) throw pictures::Failure(pictures_.name.name(pictures_.range.first), "no frame is there");
    }

    Rational time_of_number(int number) const { return Rational(number - numbers_.front()) / pictures_.rate; }

    /// The first that can be read; where none may be missing the first of all.
    SharedPicture first_frame(pictures::Watch& watch) {
        for (int i = 0; pictures_.holes && i + 1 < frames(); ++i) {
            try {
                return frame(i, watch);
            } catch (const pictures::Failure&) {  // told of each result that needs it
            }
        }
        return frame(pictures_.holes ? frames() - 1 : 0, watch);
    }

    void look_at_first(pictures::Watch& watch) {
        const SharedPicture first = first_frame(watch);
        facts_.width = first->world->width;
        facts_.height = first->world->height;
        facts_.depth = first->world->Depth();
        facts_.has_alpha = first->has_alpha;
        facts_.rate = pictures_.rate;
    }

    SharedPicture read(int index, pictures::Watch& watch) const {
        auto picture =
            std::make_shared<const pictures::Picture>(pictures::read_picture(name_of(index), watch, options_));
        if (facts_.width != 0) check_size(index, {picture->world->width, picture->world->height});
        return picture;
    }

    void check_size(int index, const pictures::PictureSize& size) const {
        if (size == pictures::PictureSize{facts_.width, facts_.height}) return;
        throw pictures::Failure(name_of(index), size_words(size.width, size.height) +
                                                    " pixels, the clip's first frame has " +
                                                    size_words(facts_.width, facts_.height));
    }

    const NumberedPictures pictures_;
    const pictures::ReadOptions options_;
    std::vector<int> numbers_;
    FrameStore store_;
};

}  // namespace

std::unique_ptr<Clip> open_pictures_clip(const NumberedPictures& pictures, const ClipOptions& options,
                                         pictures::Watch& watch) {
    return std::make_unique<PicturesClip>(pictures, options, watch);
}

}  // namespace qx::scene
