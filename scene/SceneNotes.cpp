// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneNotes.h"

#include "pictures/Failure.h"

namespace qx::scene {

void SceneNotes::once(const std::string& key, const std::string& note) {
    const std::lock_guard lock(mutex_);
    if (noted_.insert(key).second && sink_) sink_(note);
}

void SceneNotes::losses(const SceneFile& file, const std::string& path, const std::vector<std::string>& notes) {
    for (const auto& note : notes) once(file.at(0) + note, pictures::about(path, note));
}

}  // namespace qx::scene
