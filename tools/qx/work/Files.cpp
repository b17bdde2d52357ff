// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/Files.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "pictures/Carried.h"
#include "pictures/Losses.h"
#include "platform/standalone/Host.h"
#include "scene/InOrder.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Flatten.h"

namespace qx::tool {
namespace {

void tell(NotesOnce& once, const std::string& file, const pictures::Picture& picture) {
    const QX_World& world = *picture.world;
    std::ostringstream words;
    words << world.width << " x " << world.height << ", " << world.Depth() << " bits"
          << (picture.has_alpha ? ", alpha" : "");
    say_detail(file, words.str());
    tell_losses(once, file, picture.notes);
}

}  // namespace

void tell_losses(NotesOnce& once, const std::string& file, const std::vector<std::string>& notes) {
    for (const auto& note : notes) once.say({{file + note, pictures::about(file, note)}});
}

void read_all(const Files& files, NotesOnce& once, const pictures::ReadOptions& options) {
    const int count = static_cast<int>(files.size());
    Progress progress("reading", PartWatch::kSteps * count);
    SignalWatch signals;
    scene::in_order(count, standalone::PoolThreads(), signals, [&](int index, pictures::Watch& watch) -> scene::InTurn {
        const auto& [file, picture] = files[static_cast<std::size_t>(index)];
        PartWatch part(progress, watch);
        *picture = pictures::read_picture(*file, part, options);
        return [&once, file = file, picture = picture] { tell(once, *file, *picture); };
    });
}

int deepest_of(const Files& files) {
    int depth = 8;
    for (const auto& [file, picture] : files) depth = std::max<int>(depth, picture->world->Depth());
    return depth;
}

int unify(const Files& files, int depth, NotesOnce& once) {
    if (depth == 0) depth = deepest_of(files);
    for (const auto& [file, picture] : files) {
        tell_losses(once, *file, pictures::lost_at_depth(*picture, depth));
        pictures::bring_to_depth(*file, *picture, depth);
        if (picture == files.front().second) continue;
        tell_losses(once, *file, pictures::lost_beside(*picture));
        pictures::drop_beside(*picture);
    }
    return depth;
}

std::vector<std::string> lost_in_file(const std::string& path, const pictures::Picture& picture, int depth,
                                      const EncodingOptions& encoding) {
    return pictures::left_out(path, picture, encoding.file_depth(depth), encoding.write_options(path));
}

void write_result(const std::string& path, const pictures::Picture& picture, int depth,
                  const EncodingOptions& encoding) {
    {
        FileProgress progress("writing");
        const auto flat = flattened(path, picture, encoding, progress);
        pictures::write_picture(path, flat ? *flat : picture, encoding.file_depth(depth), encoding.write_options(path),
                                progress);
    }
    say_detail(path, "written");
}

std::string place_of(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(pictures::file_of(path), ignored), ignored)
        .string();
}

}  // namespace qx::tool
