// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "scene/SceneFile.h"

namespace qx::scene {

/// What the user is to know of a scene, each note once and one at a time. For any number of threads.
class SceneNotes {
public:
    using Sink = std::function<void(const std::string&)>;
    explicit SceneNotes(Sink sink) : sink_(std::move(sink)) {}

    /// @param key  what is told once
    void once(const std::string& key, const std::string& note);
    /// Of a sequence, each is told of the first picture that it holds for, and once however many layers show it.
    void losses(const SceneFile& file, const std::string& path, const std::vector<std::string>& notes);

private:
    const Sink sink_;  ///< may be null
    std::mutex mutex_;
    std::set<std::string> noted_;
};

}  // namespace qx::scene
