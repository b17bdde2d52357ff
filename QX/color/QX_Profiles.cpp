// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_Profiles.h"

#include <boost/make_shared.hpp>

#include "QX/color/QX_ColorSettings.h"
#include "QX/color/QX_ColourEngine.h"
#include "QX/color/QX_ColourFormat.h"
#include "QX/color/QX_EngineProfile.h"
#include "QX/indep/QX_Guard.h"
#include "platform/TK_Strings.h"

namespace qx {

HCL_CMX_Profile profile_from_code(CMX_ProfileCode code) {
    CMX_Profile* profile = nullptr;
    must_call_colour_engine(&ColourEngine::ProfileFromCode, code, &profile);
    return HCL_CMX_Profile(profile);
}

HCL_CMX_Transform new_transform(const HCL_CMX_Profile& from, const HCL_CMX_Profile& to, std::int32_t intent,
                                const t_CMX_Options& options) {
    CMX_Transform* transform = nullptr;
    must_call_colour_engine(&ColourEngine::MakeColorTransform, from.GetProfile(), to.GetProfile(), intent, &options,
                            &transform);
    return HCL_CMX_Transform(transform);
}

}  // namespace qx

void QX_GetCalRGBGammas(const HCL_CMX_ProfilePtr& profile, float* red, float* green, float* blue) {
    const HCL_CMX_ProfilePtr asked = profile ? profile : HCL_CMX_GetDefaultProfile(kHCL_Gamma22);
    double gammas[3];
    qx::must_call_colour_engine(&qx::ColourEngine::ExtractCalRGB, asked->GetProfile(), &gammas[0], &gammas[1],
                                &gammas[2]);
    *red = static_cast<float>(gammas[0]);
    *green = static_cast<float>(gammas[1]);
    *blue = static_cast<float>(gammas[2]);
}

HCL_CMX_Transform QX_GetLinearizeTransform(const HCL_CMX_ProfilePtr& from, const HCL_CMX_ProfilePtr& to,
                                           HCL_CMX_WorkingGamma working_gamma, bool to_linear) {
    const HCL_CMX_ProfilePtr begin = from ? from : HCL_CMX_GetDefaultProfile(working_gamma);
    const HCL_CMX_ProfilePtr end = to ? to : HCL_CMX_GetDefaultProfile(working_gamma);
    const HCL_CMX_ProfilePtr linear = HCL_CMX_GetLinearRGBProfile(to_linear ? end : begin);
    return qx::new_transform(to_linear ? *begin : *linear, to_linear ? *linear : *end, qx::kRelativeColorimetric,
                             HCL_GetDefaultCMXOptions(nullptr));
}

HCL_CMX_Profile QX_GetPlatformDisplayProfile(void* handle) {
    CMX_Profile* profile = nullptr;
    if (handle != nullptr) {
        qx::must_call_colour_engine(&qx::ColourEngine::MonitorProfileN, handle, &profile);
    } else {
        qx::must_call_colour_engine(&qx::ColourEngine::MainMonitorProfile, &profile);
    }
    return HCL_CMX_Profile(profile);
}

HCL_CMX_ProfilePtr QX_GetRec709Profile(QX_Rec709_VARIANT variant, const HCL_CMX_ProfilePoolPtr& pool) {
    if (variant == kQX_Rec709_Gamma24) return HCL_CMX_GetRec709Gamma24ReferenceProfile(pool);
    return qx::translated([] { return boost::make_shared<HCL_CMX_Profile>(qx::profile_from_code(CMX_Code("r7hf"))); });
}

std::wstring QX_GetWorkingSpaceProfileName(const boost::shared_ptr<QX_ColorSettings>& settings) {
    return qx::translated([&] {
        const std::wstring begin =
            TK_ZStringToUTF16String("$$$/VN/QX/QX_ColorManagement/ColorProfile/PWS=Working Space - ");
        if (!settings || !settings->IsValid())
            return begin + TK_ZStringToUTF16String("$$$/VN/QX/QX_ColorManagement/ColorProfile/None=None");
        return begin + settings->GetAdjustedProfile()->GetName();
    });
}
