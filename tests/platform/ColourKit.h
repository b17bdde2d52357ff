// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include "platform/standalone/Colour.h"
#include "platform/standalone/SH_ColourEngine.h"
#include "tests/support/Test.h"

/// What tests of the colour engine share: its procedures, pixels, files that are built, and the colour library by
/// itself.
namespace qx::test {

using standalone::FactsOf;
using standalone::ICCOf;
using standalone::Intent;
using standalone::NamedProfile;
using ICC = std::vector<std::uint8_t>;
using Colour = std::array<float, 3>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// A procedure of the engine: `engine<CMX::ApplyTransform>("ApplyTransform")`.
template <class Fn> Fn* engine(const char* name) {
    return reinterpret_cast<Fn*>(standalone::FindColourProcedure(kCMX_Label, name));
}
#define QX_ENGINE(name) engine<CMX::name>(#name)

inline constexpr std::uint32_t kBytes = CMX_Code("prgb"), kWords = CMX_Code("PRGB"), kFloats = CMX_Code("fRGB");

inline t_CMX_Options options(std::initializer_list<t_CMX_Option> pairs) {
    t_CMX_Options made{};
    for (const auto& pair : pairs) made.pairs[made.count++] = pair;
    return made;
}

inline CMX_Error apply(CMX_Transform* transform, const void* src, std::uint32_t from, void* dst, std::uint32_t to,
                       std::size_t count, const t_CMX_Options* with = nullptr) {
    return QX_ENGINE(ApplyTransform)(transform, CMX_Code("ctpk"), src, from, dst, to, static_cast<std::int64_t>(count),
                                     with);
}

/// A profile by its name; the test ends where there is none.
inline HCL_CMX_ProfilePtr named(const std::string& name) {
    std::string fault;
    auto profile = NamedProfile(name, &fault);
    if (profile == nullptr) throw std::runtime_error(fault);
    return profile;
}
inline HCL_CMX_ProfilePtr read(const ICC& file, std::string* fault = nullptr) {
    return standalone::ProfileFromICC(file.data(), file.size(), fault);
}
/// Of a file that is in order.
inline HCL_CMX_ProfilePtr must_read(const ICC& file) {
    std::string fault;
    auto profile = read(file, &fault);
    if (profile == nullptr) throw std::runtime_error(fault);
    return profile;
}
inline HCL_CMX_Transform link(const HCL_CMX_ProfilePtr& from, const HCL_CMX_ProfilePtr& to,
                              Intent intent = Intent::relative, const t_CMX_Options* with = nullptr) {
    CMX_Transform* made = nullptr;
    const CMX_Error error = QX_ENGINE(MakeColorTransform)(from->GetProfile(), to->GetProfile(),
                                                          static_cast<std::int32_t>(intent), with, &made);
    EXPECT_EQ(error, 0) << standalone::LastColourFault();
    return HCL_CMX_Transform(made);
}

// --- the colour library by itself ------------------------------------------------------------------
inline std::shared_ptr<void> open(const ICC& file) {
    return {cmsOpenProfileFromMem(file.data(), static_cast<cmsUInt32Number>(file.size())), cmsCloseProfile};
}

/// Its exact form: floats, not optimised, nothing remembered.
class Exact {
public:
    Exact(const ICC& from, const ICC& to, Intent intent = Intent::relative, cmsUInt32Number flags = 0,
          cmsUInt32Number source = TYPE_RGB_FLT)
        : transform_(
              cmsCreateTransform(open(from).get(), source, open(to).get(), TYPE_RGB_FLT,
                                 static_cast<cmsUInt32Number>(intent), flags | cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE),
              cmsDeleteTransform) {}
    template <class Channels> Colour operator()(const Channels& in) const {
        Colour out;
        cmsDoTransform(transform_.get(), in.data(), out.data(), 1);
        return out;
    }

private:
    std::shared_ptr<void> transform_;
};

inline ICC saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    ICC file(size);
    cmsSaveProfileToMem(profile, file.data(), &size);
    cmsCloseProfile(profile);
    return file;
}

/// A profile of tables: of RGB both ways, of four inks as a source.
inline ICC table_profile(int channels, double version) {
    const auto sample = [](const cmsUInt16Number* in, cmsUInt16Number* out, void* inks) -> cmsInt32Number {
        const int dark = inks == nullptr ? 0 : in[3];
        const int light = inks == nullptr ? (in[0] + 2 * in[1] + in[2]) / 4 : 65535 - (in[0] + in[1] + in[2]) / 3;
        out[0] = static_cast<cmsUInt16Number>(std::max(light - dark / 2, 0));
        out[1] = static_cast<cmsUInt16Number>(32768 + (in[0] - in[1]) / 8);
        out[2] = static_cast<cmsUInt16Number>(32768 + (in[1] - in[2]) / 8);
        return TRUE;
    };
    const auto table = [&](int inputs) {
        cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, static_cast<cmsUInt32Number>(inputs), 3);
        cmsStage* const grid = cmsStageAllocCLut16bit(nullptr, 5, static_cast<cmsUInt32Number>(inputs), 3, nullptr);
        int any = 0;
        cmsStageSampleCLut16bit(grid, sample, inputs == 4 ? &any : nullptr, 0);
        const auto channels_in = static_cast<cmsUInt32Number>(inputs);
        cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, channels_in, nullptr));
        cmsPipelineInsertStage(pipeline, cmsAT_END, grid);
        cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
        return std::shared_ptr<cmsPipeline>(pipeline, cmsPipelineFree);
    };
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, version);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, channels == 4 ? cmsSigCmykData : cmsSigRgbData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsWriteTag(profile, cmsSigAToB0Tag, table(channels).get());
    if (channels == 3) cmsWriteTag(profile, cmsSigBToA0Tag, table(3).get());
    return saved(profile);
}

/// A profile of sRGB's primaries with this curve, as other programs write them.
inline ICC curve_profile(cmsToneCurve* curve, double version) {
    const cmsCIExyY white{0.3127, 0.329, 1};
    const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* const curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsSetProfileVersion(profile, version);
    cmsFreeToneCurve(curve);
    return saved(profile);
}
inline ICC grey_profile(double gamma) {
    const std::shared_ptr<cmsToneCurve> curve(cmsBuildGamma(nullptr, gamma), cmsFreeToneCurve);
    return saved(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
}
/// A curve of a table.
inline cmsToneCurve* tabulated(int entries, double gamma) {
    std::vector<cmsUInt16Number> table(static_cast<std::size_t>(entries));
    for (int i = 0; i < entries; ++i) {
        const double y = std::pow(static_cast<double>(i) / (entries - 1), gamma);
        table[static_cast<std::size_t>(i)] = static_cast<cmsUInt16Number>(std::lround(65535 * y));
    }
    return cmsBuildTabulatedToneCurve16(nullptr, static_cast<cmsUInt32Number>(entries), table.data());
}

}  // namespace qx::test
