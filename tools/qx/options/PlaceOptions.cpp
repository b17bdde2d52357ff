// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/PlaceOptions.h"

#include <algorithm>

#include "pictures/Picture.h"
#include "scene/LayerWords.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

scene::LayerPlace::Along along(const std::string& option, std::string text) {
    const bool per_cent = !text.empty() && text.back() == '%';
    if (per_cent) text.pop_back();
    return {real_number(option, text, -scene::kFarthest, scene::kFarthest), per_cent};
}

std::string without_hyphens(std::string word) {
    std::erase(word, '-');
    return word;
}

}  // namespace

void read_at(const std::string& option, const std::string& text, scene::LayerPlace& place) {
    const auto comma = text.find(',');
    if (comma == std::string::npos) throw WrongUsage(option + " " + text + ": not a position X,Y");
    place.x = along(option, text.substr(0, comma));
    place.y = along(option, text.substr(comma + 1));
}

int gravity_of(const std::string& option, const std::string& text) {
    const std::string word = text == "centre" ? scene::kGravityWords[scene::kCenter] : without_hyphens(text);
    const auto known = std::find_if(std::begin(scene::kGravityWords), std::end(scene::kGravityWords),
                                    [&](const char* name) { return without_hyphens(name) == word; });
    if (known == std::end(scene::kGravityWords)) return choice(option, text, scene::kGravityWords);
    return static_cast<int>(known - std::begin(scene::kGravityWords));
}

scene::Fit fit_of(const std::string& option, const std::string& text) {
    constexpr const char* words[] = {"contain", "cover"};
    constexpr scene::Fit::Kind kinds[] = {scene::Fit::Kind::contain, scene::Fit::Kind::cover};
    const auto cross = text.find('x');
    if (text.empty() || text[0] < '0' || text[0] > '9' || cross == std::string::npos) {
        if (text.find_first_of("0123456789") != std::string::npos)
            throw WrongUsage(option + " " + text + ": not a size WxH, contain or cover");
        return {kinds[choice(option, text, words)], {}};
    }
    const auto side = [&](const std::string& number) { return whole_number(option, number, 1, pictures::kMostSide); };
    return {scene::Fit::Kind::box, {side(text.substr(0, cross)), side(text.substr(cross + 1))}};
}

}  // namespace qx::tool
