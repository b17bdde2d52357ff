// SPDX-License-Identifier: Apache-2.0
#include "scene/colour/MovieColours.h"

namespace qx::scene {
namespace {

// Numbers of ITU-T H.273.
enum Primaries { kBt709Primaries = 1, kUnknown = 2, kBt2020Primaries = 9, kP3Primaries = 12 };
enum Transfer {
    kBt709 = 1,
    kGamma22 = 4,
    kGamma28 = 5,
    kBt601 = 6,
    kLinear = 8,
    kSrgb = 13,
    kBt2020 = 14,
    kBt2020Fine = 15
};

struct Known {
    const char* name;
    pictures::MovieColours colours;
};
/// Displays of BT.709 have the power of 2.4, and no number of their own.
constexpr Known kKnown[] = {{"rec709-2.4", {kBt709Primaries, kBt709}},
                            {"rec709", {kBt709Primaries, kBt709}},
                            {"srgb", {kBt709Primaries, kSrgb}},
                            {"display-p3", {kP3Primaries, kSrgb}},
                            {"rec2020", {kBt2020Primaries, kBt2020}},
                            {"gamma-2.2", {kBt709Primaries, kGamma22}},
                            {"gamma-2.8", {kBt709Primaries, kGamma28}},
                            {"linear", {kBt709Primaries, kLinear}},
                            {"linear-display-p3", {kP3Primaries, kLinear}},
                            {"linear-rec2020", {kBt2020Primaries, kLinear}}};

}  // namespace

pictures::MovieColours movie_colours_of(const Profile& profile) {
    for (const Known& known : kKnown) {
        if (are_one(profile, profile_of_text(known.name))) return known.colours;
    }
    return {kUnknown, kUnknown};
}

Profile profile_of_movie(const pictures::MovieColours& colours) {
    const auto known_or_709 = [](int code) { return code == 0 || code == kUnknown ? kBt709Primaries : code; };
    const int primaries = known_or_709(colours.primaries);
    int transfer = known_or_709(colours.transfer);
    if (transfer == kBt601) transfer = kBt709;  // the same curve
    if (transfer == kBt2020Fine) transfer = kBt2020;
    if (primaries == kBt2020Primaries && transfer == kBt709) transfer = kBt2020;
    for (const Known& known : kKnown) {
        if (known.colours.primaries == primaries && known.colours.transfer == transfer) {
            return profile_of_text(known.name);
        }
    }
    return nullptr;
}

}  // namespace qx::scene
