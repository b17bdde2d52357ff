// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include "platform/standalone/SH_ColourProfile.h"

/// Profiles that are made. What takes a context is called within an arena's job.
namespace standalone {

/// A display profile of these primaries with one curve, whose colorants are ready for WriteColourFile. Null is a fault.
cmsHPROFILE BuildRGBProfile(cmsContext context, const Primaries& primaries, cmsToneCurve* curve, const wchar_t* name);
bool SetProfileName(cmsContext context, cmsHPROFILE profile, const wchar_t* name);

/// Gives a file its date: the same always, so that the same is the same file.
void FixColourFileDate(const ColourBytes& file);

/// The file of the profile that `build(context)` gives. Throws ColourFault and std::bad_alloc.
template <class Build> ColourBytes WriteColourFile(const Build& build) {
    ColourArena arena;
    cmsHPROFILE made = nullptr;
    cmsUInt32Number size = 0;
    constexpr char kWhat[] = "the profile cannot be made";
    arena.must(kColour_BadProfile, kWhat, [&](cmsContext context) {
        made = build(context);
        return made != nullptr && cmsSaveProfileToMem(made, nullptr, &size) != FALSE;
    });
    ColourBytes file(size);
    arena.must(kColour_BadProfile, kWhat,
               [&](cmsContext) { return cmsSaveProfileToMem(made, file.data(), &size) != FALSE; });
    FixColourFileDate(file);
    return file;
}

}  // namespace standalone
