// SPDX-License-Identifier: Apache-2.0
#include "pictures/Profiles.h"

namespace qx::pictures {

void note_damaged_profile(Picture& picture, const std::string& words) {
    picture.notes.push_back("its colour profile is damaged (" + words + ") and is left out");
}

void keep_profile(Picture& picture, const unsigned char* data, std::size_t bytes, IccSpace pixels) {
    const auto [facts, fault, damaged] = vet_icc({data, bytes});
    if (damaged) return note_damaged_profile(picture, fault);
    if (!facts) {
        picture.notes.push_back("its colour profile is of no use here (" + fault + ") and is left out");
    } else if (facts->space == pixels || (facts->space == IccSpace::rgb && pixels == IccSpace::grey)) {
        picture.colours.icc = {{data, data + facts->bytes}, facts->space};
    } else {
        constexpr const char* names[] = {"RGB", "grey", "CMYK"};
        const std::string name = names[static_cast<int>(pixels)];
        picture.notes.push_back("its colour profile is not for " + name + " and is left out");
    }
}

void refuse_cmyk(const std::string& path, const Picture& picture) {
    const bool can_be_converted = !picture.colours.icc.bytes.empty();
    throw Failure(path, can_be_converted ? "is CMYK; bring it to RGB first: qx convert --to PROFILE" : kCmykIsUnknown);
}

const char* profile_hindrance(const Format& format, const ColourTags& tags) {
    if (format.most_profile == 0) return "its colour profile is left out, OpenEXR holds none";
    if (tags.icc.space == IccSpace::grey) return "its grey colour profile is left out, the result is RGB";
    if (tags.icc.space == IccSpace::cmyk) return "its CMYK colour profile is left out, the result is RGB";
    if (tags.icc.bytes.size() > format.most_profile) return "its colour profile is left out, it is too large for JPEG";
    return nullptr;
}

}  // namespace qx::pictures
