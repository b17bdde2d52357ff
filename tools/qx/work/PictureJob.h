// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scene/colour/Convert.h"
#include "scene/effects/Effect.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/work/Files.h"

// What the subcommands share that make one picture of one or more.
namespace qx::tool {

/// What a job makes of colours. Managed ones have profiles: CMYK is read too, and what the values of a result are is
/// not for the job to say.
enum class Colours { as_they_are, managed };

/// Checks the options, reads, lets effects work, writes. The library lives as long.
class PictureJob {
public:
    /// @param inputs  the first is the one that is worked on
    PictureJob(const PictureOptions& options, std::vector<std::string> inputs, Colours colours = Colours::as_they_are);

    pictures::Picture& picture() { return pictures_.front(); }
    int depth() const { return depth_; }
    void bring_to_depth(int depth);
    /// On the first input.
    void tell(const std::vector<std::string>& notes);
    /// Shows a bar with these words. Pictures that it asks for are those of the inputs.
    void apply(const scene::Effect& effect, const char* words);
    /// Puts other pixels in the place of the picture's. What the file tells beside its pixels is dropped.
    using Change = std::function<std::unique_ptr<QX_World>(const QX_World& world, pictures::Watch& watch)>;
    void change_pixels(const char* words, const Change& change);
    /// The same where pixels keep their values, and with them those that 16-bit files have beside them.
    void move_pixels(const char* words, const Change& change);
    /// Brings the picture to another profile, see scene::convert, with a bar.
    void convert(const scene::Profile& from, const scene::Profile& to, int depth, const scene::Rendering& rendering);
    /// @param depth   of the file, where its format has it
    /// @param dither  noise where deeper pixels become 8-bit ones
    void write(int depth, bool dither);
    void write() { write(depth_, false); }

private:
    void drop_beside();
    const PictureOptions& options_;
    const std::vector<std::string> inputs_;
    std::optional<Library> library_;
    std::vector<pictures::Picture> pictures_;
    NotesOnce once_;
    int depth_ = 0;
};

}  // namespace qx::tool
