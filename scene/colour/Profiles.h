// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "platform/standalone/Colour.h"

// Profiles of texts and of pictures.
namespace qx::scene {

using Profile = HCL_CMX_ProfilePtr;

/// A profile's name, such as display-p3, or the path of an ICC file. Throws BadText, which names the nearest name.
Profile profile_of_text(const std::string& text);
/// The same for one that colours are to have: throws BadText for one of inks.
Profile rgb_profile_of_text(const std::string& text);

std::string name_of(const Profile& profile);
bool are_one(const Profile& a, const Profile& b);
bool is_inks(const Profile& profile);  ///< of CMYK, which only pictures of that take, as a source

/// What a picture's values mean.
struct Meaning {
    Profile profile;  ///< null for inks that nothing is told of
    bool told;        ///< by the file; else it is what values of its kind usually mean
};

/// By what the file says. What cannot be used of it is as if it were not there, with a note.
Meaning meaning_of(const pictures::Picture& picture, std::vector<std::string>& notes);

inline constexpr const char* kMeaningIsUsual =
    "some files tell no profile: integers are taken as sRGB, floats as linear light with its primaries";

/// Lets a picture say that its values are those of a profile. No pixel changes.
void assign(pictures::Picture& picture, const Profile& profile);

/// What is to be said of a picture whose profile cannot be used.
std::vector<std::string> unusable_profile(const pictures::Picture& picture);
/// What is to be said of a layer whose values are taken as they are onto a background, where their profiles differ.
std::vector<std::string> taken_otherwise(const pictures::Picture& layer, const pictures::Picture& background);

}  // namespace qx::scene
