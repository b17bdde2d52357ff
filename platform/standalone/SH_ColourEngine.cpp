// SPDX-License-Identifier: Apache-2.0
// The engine's procedures, and what the host answers of the engine itself.
#include "platform/standalone/SH_ColourEngine.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/standalone/SH_ColourTransform.h"

namespace standalone {
namespace {

// --- the display -----------------------------------------------------------------------------------
struct Display {
    std::mutex mutex;
    HCL_CMX_ProfilePtr chosen;
};
Display& TheDisplay() {
    static Display display;
    return display;
}

CMX_Profile* DisplayProfile() {
    Display& display = TheDisplay();
    {
        const std::lock_guard lock(display.mutex);
        if (display.chosen != nullptr) {
            display.chosen->GetProfile()->Reference();
            return display.chosen->GetProfile();
        }
    }
    const char* const named = std::getenv("QX_DISPLAY_PROFILE");
    return ColourProfileByNameOrFile(named == nullptr || *named == '\0' ? "srgb" : named).Release();
}

// --- arguments -------------------------------------------------------------------------------------
void MustArgument(bool holds, const char* why) {
    if (!holds) throw ColourFault(kColour_BadArgument, why);
}
template <class... Pointers> void MustBeThere(const Pointers*... pointers) {
    MustArgument((... && (pointers != nullptr)), "an argument is null");
}

ColourLayout SourceLayout(std::uint32_t format) {
    switch (format) {
        case CMX_Code("prgb"):
            return {ColourDepth::eight, false};
        case CMX_Code("PRGB"):
            return {ColourDepth::sixteen, false};
        case CMX_Code("fRGB"):
            return {ColourDepth::real, false};
        case CMX_Code("cmyw"):
            return {ColourDepth::eight, true};
        case CMX_Code("CMYK"):
            return {ColourDepth::sixteen, true};
        default:
            throw ColourFault(kColour_BadArgument, "the format of the pixels is unknown");
    }
}

ColourDepth TargetDepth(std::uint32_t format) {
    const ColourLayout layout = SourceLayout(format);
    MustArgument(!layout.inks, "pixels are not written as inks");
    return layout.depth;
}

// --- procedures ------------------------------------------------------------------------------------
CMX_Error ProfileFromCode(CMX_ProfileCode code, CMX_Profile** profile) {
    return ColourBoundary([&] {
        MustBeThere(profile);
        MustArgument(code == CMX_Code("sRGB") || code == CMX_Code("r7hf"), "no profile has this code");
        *profile = MustNamedProfile(code == CMX_Code("sRGB") ? "srgb" : "rec709").Release();
    });
}

CMX_Error MainMonitorProfile(CMX_Profile** profile) {
    return ColourBoundary([&] {
        MustBeThere(profile);
        *profile = DisplayProfile();
    });
}

CMX_Error MonitorProfileN(void*, CMX_Profile** profile) { return MainMonitorProfile(profile); }

CMX_Error MakeColorTransform(CMX_Profile* from, CMX_Profile* to, std::int32_t intent, const t_CMX_Options* options,
                             CMX_Transform** transform) {
    return ColourBoundary([&] {
        MustBeThere(from, to, transform);
        MustArgument(intent >= 0 && intent <= 3, "the intent is unknown");
        *transform = MakeColourTransform(ColourProfileOf(from), ColourProfileOf(to), static_cast<Intent>(intent),
                                         ReadColourOptions(options))
                         .Release();
    });
}

CMX_Error ReferenceTransform(CMX_Transform* transform) {
    return ColourBoundary([&] {
        MustBeThere(transform);
        transform->Reference();
    });
}

CMX_Error UnReferenceTransform(CMX_Transform* transform) {
    return ColourBoundary([&] {
        MustBeThere(transform);
        transform->UnReference();
    });
}

CMX_Error ApplyTransform(CMX_Transform* transform, std::uint32_t layout, const void* src, std::uint32_t src_format,
                         void* dst, std::uint32_t dst_format, std::int64_t count, const t_CMX_Options* options) {
    return ColourBoundary([&] {
        MustBeThere(transform);
        MustArgument(layout == CMX_Code("ctpk"), "the layout of the pixels is unknown");
        MustArgument(count >= 0, "the count of pixels is negative");
        const ColourLayout from = SourceLayout(src_format);
        const ColourDepth to = TargetDepth(dst_format);
        if (count == 0) return;
        MustBeThere(src, dst);
        ColourTransformOf(transform).apply(src, from, dst, to, count, ReadColourOptions(options));
    });
}

CMX_Error ConcatTransforms(CMX_Transform* first, CMX_Transform* second, CMX_Transform** both) {
    return ColourBoundary([&] {
        MustBeThere(first, second, both);
        *both = JoinColourTransforms(ColourTransformOf(first), ColourTransformOf(second)).Release();
    });
}

CMX_Error OptimizeTransform(CMX_Transform* transform, const t_CMX_Options* options, CMX_Transform** fast) {
    return ColourBoundary([&] {
        MustBeThere(transform, fast);
        *fast = ChangeColourTransform(ColourTransformOf(transform), ReadColourOptions(options)).Release();
    });
}

CMX_Error ExtractCalRGB(CMX_Profile* profile, double* red, double* green, double* blue) {
    return ColourBoundary([&] {
        MustBeThere(profile, red, green, blue);
        const ColourProfile::Content& content = ColourProfileOf(profile).content();
        if (!content.has_gammas) throw ColourFault(kColour_BadProfile, "the profile has no gammas from 0.1 to 10");
        *red = content.gammas[0];
        *green = content.gammas[1];
        *blue = content.gammas[2];
    });
}

struct Procedure {
    const char* name;
    void* address;
};
template <class Fn> void* AddressOf(Fn* procedure) { return reinterpret_cast<void*>(procedure); }

t_CMX_Options OptionsOf(std::initializer_list<t_CMX_Option> pairs) {
    t_CMX_Options options{};
    for (const t_CMX_Option& pair : pairs) options.pairs[options.count++] = pair;
    return options;
}

}  // namespace

void* FindColourProcedure(const char* label, const char* name) {
#define PROCEDURE(name) \
    { #name, AddressOf < CMX::name>(name) }
    static const Procedure kProcedures[] = {
        PROCEDURE(ProfileFromCode),    PROCEDURE(MainMonitorProfile), PROCEDURE(MonitorProfileN),
        PROCEDURE(MakeColorTransform), PROCEDURE(ReferenceTransform), PROCEDURE(UnReferenceTransform),
        PROCEDURE(ApplyTransform),     PROCEDURE(ConcatTransforms),   PROCEDURE(OptimizeTransform),
        PROCEDURE(ExtractCalRGB),
    };
#undef PROCEDURE
    if (std::strcmp(label, kCMX_Label) != 0) return nullptr;
    for (const Procedure& procedure : kProcedures) {
        if (std::strcmp(name, procedure.name) == 0) return procedure.address;
    }
    return nullptr;
}

void SetDisplayProfile(const HCL_CMX_ProfilePtr& profile) {
    Display& display = TheDisplay();
    const std::lock_guard lock(display.mutex);
    display.chosen = profile;
}

}  // namespace standalone

void HCL_CMX_ETX(CMX_Error error) {
    if (error != 0) throw static_cast<int>(error);
}

t_CMX_Options HCL_GetDefaultCMXOptions(bool* out_flag) {
    if (out_flag != nullptr) *out_flag = false;
    return standalone::OptionsOf({{CMX_Code("optL"), 0}});
}

t_CMX_Options HCL_GetFastCMXOptions() {
    return standalone::OptionsOf({{CMX_Code("optL"), 100}, {CMX_Code("clip"), 1}});
}
