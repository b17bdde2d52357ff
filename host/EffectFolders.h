// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/EffectModule.h"
#include "scene/effects/EffectSource.h"

namespace qx::host {

/// Effects by the names of their modules, in folders of which the first that has one counts. Never the working folder,
/// unless it is named. A module is loaded once, and stays while something uses it.
class EffectFolders final : public scene::EffectSource {
public:
    /// @param first  folders that come before those of QX_EFFECT_PATH (with colons between) and the installed one
    explicit EffectFolders(const std::vector<std::string>& first);

    const std::vector<std::string>& folders() const { return folders_; }
    /// Names of all modules in the folders.
    std::vector<std::string> names() const;
    /// The module of a plain name, with or without .so; empty where no folder has it.
    std::string path_of(const std::string& name) const;
    bool has(const std::string& name) const { return !path_of(name).empty(); }
    /// Paths of all modules in the folders, those of a folder in the order of their names. One that a folder before it
    /// hides is not among them.
    std::vector<std::string> modules() const;

    /// A plain name, with or without .so. A path is not one: files are for who may name them.
    std::unique_ptr<scene::Effect> find(const std::string& name) override;
    /// A name with a / is a file, any other one as find has it.
    std::unique_ptr<scene::Effect> find_or_load(const std::string& name);
    std::shared_ptr<const EffectModule> module(const std::string& path);
    /// As find_or_load has it.
    std::shared_ptr<const EffectModule> module_named(const std::string& name);

private:
    std::vector<std::string> folders_;
    std::map<std::string, std::weak_ptr<const EffectModule>> loaded_;
};

}  // namespace qx::host
