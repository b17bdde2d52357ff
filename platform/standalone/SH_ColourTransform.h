// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/standalone/SH_ColourLaw.h"
#include "platform/standalone/SH_ColourProfile.h"

namespace standalone {

/// The options that this engine knows, each where a record has it.
struct ColourOptions {
    std::optional<bool> clip;                      ///< "clip": limits float results to 0..1
    std::optional<bool> black_point_compensation;  ///< "blpc"
};
/// @param options  may be null. The "optL" of a record changes no pixel, and no other key is known.
ColourOptions ReadColourOptions(const t_CMX_Options* options);

/// From one profile to another one, with compensation of the black point and without: each is made when it is asked
/// for.
class ColourStep {
public:
    /// Throws ColourFault where no transform leads there.
    ColourStep(const ColourProfile& from, const ColourProfile& to, Intent intent);
    bool from_inks() const { return from_.get()->content().space == ProfileSpace::cmyk; }
    /// Any thread. Throws ColourFault and std::bad_alloc; the next call tries again.
    const ColourLaw& law(bool black_point_compensation) const;

private:
    ColourProfileRef from_, to_;
    Intent intent_;
    mutable OnceMade<ColourLaw> laws_[2];
};

/// Steps one after another, and options. Never changes.
class ColourTransform final : public ColourObject<CMX_Transform> {
public:
    struct Link {
        std::shared_ptr<const ColourStep> step;
        bool black_point_compensation;
    };
    ColourTransform(std::vector<Link> links, bool clip);
    const std::vector<Link>& links() const { return links_; }
    bool clip() const { return clip_; }
    /// Colours of `count` pixels, as ColourLaw::run tells. Throws ColourFault and std::bad_alloc.
    void apply(const void* src, ColourLayout from, void* dst, ColourDepth to, std::int64_t count,
               const ColourOptions& options) const;

private:
    void apply_steps(const void* src, ColourLayout from, void* dst, ColourDepth to, std::int64_t count,
                     const ColourOptions& options, bool clip) const;

    std::vector<Link> links_;
    bool clip_;
};
using ColourTransformRef = HCL_CMX_Reference<ColourTransform>;

/// Every CMX_Transform that reaches this engine is one of its own.
inline const ColourTransform& ColourTransformOf(const CMX_Transform* transform) {
    return *static_cast<const ColourTransform*>(transform);
}

ColourTransformRef MakeColourTransform(const ColourProfile& from, const ColourProfile& to, Intent intent,
                                       const ColourOptions& options);
ColourTransformRef JoinColourTransforms(const ColourTransform& first, const ColourTransform& second);
/// The same with other options, where a record has them.
ColourTransformRef ChangeColourTransform(const ColourTransform& transform, const ColourOptions& options);

}  // namespace standalone
