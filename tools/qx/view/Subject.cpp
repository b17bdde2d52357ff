// SPDX-License-Identifier: Apache-2.0
// Pictures and clips that are looked at, and what cannot be read.
#include "tools/qx/view/Subject.h"

#include <filesystem>

#include "scene/NumberedFiles.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

/// Frames of a movie stay in memory for the next ones, which are made from them.
constexpr std::uint64_t kMostMovieBytes = std::uint64_t{128} << 20;

std::string folder_of(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Rising numbers as few ranges.
scene::FrameList ranges_of(const std::vector<int>& numbers) {
    std::vector<scene::FrameRange> ranges;
    for (const int number : numbers) {
        if (!ranges.empty() && ranges.back().last + 1 == number) {
            ranges.back().last = number;
        } else {
            ranges.push_back({number, number, 1});
        }
    }
    return scene::FrameList(std::move(ranges));
}

class Unreadable final : public Subject {
public:
    Unreadable(const std::string& path, std::string fault) {
        facts_.faults.push_back(std::move(fault));
        facts_.files.push_back(path);
    }
    scene::SharedPicture frame(int, pictures::Watch&) override { throw WorkFailed(facts_.faults.front()); }
};

class StillPicture final : public Subject {
public:
    explicit StillPicture(const std::string& path) : path_(path) { facts_.files.push_back(path); }
    scene::SharedPicture frame(int, pictures::Watch& watch) override {
        return std::make_shared<const pictures::Picture>(pictures::read_picture(path_, watch));
    }

private:
    const std::string path_;
};

class NumberedSubject final : public Subject {
public:
    NumberedSubject(const std::string& path, const SubjectOptions& options) : names_(path) {
        const auto numbers = scene::numbers_there(names_);
        if (numbers.empty()) throw pictures::Failure(path, "no frame is there");
        facts_.frames = options.frames.empty() ? ranges_of(numbers) : scene::frame_list(options.frames).once();
        facts_.files.push_back(folder_of(path));  // whose time tells that a frame has come
    }
    scene::SharedPicture frame(int number, pictures::Watch& watch) override {
        return std::make_shared<const pictures::Picture>(pictures::read_picture(names_.name(number), watch));
    }
    std::vector<std::string> files_of(int number) const override { return {names_.name(number)}; }

private:
    const scene::FramePattern names_;
};

class MovieSubject final : public Subject {
public:
    MovieSubject(const std::string& path, const SubjectOptions& options)
        : clip_(scene::open_movie_clip(path, {.most_bytes = kMostMovieBytes})) {
        if (clip_->frames() == 0) throw pictures::Failure(path, "no frame is there");
        const scene::FrameRange all{0, clip_->frames() - 1, 1};
        facts_.frames = options.frames.empty() ? scene::FrameList(all) : scene::frame_list(options.frames).once();
        facts_.rate = {static_cast<int>(clip_->facts().rate.real() * 1000 + 0.5), 1000};
        facts_.files.push_back(path);
    }
    scene::SharedPicture frame(int number, pictures::Watch& watch) override {
        scene::index_of_number(*clip_, number);
        return clip_->frame(number, watch);
    }
    std::vector<std::string> notes() const override { return clip_->notes(); }

private:
    const std::unique_ptr<scene::Clip> clip_;
};

std::shared_ptr<Subject> open(const std::string& path, SubjectKind kind, const SubjectOptions& options) {
    switch (kind) {
        case SubjectKind::scene:
            return open_scene_subject(path, options);
        case SubjectKind::pictures:
            return std::make_shared<NumberedSubject>(path, options);
        case SubjectKind::movie:
            return std::make_shared<MovieSubject>(path, options);
        case SubjectKind::picture:
            break;
    }
    return std::make_shared<StillPicture>(path);
}

}  // namespace

SubjectKind kind_of_subject(const std::string& path) {
    if (value_of("FILE", [&] { return scene::FramePattern(path); }).has_place()) return SubjectKind::pictures;
    if (pictures::is_picture(path)) return SubjectKind::picture;
    return pictures::is_read_as_movie(path) ? SubjectKind::movie : SubjectKind::scene;
}

std::shared_ptr<Subject> open_subject(const std::string& path, SubjectKind kind, const SubjectOptions& options) {
    std::shared_ptr<Subject> subject;
    try {
        subject = open(path, kind, options);
    } catch (const pictures::Stopped&) {
        throw;
    } catch (...) {
        tell_fault([&](std::string_view words) { subject = std::make_shared<Unreadable>(path, std::string(words)); });
    }
    return subject;
}

}  // namespace qx::tool
