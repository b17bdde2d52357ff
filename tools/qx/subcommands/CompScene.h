// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/EffectFolders.h"
#include "pictures/Files.h"
#include "scene/Rational.h"
#include "tools/qx/subcommands/CompOptions.h"

namespace qx::tool {

/// A scene that tells what a line of `comp` does, as a file or as its text alone.
class CompScene {
public:
    /// Throws WrongUsage for what a scene cannot tell.
    explicit CompScene(const CompOptions& options);
    /// Takes what the pictures have told, before they are worked on. Throws as the constructor does.
    /// @param depth   that the line works with
    /// @param places  of the layers
    void settle(int depth, const std::vector<scene::Settled>& places);
    /// So many frames instead of one, as a movie needs.
    void set_frames(int count, const scene::Rational& rate);
    std::string text() const { return scene_.dump(2) + "\n"; }
    void write();  ///< the file but for its name, which `commit` gives it
    void commit() { file_->commit(); }

private:
    using Json = nlohmann::ordered_json;
    void check_place() const;
    std::string name_of(const std::string& path) const;  ///< as seen from the scene's folder, or without one from here
    std::string profile_of(const std::string& text) const;  ///< a name, or a file so
    Json file_of(const std::string& path, const std::string& profile) const;
    Json layer_of(const LayerOptions& layer, const scene::Settled& place) const;
    Json transform_of(const LayerOptions& layer, const scene::Settled& place) const;
    Json effect_of(const LayerOptions& layer, const std::string& text, host::EffectFolders& folders) const;
    Json value_of_key(const scene::Key& key, const std::string& text) const;
    [[noreturn]] void refuse(const std::string& words) const;

    const CompOptions& options_;
    Json scene_;
    std::unique_ptr<pictures::OutputFile> file_;
};

}  // namespace qx::tool
