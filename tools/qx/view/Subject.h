// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/EffectFolders.h"
#include "pictures/Movie.h"
#include "scene/Clip.h"
#include "tools/qx/options/ColourOptions.h"

namespace qx::tool {

enum class SubjectKind { scene, picture, pictures, movie };
inline constexpr const char* kSubjectWords[] = {"scene", "picture", "pictures", "movie"};

/// What a name on the command line is of. Throws pictures::Failure for what is not there.
SubjectKind kind_of_subject(const std::string& path);

struct SubjectOptions {
    std::string depth, frames;  ///< texts of options; empty: as the subject has them
    ColourOptions colours;
    host::EffectFolders& folders;
};

/// What is known of a subject once it is read.
struct SubjectFacts {
    scene::FrameList frames = scene::FrameRange{};
    pictures::Rate rate;
    std::vector<std::string> faults;  ///< a line each; with some there are no frames
    std::vector<std::string> files;   ///< that make it another subject when they are saved
    bool dithers = false;             ///< on the way to 8 bits
};

/// Something to look at, as its files were when it was read. For any number of threads.
class Subject {
public:
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    const SubjectFacts& facts() const { return facts_; }
    /// A frame at the depth that it is worked at. Throws what is wrong with it, or pictures::Stopped.
    virtual scene::SharedPicture frame(int number, pictures::Watch& watch) = 0;
    /// Those that are read anew for a frame.
    virtual std::vector<std::string> files_of(int) const { return {}; }
    /// What the user is to know, from the frames so far.
    virtual std::vector<std::string> notes() const { return {}; }

protected:
    Subject() = default;
    SubjectFacts facts_;
};

/// Reads a subject. One that cannot be read has faults. Not on several threads at once, for the sake of the effects.
std::shared_ptr<Subject> open_subject(const std::string& path, SubjectKind kind, const SubjectOptions& options);

/// Throws as the reading of a scene does.
std::shared_ptr<Subject> open_scene_subject(const std::string& path, const SubjectOptions& options);

}  // namespace qx::tool
