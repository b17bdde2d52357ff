// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourWriting.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

/// A number as a file holds it, in 65536ths.
double InFile(double value) { return std::floor(value * 65536 + 0.5); }

/// Rounds the colorants as the file does, so that they sum to its white: the brightest, green, takes what that leaves.
/// Rounded apart, white would be 32767 of 32768.
bool BalanceColorants(cmsHPROFILE profile) {
    const auto* const red = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, cmsSigRedColorantTag));
    const auto* const blue = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, cmsSigBlueColorantTag));
    if (red == nullptr || blue == nullptr) return false;
    constexpr cmsCIEXYZ kWhite{63190, 65536, 54061};  // D50 in a file
    const cmsCIEXYZ green{(kWhite.X - InFile(red->X) - InFile(blue->X)) / 65536,
                          (kWhite.Y - InFile(red->Y) - InFile(blue->Y)) / 65536,
                          (kWhite.Z - InFile(red->Z) - InFile(blue->Z)) / 65536};
    return cmsWriteTag(profile, cmsSigGreenColorantTag, &green) != FALSE;
}

cmsToneCurve* BuildCurve(cmsContext context, const ProfileRecipe& recipe) {
    constexpr double kSRGB[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    constexpr double kRec709[] = {1 / 0.45, 1 / 1.099, 0.099 / 1.099, 1 / 4.5, 0.081};
    constexpr cmsInt32Number kPowerAndLine = 4;
    switch (recipe.curve) {
        case ToneCurve::power:
            return cmsBuildGamma(context, recipe.exponent);
        case ToneCurve::srgb:
            return cmsBuildParametricToneCurve(context, kPowerAndLine, kSRGB);
        case ToneCurve::rec709:
            return cmsBuildParametricToneCurve(context, kPowerAndLine, kRec709);
        case ToneCurve::linear:
            break;
    }
    return cmsBuildGamma(context, 1);
}

bool CopyTag(cmsHPROFILE from, cmsHPROFILE to, cmsTagSignature tag) {
    const void* const value = cmsReadTag(from, tag);
    return value == nullptr || cmsWriteTag(to, tag, value) != FALSE;
}

cmsHPROFILE BuildLinear(cmsContext context, const ColourProfile& profile, const wchar_t* name) {
    const ColourBytes& file = profile.file();
    const cmsHPROFILE from = cmsOpenProfileFromMemTHR(context, file.data(), static_cast<cmsUInt32Number>(file.size()));
    const cmsHPROFILE to = cmsCreateProfilePlaceholder(context);
    if (from == nullptr || to == nullptr) return nullptr;
    cmsSetProfileVersion(to, cmsGetProfileVersion(from));
    cmsSetDeviceClass(to, cmsGetDeviceClass(from));
    cmsSetColorSpace(to, cmsSigRgbData);
    cmsSetPCS(to, cmsSigXYZData);
    for (const cmsTagSignature tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag,
                                      cmsSigMediaWhitePointTag, cmsSigChromaticAdaptationTag, cmsSigCopyrightTag}) {
        if (!CopyTag(from, to, tag)) return nullptr;
    }
    const cmsToneCurve* const identity = cmsBuildGamma(context, 1);
    for (const cmsTagSignature tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
        if (!cmsWriteTag(to, tag, identity)) return nullptr;
    }
    return SetProfileName(context, to, name) ? to : nullptr;
}

}  // namespace

bool SetProfileName(cmsContext context, cmsHPROFILE profile, const wchar_t* name) {
    cmsMLU* const text = cmsMLUalloc(context, 1);
    return cmsMLUsetWide(text, "en", "US", name) && cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
}

cmsHPROFILE BuildRGBProfile(cmsContext context, const Primaries& primaries, cmsToneCurve* curve, const wchar_t* name) {
    const auto point = [](const Chromaticity& c) { return cmsCIExyY{c.x, c.y, 1}; };
    const cmsCIExyY white = point(primaries.white);
    const cmsCIExyYTRIPLE colorants{point(primaries.red), point(primaries.green), point(primaries.blue)};
    cmsToneCurve* const curves[] = {curve, curve, curve};
    const cmsHPROFILE profile = cmsCreateRGBProfileTHR(context, &white, &colorants, curves);
    if (profile == nullptr || !BalanceColorants(profile)) return nullptr;
    return SetProfileName(context, profile, name) ? profile : nullptr;
}

void FixColourFileDate(const ColourBytes& file) {
    constexpr std::uint8_t kDate[] = {7, 208, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};  // 2000-01-01, 0:00:00
    std::copy(std::begin(kDate), std::end(kDate), file.data() + 24);
}

ColourProfileRef MakeColourProfile(const ProfileRecipe& recipe) {
    const auto usable = [](const Chromaticity& c) { return std::isfinite(c.x) && std::isfinite(c.y) && c.y > 0; };
    const Primaries& p = recipe.primaries;
    if (!usable(p.red) || !usable(p.green) || !usable(p.blue) || !usable(p.white)) {
        throw ColourFault(kColour_BadProfile, "the primaries are no colours");
    }
    if (recipe.curve == ToneCurve::power && !(recipe.exponent >= 0.1 && recipe.exponent <= 10)) {
        throw ColourFault(kColour_BadProfile, "the exponent is not from 0.1 to 10");
    }
    const std::wstring name = FromUtf8(recipe.name.c_str());
    const ColourBytes file = WriteColourFile([&](cmsContext context) -> cmsHPROFILE {
        cmsToneCurve* const curve = BuildCurve(context, recipe);
        return curve == nullptr ? nullptr : BuildRGBProfile(context, recipe.primaries, curve, name.c_str());
    });
    return ReadColourProfile(file.data(), file.size());
}

ColourProfileRef MakeLinearProfile(const ColourProfile& profile) {
    if (!profile.content().has_matrix) {
        throw ColourFault(kColour_BadProfile, "a profile of tables alone has no linear version");
    }
    const std::wstring name = profile.Name() + L" (linear)";
    const ColourBytes file =
        WriteColourFile([&](cmsContext context) { return BuildLinear(context, profile, name.c_str()); });
    return ReadColourProfile(file.data(), file.size());
}

}  // namespace standalone
