// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_LinearizationTables.h"

#include <array>
#include <boost/make_shared.hpp>

#include "QX/color/QX_ColourEngine.h"
#include "QX/color/QX_ColourFormat.h"
#include "QX/color/QX_EngineProfile.h"
#include "QX/color/QX_Profiles.h"
#include "QX/compositing/QX_InverseTable.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Places.h"
#include "platform/TK_Memory.h"

namespace {

using Ramp = std::array<QX_Pixel16, 256>;

/// Opaque greys of all codes of 8 bits.
Ramp grey_ramp() {
    Ramp ramp;
    for (std::uint32_t i = 0; i < ramp.size(); ++i) {
        const std::uint16_t grey = qx::ramp_value(i);
        ramp[i] = {qx::Depth16::full, grey, grey, grey};
    }
    return ramp;
}

boost::shared_ptr<QX_LinearBlendingTables> new_tables() {
    void* const block = TK_AllocatePtrClear(qx::site(qx::Place::linear_tables), "linear blending tables",
                                            sizeof(QX_LinearBlendingTables));
    if (block == nullptr) throw int{kQX_OutOfMemory};
    return {new (block) QX_LinearBlendingTables{}, &TK_FreePtr};  // frees it also when there is no memory for the count
}

boost::shared_ptr<QX_LinearBlendingTables> make_tables(HCL_CMX_ProfilePtr profile, HCL_CMX_WorkingGamma working_gamma) {
    if (!profile) profile = boost::make_shared<HCL_CMX_Profile>(qx::profile_from_code(CMX_Code("sRGB")));
    const HCL_CMX_Transform transform = QX_GetLinearizeTransform(profile, profile, working_gamma, true);
    Ramp ramp = grey_ramp();
    const t_CMX_Options options = HCL_GetDefaultCMXOptions(nullptr);
    const std::uint32_t format = qx::colour_format(16);
    qx::must_call_colour_engine(&qx::ColourEngine::ApplyTransform, transform.GetTransform(), qx::kPixelLayout,
                                ramp.data(), format, ramp.data(), format, std::int64_t{ramp.size()}, &options);
    auto tables = new_tables();
    for (std::size_t i = 0; i < ramp.size(); ++i) tables->to_linear[i] = ramp[i].red;
    qx::invert_to_linear(*tables);
    float unused;
    QX_GetCalRGBGammas(profile, &unused, &tables->to_linear_gamma, &unused);
    tables->from_linear_gamma = 1.0f / tables->to_linear_gamma;
    return tables;
}

}  // namespace

boost::shared_ptr<QX_LinearBlendingTables> QX_MakeLinearizationTables(HCL_CMX_ProfilePtr profile,
                                                                      HCL_CMX_WorkingGamma working_gamma) {
    return qx::translated([&] { return make_tables(std::move(profile), working_gamma); });
}
