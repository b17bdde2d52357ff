// SPDX-License-Identifier: Apache-2.0
// A scene that is looked at.
#include <mutex>

#include "scene/Faults.h"
#include "scene/SceneRender.h"
#include "scene/retime/SceneClip.h"
#include "tools/qx/view/Stamp.h"
#include "tools/qx/view/Subject.h"
#include "tools/qx/work/SceneChoices.h"

namespace qx::tool {
namespace {

constexpr const char* kNoFrames = "the scene tells no frames: frame 1 is shown, --frames A-B shows others";

class SceneSubject final : public Subject {
public:
    SceneSubject(const std::string& path, const SubjectOptions& options)
        : scene_(scene::read_scene(path, &options.folders, &facts_.faults)) {
        facts_.files = files_named_in(scene_.text, path);
        facts_.files.push_back(path);
        if (!facts_.faults.empty()) return;
        settle(scene_, options.depth, options.colours);
        const auto frames = frames_asked(options.frames, scene_);
        if (!frames) notes_.emplace_back(kNoFrames);
        facts_.frames = frames ? frames->once() : scene::FrameList(scene::FrameRange{1, 1, 1});
        facts_.rate = scene_.rate;
        facts_.dithers = scene_.dither;
        scene::each_file(scene_, [&](const scene::SceneFile& file, const QX_PixelFloat*) {
            if (!file.clip) return;
            for (std::string& part : file.clip->files()) facts_.files.push_back(std::move(part));
        });
    }

    scene::SharedPicture frame(int number, pictures::Watch& watch) override {
        scene::check_files(scene_, scene::FrameRange{number, number, 1});
        return std::make_shared<const pictures::Picture>(render(watch).frame(number, watch));
    }

    std::vector<std::string> files_of(int number) const override {
        std::vector<std::string> files;
        if (!facts_.faults.empty()) return files;  // layers with faults are none
        scene::each_file(scene_, [&](const scene::SceneFile& file, const QX_PixelFloat*) {
            if (file.moves() && !file.clip) files.push_back(file.at(number));
        });
        return files;
    }

    std::vector<std::string> notes() const override {
        const std::lock_guard lock(notes_mutex_);
        return notes_;
    }

private:
    /// Made for the first frame, since it may read the picture whose space is that of the scene.
    scene::SceneRender& render(pictures::Watch& watch) {
        const std::lock_guard lock(render_mutex_);
        if (!render_) {
            const auto note = [this](const std::string& words) {
                const std::lock_guard noting(notes_mutex_);
                notes_.push_back(words);
            };
            const int first = (scene_.frames ? *scene_.frames : facts_.frames).frame(0);
            render_ = std::make_unique<scene::SceneRender>(scene_, note, first, watch);
        }
        return *render_;
    }

    scene::Scene scene_;
    mutable std::mutex notes_mutex_;
    std::vector<std::string> notes_;
    std::mutex render_mutex_;
    std::unique_ptr<scene::SceneRender> render_;
};

}  // namespace

std::shared_ptr<Subject> open_scene_subject(const std::string& path, const SubjectOptions& options) {
    return std::make_shared<SceneSubject>(path, options);
}

}  // namespace qx::tool
