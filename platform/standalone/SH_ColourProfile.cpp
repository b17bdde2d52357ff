// SPDX-License-Identifier: Apache-2.0
// Profiles that are read.
#include "platform/standalone/SH_ColourProfile.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/TK_Report.h"
#include "platform/standalone/SH_ColourVetting.h"
#include "platform/standalone/SH_ColourWriting.h"
#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

constexpr cmsTagSignature kCurveTags[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
constexpr cmsTagSignature kColorantTags[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};

/// What a curve is by its values at these steps, from 0 to 1.
constexpr int kCurveSteps = 4096;
struct CurveFacts {
    bool is_of_numbers = true, is_identity = true;
    double gamma = 0;  ///< 0 where no power is like the curve
};

CurveFacts LookAt(const cmsToneCurve* curve) {
    constexpr double kInfinite = 1e20;  // the library has 1e22 for that
    CurveFacts facts;
    double sum = 0;
    int count = 0;
    for (int i = 0; i <= kCurveSteps; ++i) {
        const double x = static_cast<double>(i) / kCurveSteps;
        const auto y = static_cast<double>(cmsEvalToneCurveFloat(curve, static_cast<float>(x)));
        if (!(std::abs(y) < kInfinite)) facts.is_of_numbers = false;
        if (!(std::abs(y - x) <= 1.0 / 65535)) facts.is_identity = false;
        if (i == kCurveSteps || x <= 0.07 || y <= 0 || y >= 1) continue;
        sum += std::log(y) / std::log(x);
        ++count;
    }
    if (facts.is_identity) {
        facts.gamma = 1;
    } else if (cmsGetToneCurveParametricType(curve) == 1) {
        facts.gamma = cmsGetToneCurveParams(curve)[0];
    } else if (count > 0) {
        facts.gamma = sum / count;
    }
    return facts;
}

Chromaticity ChromaticityOf(const cmsCIEXYZ& colour) {
    const double sum = colour.X + colour.Y + colour.Z;
    return {colour.X / sum, colour.Y / sum};
}

/// From the white of profiles to the profile's own: by the adaptation that the file tells, else by Bradford's.
bool Unadapted(const cmsCIEXYZ& colour, const cmsMAT3* adaptation, const cmsCIEXYZ& white, cmsCIEXYZ* result) {
    if (adaptation == nullptr) return cmsAdaptToIlluminant(result, cmsD50_XYZ(), &white, &colour) != FALSE;
    cmsMAT3 back;
    if (!_cmsMAT3inverse(adaptation, &back)) return false;
    cmsVEC3 in, out;
    _cmsVEC3init(&in, colour.X, colour.Y, colour.Z);
    _cmsMAT3eval(&out, &back, &in);
    *result = {out.n[0], out.n[1], out.n[2]};
    return true;
}

bool ReadPrimaries(cmsHPROFILE profile, Primaries* primaries) {
    const auto* const chad = static_cast<const cmsFloat64Number*>(cmsReadTag(profile, cmsSigChromaticAdaptationTag));
    cmsMAT3 adaptation;
    for (int i = 0; i < 9 && chad != nullptr; ++i) adaptation.v[i / 3].n[i % 3] = chad[i];
    const auto* const told = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, cmsSigMediaWhitePointTag));
    const cmsCIEXYZ white = told == nullptr || !(told->X > 0 && told->Y > 0 && told->Z > 0) ? *cmsD50_XYZ() : *told;
    Chromaticity* const points[] = {&primaries->red, &primaries->green, &primaries->blue, &primaries->white};
    for (int i = 0; i < 4; ++i) {
        const auto* const colour =
            i == 3 ? cmsD50_XYZ() : static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, kColorantTags[i]));
        cmsCIEXYZ own;
        if (colour == nullptr || !Unadapted(*colour, chad == nullptr ? nullptr : &adaptation, white, &own))
            return false;
        *points[i] = ChromaticityOf(own);
    }
    return true;
}

bool ReadCurves(cmsHPROFILE profile, ColourProfile::Content* content) {
    bool identity = true;
    const cmsToneCurve* before = nullptr;  // often the three are one
    CurveFacts facts;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto* const curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, kCurveTags[i]));
        if (curve == nullptr) return false;
        if (curve != before) facts = LookAt(curve);
        before = curve;
        if (!facts.is_of_numbers) {
            cmsSignalError(cmsGetProfileContextID(profile), cmsERROR_RANGE, "a curve has values that are not numbers");
            return false;
        }
        identity = identity && facts.is_identity;
        content->gammas[i] = facts.gamma;
    }
    content->has_gammas = std::all_of(content->gammas.begin(), content->gammas.end(),
                                      [](double gamma) { return gamma >= 0.1 && gamma <= 10; });
    content->over_range = identity && content->has_matrix;
    return true;
}

