// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <mutex>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_LinearTables.h"
#include "platform/HCL_CMX.h"
#include "platform/tesselcore_Guid.h"

/// A render's choices of colour: a profile, whether to work in its linear version, whether to blend in linear light,
/// and the gamma that stands where there is no profile. What it is made of never changes; answers that cost much are
/// kept once they were asked for. Any number of threads may ask one object. What the engine throws passes through, and
/// the next call tries again.
class QX_EXPORT QX_ColorSettings {
public:
    /// Throw 3 after a report without a pool.
    explicit QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool);
    QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool, const HCL_CMX_ProfilePtr& profile,
                     HCL_CMX_WorkingGamma working_gamma, bool linearize, bool linear_blending);
    QX_ColorSettings(const HCL_CMX_ProfilePoolPtr& pool, const t_CMX_ID& id, HCL_CMX_WorkingGamma working_gamma,
                     bool linearize, bool linear_blending);
    /// The same choices, without the answers.
    QX_ColorSettings(const QX_ColorSettings& other);
    QX_ColorSettings& operator=(const QX_ColorSettings&) = delete;
    ~QX_ColorSettings() = default;

    const t_CMX_ID& GetProfileID() const { return profile_id_; }
    const HCL_CMX_ProfilePoolPtr& GetProfilePool() const { return profile_pool_; }
    /// Null without a profile, and for an id that the pool does not know.
    HCL_CMX_ProfilePtr GetProfile() const;
    /// The profile that is worked in: where there is none that of the gamma, and its linear version where `linearize`
    /// asks for that. Never null.
    HCL_CMX_ProfilePtr GetAdjustedProfile() const;
    /// The exponent of that profile's green.
    float GetCalGrayGamma() const;
    bool GetLinearize() const { return linearize_; }
    bool GetLinearBlending() const { return linear_blending_; }
    HCL_CMX_WorkingGamma GetDefaultWorkingGamma() const { return working_gamma_; }
    float DefaultWorkingGammaToFloat() const;
    /// For blending in linear light; they live as long as this object. Null where it is not asked for, or where the
    /// world is light already.
    /// @param force  makes them in any case
    const QX_LinearBlendingTables* GetLinearBlendingTables(bool force) const;
    /// Differs where a render may. Equal on all machines and in all processes.
    Guid GetRenderGuid() const;
    /// Kept: -1, 0 or 1 by a chain of five comparisons of which a later one hides what an earlier one found, so that it
    /// orders pairs and no sequence: it is not for a sorting container.
    std::int32_t GetSortOrder(const QX_ColorSettings& other) const;
    /// Coarser than GetRenderGuid: settings without a profile are equal by the gamma alone.
    bool operator==(const QX_ColorSettings& other) const;
    bool operator!=(const QX_ColorSettings& other) const { return !(*this == other); }
    bool IsValid() const { return is_valid_; }  ///< whether there is a profile

private:
    void InitLinearBlendingTables() const;

    mutable std::int32_t gammas_cached_ = 0;
    mutable float red_gamma_ = 0, green_gamma_ = 0, blue_gamma_ = 0;
    t_CMX_ID profile_id_ = CMX_EmptyProfile_ID;
    mutable HCL_CMX_ProfilePtr adjusted_profile_{};
    bool linearize_ = false, linear_blending_ = false;
    HCL_CMX_WorkingGamma working_gamma_ = kHCL_Gamma22;
    mutable std::once_flag tables_once_{};
    mutable boost::shared_ptr<QX_LinearBlendingTables> tables_{};
    HCL_CMX_ProfilePoolPtr profile_pool_;
    bool is_valid_ = false;
    mutable std::recursive_mutex lock_{};  ///< of the adjusted profile and the gammas
};
