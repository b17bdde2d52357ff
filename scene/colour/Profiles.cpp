// SPDX-License-Identifier: Apache-2.0
#include "scene/colour/Profiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <new>

#include "scene/Words.h"
#include "scene/colour/MovieColours.h"

namespace qx::scene {
namespace {

standalone::Primaries primaries_of(const pictures::Primaries& p) {
    const auto point = [&](std::size_t i) {
        return standalone::Chromaticity{static_cast<double>(p[i]), static_cast<double>(p[i + 1])};
    };
    return {point(0), point(2), point(4), point(6)};
}

pictures::Primaries as_floats(const standalone::Primaries& p) {
    pictures::Primaries all{};
    std::size_t i = 0;
    for (const auto& point : {p.red, p.green, p.blue, p.white}) {
        all[i++] = static_cast<float>(point.x);
        all[i++] = static_cast<float>(point.y);
    }
    return all;
}

/// The profile, or null for one that cannot be. Throws std::bad_alloc where it is memory that lacks.
Profile unless_no_memory(Profile profile, const std::string& fault) {
    if (!profile && fault == standalone::kNoMemoryForColours) throw std::bad_alloc();
    return profile;
}

std::string rounded(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", number);
    return text;
}
std::string places_of(const pictures::Primaries& primaries) {
    std::string text;
    for (const float number : primaries) {
        if (!text.empty()) text += ' ';
        text += rounded(static_cast<double>(number));
    }
    return text;
}

/// A file of a named profile says its primaries as numbers that were rounded on the way.
Profile known_light(const pictures::Primaries& primaries) {
    static const std::vector<Profile> known = [] {
        std::vector<Profile> all;
        for (const char* name : {"linear", "linear-display-p3", "linear-rec2020"}) all.push_back(profile_of_text(name));
        return all;
    }();
    const auto is_near = [](float a, float b) { return std::abs(a - b) < 2e-4f; };
    for (const Profile& profile : known) {
        const auto own = as_floats(*standalone::FactsOf(*profile).primaries);
        if (std::equal(own.begin(), own.end(), primaries.begin(), is_near)) return profile;
    }
    return nullptr;
}

/// The profile that a file's words make; null, with words for why, where they make none.
Profile told_profile(const pictures::ColourTags& tags, const pictures::ColourMeaning& meaning, std::string& fault) {
    using Kind = pictures::ColourMeaning::Kind;
    switch (meaning.kind) {
        case Kind::icc:
            return standalone::ProfileFromICC(tags.icc.bytes.data(), tags.icc.bytes.size(), &fault);
        case Kind::srgb:
            return standalone::NamedProfile("srgb", &fault);
        case Kind::gamma:
            return standalone::MakeProfile({.name = "gamma " + rounded(meaning.exponent),
                                            .primaries = primaries_of(meaning.primaries),
                                            .curve = standalone::ToneCurve::power,
                                            .exponent = meaning.exponent},
                                           &fault);
        case Kind::light:
            if (Profile known = known_light(meaning.primaries)) return known;
            return standalone::MakeProfile({.name = "linear light of " + places_of(meaning.primaries),
                                            .primaries = primaries_of(meaning.primaries),
                                            .curve = standalone::ToneCurve::linear},
                                           &fault);
        case Kind::movie:
            if (Profile known = profile_of_movie(meaning.movie)) return known;
            fault = "no profile is known for its primaries " + std::to_string(meaning.movie.primaries) + " and curve " +
                    std::to_string(meaning.movie.transfer);
            return nullptr;
        default:
            return nullptr;
    }
}

/// Whether two files plainly do, so that nobody has to look at their profiles.
bool say_the_same(const pictures::Picture& a, const pictures::Picture& b) {
    const auto of_a = pictures::meaning_of(a.colours, a.linear), of_b = pictures::meaning_of(b.colours, b.linear);
    return of_a.kind == of_b.kind && of_a.exponent == of_b.exponent && of_a.primaries == of_b.primaries &&
           of_a.movie == of_b.movie && a.colours.icc.bytes == b.colours.icc.bytes;
}

/// The same, with a note on words that make none or are not for such pixels.
Profile fitting_profile(const pictures::ColourTags& tags, const pictures::Picture& picture,
                        std::vector<std::string>& notes) {
    std::string fault;
    const auto meaning = pictures::meaning_of(tags, picture.linear);
    Profile profile = unless_no_memory(told_profile(tags, meaning, fault), fault);
    if (!profile && !fault.empty()) notes.push_back("its colour profile cannot be used: " + fault);
    if (!profile || is_inks(profile) == picture.cmyk) return profile;
    if (!tags.icc.bytes.empty()) notes.emplace_back("its colour profile is not for its pixels and is not used");
    return nullptr;
}

/// Why a text is no profile, where it has the form of one that is told by a number.
std::string number_fault(const std::string& text, const std::string& fault) {
    const std::string number = text.substr(std::min(text.rfind('-') + 1, text.size()));
    const bool is_number = !number.empty() && number.find_first_not_of("0123456789.") == std::string::npos &&
                           std::count(number.begin(), number.end(), '.') <= 1 && number.back() != '.';
    return text.find("gamma-") != std::string::npos && is_number ? fault : "";
}

}  // namespace

bool is_inks(const Profile& profile) { return standalone::FactsOf(*profile).space == standalone::ProfileSpace::cmyk; }

Profile profile_of_text(const std::string& text) {
    std::string fault;
    Profile profile = unless_no_memory(standalone::ProfileByNameOrFile(text, &fault), fault);
    if (profile) return profile;
    std::error_code ignored;
    if (std::filesystem::exists(text, ignored)) throw BadText(text, fault);
    if (const std::string why = number_fault(text, fault); !why.empty()) throw BadText(text, why);
    auto names = standalone::ProfileNames();
    names.emplace_back("gamma-2.2");
    throw BadText(text, "is no profile's name and no ICC file" + suggestion(text, names));
}

Profile rgb_profile_of_text(const std::string& text) {
    Profile profile = profile_of_text(text);
    if (is_inks(profile)) throw BadText(text, "is a profile of inks, results are RGB");
    return profile;
}

std::string name_of(const Profile& profile) { return standalone::FactsOf(*profile).name; }

bool are_one(const Profile& a, const Profile& b) {
    return HCL_EqualCMXIDs(a->GetProfile()->ID(), b->GetProfile()->ID());
}

Meaning meaning_of(const pictures::Picture& picture, std::vector<std::string>& notes) {
    Profile profile = fitting_profile(picture.colours, picture, notes);
    if (!profile && !picture.colours.icc.bytes.empty()) {
        profile = fitting_profile({{}, picture.colours.png, picture.colours.primaries}, picture, notes);
    }
    if (profile || picture.cmyk) return {profile, profile != nullptr};
    const bool is_light = picture.linear || picture.precision >= pictures::Precision::half;
    return {profile_of_text(is_light ? "linear" : "srgb"), false};
}

void assign(pictures::Picture& picture, const Profile& profile) {
    const auto facts = standalone::FactsOf(*profile);
    picture.colours = {};
    picture.colours.icc.bytes = standalone::ICCOf(*profile);
    if (facts.primaries) picture.colours.primaries = as_floats(*facts.primaries);
    picture.linear = facts.over_range;
}

std::vector<std::string> unusable_profile(const pictures::Picture& picture) {
    std::vector<std::string> notes;
    const auto kind = pictures::meaning_of(picture.colours, picture.linear).kind;
    if (kind != pictures::ColourMeaning::Kind::unknown) meaning_of(picture, notes);
    return notes;
}

std::vector<std::string> taken_otherwise(const pictures::Picture& layer, const pictures::Picture& background) {
    if (say_the_same(layer, background)) return {};
    std::vector<std::string> told_apart;
    const Profile above = meaning_of(layer, told_apart).profile, below = meaning_of(background, told_apart).profile;
    if (!above || !below || are_one(above, below)) return {};
    return {"its profile (" + name_of(above) + ") is not the background's (" + name_of(below) +
            "); values are taken as they are, see --space"};
}

}  // namespace qx::scene
