// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/Platform_Export.h"

/// The colour engine. It has its own codes of errors, of which 0 is none.
using CMX_Error = std::int32_t;

/// Four characters as a number, the first in the highest byte.
constexpr std::uint32_t CMX_Code(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}
inline constexpr auto kCMX_NotLoaded = static_cast<CMX_Error>(CMX_Code("gen "));

/// Throws an engine's error as an `int`.
PLATFORM_EXPORT void HCL_CMX_ETX(CMX_Error error);

// --- options ---------------------------------------------------------------------------------------
struct t_CMX_Option {
    std::uint32_t key, value;
};
/// Of the pairs the first `count` hold, never more than there are.
struct t_CMX_Options {
    std::uint32_t count;
    t_CMX_Option pairs[10];
};
static_assert(sizeof(t_CMX_Options) == 84);

/// @param out_flag  gets false; may be null
PLATFORM_EXPORT t_CMX_Options HCL_GetDefaultCMXOptions(bool* out_flag);
PLATFORM_EXPORT t_CMX_Options HCL_GetFastCMXOptions();

// --- the engine's objects --------------------------------------------------------------------------
/// What a profile or a transform of an engine is to all others. The last reference that is given back ends it. Any
/// thread.
class CMX_Object {
public:
    virtual void Reference() = 0;
    virtual void UnReference() = 0;

protected:
    ~CMX_Object() = default;
};
class CMX_Transform : public CMX_Object {};

/// Tells what the content of a profile is; all zeros stand for no profile.
struct t_CMX_ID {
    std::uint8_t bytes[16];
};
PLATFORM_EXPORT extern const t_CMX_ID CMX_EmptyProfile_ID;
PLATFORM_EXPORT bool HCL_EqualCMXIDs(const t_CMX_ID& a, const t_CMX_ID& b);

class CMX_Profile : public CMX_Object {
public:
    virtual std::wstring Name() const = 0;
    virtual bool IsOverRange() const = 0;  ///< whether its values go above 1
    virtual t_CMX_ID ID() const = 0;
    /// A profile of the same colorants and white whose values are light. @return an error where there is none
    virtual CMX_Error MakeLinear(CMX_Profile** linear) const = 0;
};

/// A number that a profile is made from.
using CMX_ProfileCode = std::uint32_t;

/// The engine's procedures, which the registry has under their names with the label kCMX_Label. Results come with one
/// reference, which is the caller's. Pixels are in memory as their format tells: "prgb", "PRGB" and "fRGB" are alpha,
/// red, green and blue of 8 bits, of 16 bits on 0..32768 and in floats; "cmyw" and "CMYK" are the four inks of 8 and 16
/// bits, of which 0 is none. Alpha is the engine's matter.
namespace CMX {

using ProfileFromCode = CMX_Error(CMX_ProfileCode code, CMX_Profile** profile);
using MainMonitorProfile = CMX_Error(CMX_Profile** profile);
using MonitorProfileN = CMX_Error(void* display, CMX_Profile** profile);
using MakeColorTransform = CMX_Error(CMX_Profile* from, CMX_Profile* to, std::int32_t intent,
                                     const t_CMX_Options* options, CMX_Transform** transform);
using ReferenceTransform = CMX_Error(CMX_Transform* transform);
using UnReferenceTransform = CMX_Error(CMX_Transform* transform);
/// @param layout  "ctpk": the channels of a pixel side by side, pixels too
using ApplyTransform = CMX_Error(CMX_Transform* transform, std::uint32_t layout, const void* src,
                                 std::uint32_t src_format, void* dst, std::uint32_t dst_format, std::int64_t count,
                                 const t_CMX_Options* options);
/// One transform and then another.
using ConcatTransforms = CMX_Error(CMX_Transform* first, CMX_Transform* second, CMX_Transform** both);
using OptimizeTransform = CMX_Error(CMX_Transform* transform, const t_CMX_Options* options, CMX_Transform** fast);
using ExtractCalRGB = CMX_Error(CMX_Profile* profile, double* red, double* green, double* blue);

}  // namespace CMX

inline constexpr char kCMX_Label[] = "CMXInterface2";

// --- owners ----------------------------------------------------------------------------------------
/// Owns one reference.
template <class Object> class HCL_CMX_Reference {
public:
    HCL_CMX_Reference() = default;
    explicit HCL_CMX_Reference(Object* object) : object_(object) {}
    HCL_CMX_Reference(HCL_CMX_Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    HCL_CMX_Reference& operator=(HCL_CMX_Reference&& other) noexcept {
        Reset(std::exchange(other.object_, nullptr));
        return *this;
    }
    ~HCL_CMX_Reference() { Reset(nullptr); }
    /// Gives the reference back and takes over that of another object, or none.
    void Reset(Object* object) {
        if (Object* const old = std::exchange(object_, object)) old->UnReference();
    }
    Object* get() const { return object_; }
    /// Hands the reference to the caller.
    Object* Release() { return std::exchange(object_, nullptr); }

private:
    Object* object_ = nullptr;
};

class HCL_CMX_Transform : public HCL_CMX_Reference<CMX_Transform> {
public:
    using HCL_CMX_Reference::HCL_CMX_Reference;
    CMX_Transform* GetTransform() const { return get(); }
};

class HCL_CMX_Profile {
public:
    /// Takes the caller's reference over.
    explicit HCL_CMX_Profile(CMX_Profile* profile) : profile_(profile) {}
    CMX_Profile* GetProfile() const { return profile_.get(); }
    std::wstring GetName() const { return profile_.get()->Name(); }
    bool IsOverRange() const { return profile_.get()->IsOverRange(); }

private:
    HCL_CMX_Reference<CMX_Profile> profile_;
};
using HCL_CMX_ProfilePtr = boost::shared_ptr<HCL_CMX_Profile>;

/// Profiles by their ids, each kept for the pool's whole life. Any thread. The host's throws std::bad_alloc.
class HCL_CMX_ProfilePool {
public:
    virtual ~HCL_CMX_ProfilePool() = default;
    /// @return the id under which this content is known; the empty one for null
    virtual t_CMX_ID AddProfile(const HCL_CMX_ProfilePtr& profile) = 0;
    /// The object that came first with this id; null for an unknown one.
    virtual HCL_CMX_ProfilePtr GetProfile(const t_CMX_ID& id) const = 0;
};
using HCL_CMX_ProfilePoolPtr = boost::shared_ptr<HCL_CMX_ProfilePool>;

// --- profiles of the host --------------------------------------------------------------------------
/// The gamma that stands where no profile is given: 1.8, 2.2 or 2.4. Other numbers are as kHCL_Gamma22.
enum HCL_CMX_WorkingGamma : std::int32_t { kHCL_Gamma18 = 0, kHCL_Gamma22 = 1, kHCL_Gamma24 = 2 };
PLATFORM_EXPORT float HCL_CMX_GetWorkingGammaAsFloat(HCL_CMX_WorkingGamma gamma);

/// These throw the engine's error as an `int`, and never give null.
PLATFORM_EXPORT HCL_CMX_ProfilePtr HCL_CMX_GetDefaultProfile(HCL_CMX_WorkingGamma gamma);
PLATFORM_EXPORT HCL_CMX_ProfilePtr HCL_CMX_GetLinearRGBProfile(const HCL_CMX_ProfilePtr& profile);
/// @param pool  keeps the profile; may be null
PLATFORM_EXPORT HCL_CMX_ProfilePtr HCL_CMX_GetRec709Gamma24ReferenceProfile(const HCL_CMX_ProfilePoolPtr& pool);
