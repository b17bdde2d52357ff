// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneValues.h"

#include <cstdio>
#include <filesystem>

#include "pictures/Failure.h"
#include "pictures/Files.h"
#include "scene/retime/SceneClip.h"

namespace qx::scene {

namespace fs = std::filesystem;

Profile read_profile(const SceneNode& node, const std::string& folder) {
    const std::string text = node.text(), path = (fs::path(folder) / text).string();
    const bool is_name = standalone::NamedProfile(text, nullptr) != nullptr;
    std::error_code ignored;
    return node.read_by([&] { return rgb_profile_of_text(!is_name && fs::exists(path, ignored) ? path : text); });
}

SceneFile read_file(const SceneNode& node, const std::string& folder) {
    SceneFile file;
    file.place = node.place();
    SceneNode name = node;
    if (node.is_object() && node.find("clip")) {
        file.clip = read_clip(node, folder);
        file.name = FramePattern::plain(file.clip->path);
        if (const auto profile = node.find("profile")) file.profile = read_profile(*profile, folder);
        return file;
    }
    if (node.is_object()) {
        node.check_keys({"name", "offset", "profile"});
        if (const auto profile = node.find("profile")) file.profile = read_profile(*profile, folder);
        name = node.need("name");
        if (const auto offset = node.find("offset")) file.offset = offset->whole(-kMostFrame, kMostFrame);
    }
    const std::string path = (fs::path(folder) / name.text()).string();
    std::error_code ignored;
    if (!fs::exists(path, ignored)) file.name = name.read_by([&] { return FramePattern(path); });
    if (file.name.has_place()) return file;
    file.name = FramePattern::plain(path);  // a file may have such signs in its name
    if (!fs::exists(path, ignored)) name.fault(path + ": no such file");
    return file;
}

SceneFile read_data_file(const SceneNode& node, const std::string& folder) {
    SceneFile file = read_file(node, folder);
    if (file.profile) node.need("profile").fault("is of no use, masks are no colours");
    file.is_data = true;
    return file;
}

std::string text_of_file(const std::string& path) {
    const pictures::InputFile file(path);
    std::string text;
    char part[4096];
    while (const std::size_t bytes = std::fread(part, 1, sizeof part, file.stream())) text.append(part, bytes);
    if (std::ferror(file.stream()) != 0) throw pictures::Failure(path, "could not be read");
    return text;
}

}  // namespace qx::scene
