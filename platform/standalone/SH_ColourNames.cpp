// SPDX-License-Identifier: Apache-2.0
// Profiles by name, and those that the host has of itself.
#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/standalone/SH_ColourProfile.h"
#include "platform/standalone/SH_ColourVetting.h"

namespace standalone {
namespace {

constexpr Chromaticity kD65 = kRec709Primaries.white;
constexpr Primaries kDisplayP3{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, kD65};
constexpr Primaries kRec2020{{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, kD65};

struct Known {
    const char *name, *title;
    const Primaries& primaries;
    ToneCurve curve;
    double exponent;
};
constexpr Known kKnown[] = {
    {"srgb", "sRGB", kRec709Primaries, ToneCurve::srgb, 1},
    {"rec709", "Rec. 709", kRec709Primaries, ToneCurve::rec709, 1},
    {"rec709-2.4", "Rec. 709 Gamma 2.4", kRec709Primaries, ToneCurve::power, 2.4},
    {"display-p3", "Display P3", kDisplayP3, ToneCurve::srgb, 1},
    {"rec2020", "Rec. 2020", kRec2020, ToneCurve::rec709, 1},
};
constexpr char kLinear[] = "linear", kLinearOf[] = "linear-", kGamma[] = "gamma-";

bool TakePrefix(std::string* text, const char* prefix) {
    const std::string wanted = prefix;
    if (text->compare(0, wanted.size(), wanted) != 0) return false;
    text->erase(0, wanted.size());
    return true;
}

/// Digits and at most one point, so that each exponent has few spellings and none depends on the locale.
std::optional<double> ExponentIn(const std::string& text) {
    double value = 0, place = 0;
    bool digits = false;
    for (const char c : text) {
        if (c == '.' && place == 0) {
            place = 1;
        } else if (c >= '0' && c <= '9') {
            value = value * 10 + (c - '0');
            place *= 10;
            digits = true;
        } else {
            return {};
        }
    }
    if (!digits || text.size() > 12) return {};
    return place > 1 ? value / place : value;
}

std::optional<ProfileRecipe> RecipeOf(const std::string& name) {
    for (const Known& known : kKnown) {
        if (name == known.name) return ProfileRecipe{known.title, known.primaries, known.curve, known.exponent};
    }
    std::string rest = name;
    if (!TakePrefix(&rest, kGamma)) return {};
    const std::optional<double> exponent = ExponentIn(rest);
    if (!exponent) return {};
    char title[32];
    std::snprintf(title, sizeof(title), "Gamma %g", *exponent);
    return ProfileRecipe{title, kRec709Primaries, ToneCurve::power, *exponent};
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

ColourProfileRef ProfileOfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) {
        throw ColourFault(kColour_BadProfile,
                          "no profile has the name \"" + path + "\", and no file can be read there");
    }
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 65536> some;
    while (const std::size_t count = std::fread(some.data(), 1, some.size(), file.get())) {
        bytes.insert(bytes.end(), some.begin(), some.begin() + static_cast<std::ptrdiff_t>(count));
        if (bytes.size() > kICC_MostBytes) break;  // refused for that
    }
    if (std::ferror(file.get()) != 0) throw ColourFault(kColour_BadProfile, "\"" + path + "\" cannot be read");
    return ReadColourProfile(bytes.data(), bytes.size());
}

HCL_CMX_ProfilePtr MustOwn(const char* name) {
    HCL_CMX_ProfilePtr profile;
    HCL_CMX_ETX(ColourBoundary([&] { profile = OwnColourProfile(MustNamedProfile(name)); }));
    return profile;
}

}  // namespace

std::optional<ColourProfileRef> FindNamedProfile(const std::string& name) {
    if (name == kLinear) return FindNamedProfile("linear-srgb");
    std::string base = name;
    const bool linear = TakePrefix(&base, kLinearOf);
    const std::optional<ProfileRecipe> recipe = RecipeOf(base);
    if (!recipe) return {};
    ColourProfileRef profile = MakeColourProfile(*recipe);
    return linear ? MakeLinearProfile(*profile.get()) : std::move(profile);
}

ColourProfileRef MustNamedProfile(const char* name) {
    std::optional<ColourProfileRef> profile = FindNamedProfile(name);
    if (!profile) throw ColourFault(kColour_BadProfile, std::string("no profile has the name \"") + name + "\"");
    return std::move(*profile);
}

ColourProfileRef ColourProfileByNameOrFile(const std::string& text) {
    std::optional<ColourProfileRef> named = FindNamedProfile(text);
    return named ? std::move(*named) : ProfileOfFile(text);
}

HCL_CMX_ProfilePtr MakeProfile(const ProfileRecipe& recipe, std::string* fault) {
    return ColourProfileOrFault(fault, [&] { return MakeColourProfile(recipe); });
}
HCL_CMX_ProfilePtr NamedProfile(const std::string& name, std::string* fault) {
    return ColourProfileOrFault(fault, [&] { return MustNamedProfile(name.c_str()); });
}
HCL_CMX_ProfilePtr ProfileByNameOrFile(const std::string& text, std::string* fault) {
    return ColourProfileOrFault(fault, [&] { return ColourProfileByNameOrFile(text); });
}

std::vector<std::string> ProfileNames() {
    std::vector<std::string> names;
    for (const Known& known : kKnown) names.emplace_back(known.name);
    for (const Known& known : kKnown) names.push_back(std::string(kLinearOf) + known.name);
    names.emplace_back(kLinear);
    return names;
}

}  // namespace standalone

float HCL_CMX_GetWorkingGammaAsFloat(HCL_CMX_WorkingGamma gamma) {
    switch (static_cast<std::int32_t>(gamma)) {
        case kHCL_Gamma18:
            return 1.8F;
        case kHCL_Gamma24:
            return 2.4F;
        default:
            return 2.2F;
    }
}

HCL_CMX_ProfilePtr HCL_CMX_GetDefaultProfile(HCL_CMX_WorkingGamma gamma) {
    switch (static_cast<std::int32_t>(gamma)) {
        case kHCL_Gamma18:
            return standalone::MustOwn("gamma-1.8");
        case kHCL_Gamma24:
            return standalone::MustOwn("gamma-2.4");
        default:
            return standalone::MustOwn("srgb");
    }
}

HCL_CMX_ProfilePtr HCL_CMX_GetLinearRGBProfile(const HCL_CMX_ProfilePtr& profile) {
    HCL_CMX_ProfilePtr owner;
    HCL_CMX_ETX(standalone::ColourBoundary([&] { owner = boost::make_shared<HCL_CMX_Profile>(nullptr); }));
    CMX_Profile* linear = nullptr;
    HCL_CMX_ETX(profile->GetProfile()->MakeLinear(&linear));
    *owner = HCL_CMX_Profile(linear);
    return owner;
}

HCL_CMX_ProfilePtr HCL_CMX_GetRec709Gamma24ReferenceProfile(const HCL_CMX_ProfilePoolPtr& pool) {
    const HCL_CMX_ProfilePtr made = standalone::MustOwn("rec709-2.4");
    HCL_CMX_ProfilePtr kept;
    HCL_CMX_ETX(
        standalone::ColourBoundary([&] { kept = pool == nullptr ? made : pool->GetProfile(pool->AddProfile(made)); }));
    return kept;
}
