// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/FrameFiles.h"

#include "pictures/Movie.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {

bool is_whole(const std::string& path, const WantedFrame& wanted, pictures::Watch& watch) {
    if (!pictures::is_there(path) || pictures::changed_at(path) < wanted.inputs_changed) return false;
    try {
        const pictures::Picture found = pictures::read_picture(path, watch);
        return found.mark == wanted.mark && found.world->width == wanted.width && found.world->height == wanted.height;
    } catch (const pictures::Failure&) {
        return false;
    }
}

void check_frames_option(const std::string& path) {
    if (!pictures::known_format(path)) {
        throw WrongUsage("-o " + path + ": its ending is none of " + pictures::known_endings() +
                         ", nor of movies: " + pictures::movie_endings());
    }
    check_output_option(path);
}

}  // namespace qx::tool
