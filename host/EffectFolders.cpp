// SPDX-License-Identifier: Apache-2.0
#include "host/EffectFolders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>

#include "host/PlugInEffect.h"
#include "scene/Words.h"

namespace qx::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEnding = ".so";

/// Beside the libraries of the command, wherever that was moved to; empty where the system does not tell.
std::string installed_folder() {
    std::error_code ignored;
    const fs::path command = fs::read_symlink("/proc/self/exe", ignored);
    if (!command.is_absolute()) return {};
    return (command.parent_path().parent_path() / QX_LIBRARY_FOLDER / "qx" / "effects").string();
}

std::string without_ending(const std::string& name) {
    const std::string ending = kEnding;
    const bool has =
        name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return has ? name.substr(0, name.size() - ending.size()) : name;
}

}  // namespace

EffectFolders::EffectFolders(const std::vector<std::string>& first) : folders_(first) {
    if (const char* path = std::getenv("QX_EFFECT_PATH")) {
        std::istringstream parts(path);
        for (std::string part; std::getline(parts, part, ':');) folders_.push_back(part);
    }
    folders_.push_back(installed_folder());
    std::erase(folders_, "");  // else that would be the working folder
}

std::vector<std::string> EffectFolders::modules() const {
    std::vector<std::string> paths;
    std::set<std::string> names;
    for (const std::string& folder : folders_) {
        std::vector<fs::path> own;
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(folder, ignored)) {
            if (entry.path().extension() == kEnding && entry.is_regular_file(ignored)) own.push_back(entry.path());
        }
        std::sort(own.begin(), own.end());
        for (const fs::path& path : own) {
            if (names.insert(path.filename().string()).second) paths.push_back(path.string());
        }
    }
    return paths;
}

std::vector<std::string> EffectFolders::names() const {
    std::vector<std::string> names;
    for (const std::string& path : modules()) names.push_back(without_ending(fs::path(path).filename().string()));
    return names;
}

std::string EffectFolders::path_of(const std::string& name) const {
    const std::string file = without_ending(name) + kEnding;
    for (const std::string& folder : folders_) {
        const fs::path path = fs::path(folder) / file;
        std::error_code ignored;
        if (fs::is_regular_file(path, ignored)) return fs::absolute(path, ignored).string();
    }
    return {};
}

std::shared_ptr<const EffectModule> EffectFolders::module(const std::string& path) {
    auto& known = loaded_[path];
    auto module = known.lock();
    if (module == nullptr) known = module = EffectModule::load(path);
    return module;
}

std::shared_ptr<const EffectModule> EffectFolders::module_named(const std::string& name) {
    const bool is_file = name.find('/') != std::string::npos;
    const std::string path = is_file ? name : path_of(name);
    if (!path.empty()) return module(path);
    const auto names = this->names();
    throw scene::BadText(name, "no such effect" + scene::suggestion(name, names, "see qx effects"));
}

std::unique_ptr<scene::Effect> EffectFolders::find(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        throw scene::BadText(name, "is a path; an effect is named by a plain name here");
    }
    return std::make_unique<PlugInEffect>(module_named(name));
}

std::unique_ptr<scene::Effect> EffectFolders::find_or_load(const std::string& name) {
    return std::make_unique<PlugInEffect>(module_named(name));
}

}  // namespace qx::host