/// The MD5 of the file without what says nothing of its colours: when it was made, its flags, its preferred intent, and
/// the place of the MD5 itself.
void ComputeID(cmsContext context, const std::uint8_t* file, std::size_t size, t_CMX_ID* id) {
    std::uint8_t header[128];
    std::copy_n(file, sizeof(header), header);
    for (const auto& [offset, count] : {std::pair{24, 12}, std::pair{44, 4}, std::pair{64, 4}, std::pair{84, 16}}) {
        std::fill_n(header + offset, count, std::uint8_t{0});
    }
    const cmsHANDLE sum = cmsMD5alloc(context);
    cmsMD5add(sum, header, sizeof(header));
    cmsMD5add(sum, file + sizeof(header), static_cast<cmsUInt32Number>(size - sizeof(header)));
    cmsProfileID made;
    cmsMD5finish(&made, sum);
    std::copy_n(made.ID8, sizeof(id->bytes), id->bytes);
}

ProfileClass KindOf(std::uint32_t code) {
    switch (code) {
        case CMX_Code("scnr"):
            return ProfileClass::input;
        case CMX_Code("prtr"):
            return ProfileClass::output;
        case CMX_Code("spac"):
            return ProfileClass::space;
        default:
            return ProfileClass::display;
    }
}

ColourProfile::Content ReadContent(const ColourBytes& file, const VettedICC& vetted) {
    ColourProfile::Content content{};
    content.kind = KindOf(vetted.class_code);
    content.space = vetted.space == CMX_Code("CMYK") ? ProfileSpace::cmyk : ProfileSpace::rgb;
    content.has_matrix = vetted.has_matrix;
    ColourArena arena;
    arena.must(kColour_BadProfile, "the profile is damaged", [&](cmsContext context) {
        const auto size = static_cast<cmsUInt32Number>(file.size());
        const cmsHPROFILE profile = cmsOpenProfileFromMemTHR(context, file.data(), size);
        if (profile == nullptr) return false;
        ComputeID(context, file.data(), file.size(), &content.id);
        cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", content.name.data(), sizeof(content.name));
        content.name.back() = L'\0';
        return !vetted.has_matrix || (ReadCurves(profile, &content) && ReadPrimaries(profile, &content.primaries));
    });
    return content;
}

/// The file of a profile of RGB that shows greys as this one of grey does.
ColourBytes FromGrey(const ColourBytes& grey) {
    return WriteColourFile([&](cmsContext context) -> cmsHPROFILE {
        const auto size = static_cast<cmsUInt32Number>(grey.size());
        const cmsHPROFILE profile = cmsOpenProfileFromMemTHR(context, grey.data(), size);
        if (profile == nullptr) return nullptr;
        auto* const curve = static_cast<cmsToneCurve*>(cmsReadTag(profile, cmsSigGrayTRCTag));
        if (curve == nullptr) return nullptr;
        wchar_t name[256] = {};
        cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", name, sizeof(name) - sizeof(wchar_t));
        return BuildRGBProfile(context, kRec709Primaries, curve, name);
    });
}

ColourBytes CopyOf(const std::uint8_t* bytes, std::size_t count) {
    ColourBytes copy(count);
    std::copy_n(bytes, count, copy.data());
    return copy;
}

}  // namespace

ColourBytes::ColourBytes(std::size_t size) : size_(size) {
    const TK_QuietErrors quiet;
    bytes_.reset(static_cast<std::uint8_t*>(TK_AllocatePtr(0, "profile", size)));
    if (bytes_ == nullptr) throw std::bad_alloc();
}

ColourProfileRef ReadColourProfile(const std::uint8_t* bytes, std::size_t count) {
    VettedICC vetted = VetICC(bytes, count);
    ColourBytes file = CopyOf(bytes, vetted.size);
    if (vetted.space == CMX_Code("GRAY")) {
        file = FromGrey(file);
        vetted = VetICC(file.data(), file.size());
    }
    const ColourProfile::Content content = ReadContent(file, vetted);
    return ColourProfileRef(new ColourProfile(std::move(file), content));
}

CMX_Error ColourProfile::MakeLinear(CMX_Profile** linear) const {
    return ColourBoundary([&] { *linear = MakeLinearProfile(*this).Release(); });
}

HCL_CMX_ProfilePtr OwnColourProfile(ColourProfileRef profile) {
    auto owner = boost::make_shared<HCL_CMX_Profile>(nullptr);
    *owner = HCL_CMX_Profile(profile.Release());
    return owner;
}

HCL_CMX_ProfilePtr ProfileFromICC(const void* bytes, std::size_t count, std::string* fault) {
    return ColourProfileOrFault(fault,
                                [&] { return ReadColourProfile(static_cast<const std::uint8_t*>(bytes), count); });
}

ProfileFacts FactsOf(const HCL_CMX_Profile& profile) {
    const ColourProfile::Content& content = ColourProfileOf(profile.GetProfile()).content();
    ProfileFacts facts{ToUtf8(content.name.data()), content.kind, content.space, content.has_matrix, {}, {},
                       content.over_range,          content.id};
    if (content.has_matrix) facts.primaries = content.primaries;
    if (content.has_gammas) facts.gammas = content.gammas;
    return facts;
}

std::vector<std::uint8_t> ICCOf(const HCL_CMX_Profile& profile) {
    const ColourBytes& file = ColourProfileOf(profile.GetProfile()).file();
    return {file.data(), file.data() + file.size()};
}

}  // namespace standalone
