// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/HCL_CMX.h"
#include "platform/Platform_Export.h"

/// The stand-alone colour engine: profiles that are made and read, what they are, and transforms between them. Any
/// thread. What fails gives null with one line of plain words in `*fault`, which may be null; what has no `fault` fails
/// for want of memory alone, and throws std::bad_alloc.
namespace standalone {

/// The words for want of memory, which is no fault of what was asked for.
inline constexpr const char* kNoMemoryForColours = "out of memory";

/// A point of the CIE 1931 diagram.
struct Chromaticity {
    double x, y;
};
struct Primaries {
    Chromaticity red, green, blue, white;
};
/// From stored values to light. `rec709` is the curve of its cameras.
enum class ToneCurve { linear, power, srgb, rec709 };
struct ProfileRecipe {
    std::string name;
    Primaries primaries;
    ToneCurve curve;
    double exponent = 1;  ///< of a power
};
inline constexpr Primaries kRec709Primaries{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, {0.3127, 0.3290}};

PLATFORM_EXPORT HCL_CMX_ProfilePtr MakeProfile(const ProfileRecipe& recipe, std::string* fault);

/// "srgb", "rec709", "rec709-2.4", "display-p3", "rec2020"; "linear-" before any of them, "linear" for that of sRGB;
/// "gamma-" and an exponent for a power with the primaries of sRGB.
PLATFORM_EXPORT HCL_CMX_ProfilePtr NamedProfile(const std::string& name, std::string* fault);
/// Names that stand for one profile each, for messages and suggestions.
PLATFORM_EXPORT std::vector<std::string> ProfileNames();
/// A name, or else the path of an ICC file.
PLATFORM_EXPORT HCL_CMX_ProfilePtr ProfileByNameOrFile(const std::string& text, std::string* fault);

/// Copies the bytes of an ICC file. Profiles of grey become those of RGB with their curve and the primaries of sRGB;
/// those of CMYK can be a source alone. Refused is what is above 64 MB or damaged, a version above 4, a class that is
/// not display, input, output or colour space, a device space that is not RGB, grey or CMYK, grey by lightness,
/// colorants without an inverse, tables of processing elements and values that are not numbers.
PLATFORM_EXPORT HCL_CMX_ProfilePtr ProfileFromICC(const void* bytes, std::size_t count, std::string* fault);

enum class ProfileSpace { rgb, cmyk };
enum class ProfileClass { input, display, output, space };
struct ProfileFacts {
    std::string name;  ///< UTF-8
    ProfileClass kind;
    ProfileSpace space;
    bool has_matrix;  ///< curves and a matrix, else tables
    /// Of a profile with a matrix: what it was made of, its adaptation to the white of profiles undone.
    std::optional<Primaries> primaries;
    std::optional<std::array<double, 3>> gammas;  ///< as the engine's ExtractCalRGB tells them
    bool over_range;
    t_CMX_ID id;
};
PLATFORM_EXPORT ProfileFacts FactsOf(const HCL_CMX_Profile& profile);
/// The file of a profile. Of one that was read these are its bytes, but for grey.
PLATFORM_EXPORT std::vector<std::uint8_t> ICCOf(const HCL_CMX_Profile& profile);

enum class Intent : std::int32_t { perceptual = 0, relative = 1, saturation = 2, absolute = 3 };
/// Made transforms are kept until `ForgetTransforms`, by both profiles' ids, the intent and the compensation.
PLATFORM_EXPORT HCL_CMX_Transform MakeTransform(const HCL_CMX_Profile& from, const HCL_CMX_Profile& to, Intent intent,
                                                bool black_point_compensation, std::string* fault);
PLATFORM_EXPORT void ForgetTransforms();

PLATFORM_EXPORT HCL_CMX_ProfilePoolPtr NewProfilePool();

/// What both procedures for profiles of displays answer; null gives what QX_DISPLAY_PROFILE in the environment names,
/// else sRGB, back.
PLATFORM_EXPORT void SetDisplayProfile(const HCL_CMX_ProfilePtr& profile);

/// What went wrong in the engine last on this thread, in plain words; empty when nothing did.
PLATFORM_EXPORT std::string LastColourFault();

}  // namespace standalone
