// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/subcommands/CompNotes.h"

#include "pictures/Picture.h"
#include "scene/Placing.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {

void note_unseen(const std::string& file, const scene::Extent& layer, const M_Matrix3& matrix,
                 const scene::Extent& background) {
    const M_FloatRect seen = scene::bounds_of({0, 0, double(layer.width), double(layer.height)}, matrix);
    if (seen.left >= seen.right || seen.top >= seen.bottom) {
        say_note(pictures::about(file, "its scale leaves nothing of it"));
    } else if (seen.left >= background.width || seen.top >= background.height || seen.right <= 0 || seen.bottom <= 0) {
        say_note(pictures::about(file, "lies outside of the picture"));
    }
}

}  // namespace qx::tool
