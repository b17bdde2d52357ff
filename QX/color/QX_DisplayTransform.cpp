// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColourEngine.h"
#include "QX/color/QX_ColourFormat.h"
#include "QX/color/QX_EngineProfile.h"
#include "QX/color/QX_Profiles.h"
#include "QX/indep/QX_Guard.h"
#include "platform/OPT_Preferences.h"

namespace {

bool limits_over_range() {
    std::string text;
    qx::throw_if(OPT_GetTextPrefData("Display Transform Section",
                                     "Clip over range in Display Transform when not Theater Preview", "1", &text));
    return text != "0";
}

HCL_CMX_Transform joined(const HCL_CMX_Transform& first, const HCL_CMX_Transform& second) {
    CMX_Transform* both = nullptr;
    qx::must_call_colour_engine(&qx::ColourEngine::ConcatTransforms, first.GetTransform(), second.GetTransform(),
                                &both);
    return HCL_CMX_Transform(both);
}

HCL_CMX_Transform referenced(const HCL_CMX_Transform& transform) {
    qx::must_call_colour_engine(&qx::ColourEngine::ReferenceTransform, transform.GetTransform());
    return HCL_CMX_Transform(transform.GetTransform());
}

HCL_CMX_Transform optimized(const HCL_CMX_Transform& transform) {
    const t_CMX_Options options{.count = 1, .pairs = {{CMX_Code("optL"), 100}}};
    CMX_Transform* fast = nullptr;
    qx::must_call_colour_engine(&qx::ColourEngine::OptimizeTransform, transform.GetTransform(), &options, &fast);
    return HCL_CMX_Transform(fast);
}

/// What is over range keeps its white; all else is relative to it.
std::int32_t intent_of(bool over_range) { return over_range ? qx::kAbsoluteColorimetric : qx::kRelativeColorimetric; }

/// By an output device. @param options  of the last step
HCL_CMX_Transform by_output(const HCL_CMX_Profile& source, const HCL_CMX_Profile& monitor,
                            const HCL_CMX_Profile* simulation, const HCL_CMX_Profile& output, bool keep_simulation_out,
                            const t_CMX_Options& options) {
    const t_CMX_Options standard = HCL_GetDefaultCMXOptions(nullptr);
    const HCL_CMX_Transform final = qx::new_transform(output, monitor, qx::kRelativeColorimetric, options);
    if (simulation != nullptr) {
        const bool over = source.IsOverRange() || simulation->IsOverRange();
        HCL_CMX_Transform first = qx::new_transform(source, *simulation, intent_of(over), standard);
        if (!keep_simulation_out) {
            first = joined(first, qx::new_transform(*simulation, output, qx::kRelativeColorimetric, standard));
        }
        return joined(first, final);
    }
    if (keep_simulation_out) return referenced(final);
    return joined(qx::new_transform(source, output, intent_of(source.IsOverRange()), standard), final);
}

}  // namespace

HCL_CMX_Transform QX_NewDisplayTransform(const HCL_CMX_Profile& source, const HCL_CMX_Profile& monitor,
                                         const HCL_CMX_Profile* simulation, const HCL_CMX_Profile* output,
                                         bool keep_simulation_out, bool optimize) {
    const bool fast = qx::translated(&limits_over_range) || optimize;
    const auto options = [](bool is_fast) {
        return is_fast ? HCL_GetFastCMXOptions() : HCL_GetDefaultCMXOptions(nullptr);
    };
    const bool over = source.IsOverRange();
    HCL_CMX_Transform made = output == nullptr
                                 ? qx::new_transform(source, monitor, intent_of(over), options(!over))
                                 : by_output(source, monitor, simulation, *output, keep_simulation_out, options(fast));
    return optimize ? optimized(made) : std::move(made);
}
