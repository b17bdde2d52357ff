// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/FrameFiles.h"

#include "pictures/Movie.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {

bool is_whole(const std::string& path, const FrameSize& size, const std::string& mark, pictures::Watch& watch) {
    if (!pictures::is_there(path)) return false;
    try {
        const pictures::Picture found = pictures::read_picture(path, watch);
        const bool is_ours = mark.empty() || found.mark == mark;
        return is_ours && found.world->width == size.width && found.world->height == size.height;
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
