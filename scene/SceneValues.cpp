// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneValues.h"

#include <cstdio>
#include <filesystem>

#include "pictures/Failure.h"
#include "pictures/Files.h"
#include "scene/NumberedFiles.h"
#include "scene/retime/SceneClip.h"

namespace qx::scene {

namespace fs = std::filesystem;

Ease read_ease(const SceneNode& node) {
    constexpr double farthest = 1000;
    if (!node.is_object()) return static_cast<Between>(node.choice(kBetweenWords));
    node.check_keys(kBezierKeys);
    const auto points = node.need("bezier").items(4, 4);
    const auto x = [&](std::size_t i) { return points[i].number(0, 1); };
    const auto y = [&](std::size_t i) { return points[i].number(-farthest, farthest); };
    return {x(0), y(1), x(2), y(3)};
}

std::array<double, 4> read_colour(const SceneNode& node) {
    const auto c = node.numbers(3, 4, 0, 1);
    return {c.size() == 4 ? c[3] : 1, c[0], c[1], c[2]};
}

Track<4> read_colour_track(const SceneNode& node) {
    if (!node.is_object()) return Track<4>(read_colour(node));
    return Track<4>(track_keys<4>(node, read_colour), 0, 1);
}

Profile read_profile(const SceneNode& node, const std::string& folder) {
    const std::string text = node.text(), path = (fs::path(folder) / text).string();
    const bool is_name = standalone::NamedProfile(text, nullptr) != nullptr;
    std::error_code ignored;
    return node.read_by([&] { return rgb_profile_of_text(!is_name && fs::exists(path, ignored) ? path : text); });
}

SceneFile read_file(const SceneNode& node, const std::string& folder, Missing missing) {
    SceneFile file;
    file.place = node.place();
    file.missing = missing;
    SceneNode name = node;
    if (node.is_object() && node.find("clip")) {
        file.clip = read_clip(node, folder);
        file.name = FramePattern::plain(file.clip->path);
        if (const auto profile = node.find("profile")) file.profile = read_profile(*profile, folder);
        return file;
    }
    if (node.is_object()) {
        node.check_keys(kFileKeys);
        if (const auto profile = node.find("profile")) file.profile = read_profile(*profile, folder);
        name = node.need("name");
        if (const auto offset = node.find("offset")) file.offset = offset->whole(-kMostFrame, kMostFrame);
    }
    const std::string path = (fs::path(folder) / name.text()).string();
    if (!pictures::is_there(path)) file.name = name.read_by([&] { return FramePattern(path); });
    const bool is_sequence = file.name.has_place();
    if (!is_sequence) file.name = FramePattern::plain(path);  // a file may have such signs in its name
    if (is_sequence && missing == Missing::hold && numbers_there(file.name).empty())
        name.fault(path + ": no picture of it is there");
    const bool is_needed = !is_sequence && (missing == Missing::error || missing == Missing::hold);
    if (is_needed && !pictures::is_there(path)) name.fault(path + ": no such file");
    return file;
}

SceneFile read_data_file(const SceneNode& node, const std::string& folder, Missing missing) {
    SceneFile file = read_file(node, folder, missing);
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
