// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColorSettings.h"

#include <cstring>

#include "QX/color/QX_LinearizationTables.h"
#include "QX/color/QX_Profiles.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "platform/tesselcore_Profiling.h"

namespace {

using tesselcore::debug::CodeProfiler;
using tesselcore::debug::CodeProfilerManager;
using tesselcore::debug::ProfileDataLog;

constexpr int kProfilingVolume = 6;

/// What a routine's scope is timed in, where that is asked for.
template <class Section> ProfileDataLog* section_if_profiling(const Section& section) {
    const bool asked =
        CodeProfilerManager::IsConditionalProfiling() && CodeProfilerManager::GetProfilingVolume() >= kProfilingVolume;
    return asked ? section() : nullptr;
}
#define QX_PROFILE_SCOPE(name)                                                                                         \
    const CodeProfiler profiler(section_if_profiling([] {                                                              \
        static ProfileDataLog* const log = CodeProfilerManager::CreateNewProfileDataLog("VN." name, kProfilingVolume); \
        return log;                                                                                                    \
    }))

const HCL_CMX_ProfilePoolPtr& checked(const HCL_CMX_ProfilePoolPtr& pool) {
    if (pool) return pool;
    throw qx::report_failed_verification(qx::Place::colour_settings,
                                         "You have to have a valid profile pool to set a profile.");
}

template <class T> std::int32_t order(const T& a, const T& b) { return a < b ? -1 : b < a ? 1 : 0; }

std::uintptr_t number_of(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

template <class T> void mix(tesselcore::utility::Murmur3Mixer& mixer, const T& value) {
    mixer.Mix(&value, sizeof value);
}

}  // namespace

QX_ColorSettings::QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool) : profile_pool_(checked(pool)) {}

QX_ColorSettings::QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool, const t_CMX_ID& id,
                                   HCL_CMX_WorkingGamma working_gamma, bool linearize, bool linear_blending)
    : profile_id_(id),
      linearize_(linearize),
      linear_blending_(linear_blending),
      working_gamma_(working_gamma),
      profile_pool_(checked(pool)),
      is_valid_(!HCL_EqualCMXIDs(id, CMX_EmptyProfile_ID)) {}

QX_ColorSettings::QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool, const HCL_CMX_ProfilePtr& profile,
                                   HCL_CMX_WorkingGamma working_gamma, bool linearize, bool linear_blending)
    : QX_ColorSettings(pool, qx::translated([&] { return checked(pool)->AddProfile(profile); }), working_gamma,
                       linearize, linear_blending) {}

QX_ColorSettings::QX_ColorSettings(const QX_ColorSettings& other)
    : QX_ColorSettings(other.profile_pool_, other.profile_id_, other.working_gamma_, other.linearize_,
                       other.linear_blending_) {}

HCL_CMX_ProfilePtr QX_ColorSettings::GetProfile() const {
    return is_valid_ ? profile_pool_->GetProfile(profile_id_) : HCL_CMX_ProfilePtr();
}

HCL_CMX_ProfilePtr QX_ColorSettings::GetAdjustedProfile() const {
    QX_PROFILE_SCOPE("QX_ColorSettings::GetAdjustedProfile");
    const std::lock_guard lock(lock_);
    HCL_CMX_ProfilePtr profile = GetProfile();
    if (!profile) profile = HCL_CMX_GetDefaultProfile(working_gamma_);
    if (!linearize_) return profile;
    if (!adjusted_profile_) adjusted_profile_ = HCL_CMX_GetLinearRGBProfile(profile);
    return adjusted_profile_;
}

float QX_ColorSettings::GetCalGrayGamma() const {
    QX_PROFILE_SCOPE("QX_ColorSettings::GetCalGrayGamma");
    const std::lock_guard lock(lock_);
    if (gammas_cached_ == 0) {
        QX_GetCalRGBGammas(GetAdjustedProfile(), &red_gamma_, &green_gamma_, &blue_gamma_);
        gammas_cached_ = 1;
    }
    return green_gamma_;
}

float QX_ColorSettings::DefaultWorkingGammaToFloat() const { return HCL_CMX_GetWorkingGammaAsFloat(working_gamma_); }

const QX_LinearBlendingTables* QX_ColorSettings::GetLinearBlendingTables(bool force) const {
    QX_PROFILE_SCOPE("QX_ColorSettings::GetLinearBlendingTables");
    if (!force && (!linear_blending_ || linearize_)) return nullptr;
    std::call_once(tables_once_, [this] { InitLinearBlendingTables(); });
    return tables_.get();
}

void QX_ColorSettings::InitLinearBlendingTables() const {
    tables_ = QX_MakeLinearizationTables(GetProfile(), working_gamma_);
}

Guid QX_ColorSettings::GetRenderGuid() const {
    constexpr std::uint64_t seed = 0xc29de5b8264cd69e;
    tesselcore::utility::Murmur3Mixer mixer(seed, seed);
    mixer.Mix("QX_ColorSettings", 16);
    mix(mixer, profile_id_);
    mix(mixer, std::uint8_t{linear_blending_});
    mix(mixer, std::uint8_t{linearize_});
    mix(mixer, static_cast<std::int32_t>(working_gamma_));
    mixer.Mix("CMX Options", 12);
    const t_CMX_Options options = HCL_GetDefaultCMXOptions(nullptr);
    for (std::uint32_t i = 0; i < options.count && i < std::size(options.pairs); ++i) {
        mix(mixer, options.pairs[i].key);
        mix(mixer, options.pairs[i].value);
    }
    return mixer.ToGuid();
}

std::int32_t QX_ColorSettings::GetSortOrder(const QX_ColorSettings& other) const {
    const auto pools = order(number_of(profile_pool_.get()), number_of(other.profile_pool_.get()));
    const auto profiles = pools == 0 ? order(number_of(GetProfile().get()), number_of(other.GetProfile().get())) : 0;
    const auto blending = profiles == 0 ? order(linear_blending_, other.linear_blending_) : 0;
    const auto linear = blending == 0 ? order(linearize_, other.linearize_) : 0;
    return linear == 0 ? order(working_gamma_, other.working_gamma_) : 0;
}

bool QX_ColorSettings::operator==(const QX_ColorSettings& other) const {
    if (!is_valid_ && !other.is_valid_) return working_gamma_ == other.working_gamma_;
    return is_valid_ == other.is_valid_ && linearize_ == other.linearize_ &&
           linear_blending_ == other.linear_blending_ && working_gamma_ == other.working_gamma_ &&
           profile_pool_ == other.profile_pool_ && GetProfile() == other.GetProfile();
}
