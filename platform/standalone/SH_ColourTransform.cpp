// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourTransform.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>

namespace standalone {
namespace {

/// Pixels between two steps.
constexpr std::int64_t kRun = 256;
using Between = std::array<std::array<float, 4>, kRun>;

std::size_t BytesOf(ColourDepth depth) {
    switch (depth) {
        case ColourDepth::eight:
            return 4;
        case ColourDepth::sixteen:
            return 8;
        default:
            return 16;
    }
}

constexpr ColourLayout kFloats{ColourDepth::real, false};

}  // namespace

ColourOptions ReadColourOptions(const t_CMX_Options* options) {
    ColourOptions read;
    if (options == nullptr) return read;
    const std::size_t count = std::min<std::size_t>(options->count, std::size(options->pairs));
    for (std::size_t i = 0; i < count; ++i) {
        const t_CMX_Option& option = options->pairs[i];
        if (option.key == CMX_Code("clip")) read.clip = option.value != 0;
        if (option.key == CMX_Code("blpc")) read.black_point_compensation = option.value != 0;
    }
    return read;
}

ColourStep::ColourStep(const ColourProfile& from, const ColourProfile& to, Intent intent) : intent_(intent) {
    if (to.content().space != ProfileSpace::rgb) {
        throw ColourFault(kColour_BadProfile, "a profile of inks can be a source alone");
    }
    const auto held = [](const ColourProfile& profile) {
        auto* const object = const_cast<ColourProfile*>(&profile);  // for its count of references
        object->Reference();
        return ColourProfileRef(object);
    };
    from_ = held(from);
    to_ = held(to);
}

const ColourLaw& ColourStep::law(bool black_point_compensation) const {
    return *laws_[black_point_compensation ? 1 : 0].get(
        [&] { return std::make_unique<const ColourLaw>(*from_.get(), *to_.get(), intent_, black_point_compensation); });
}

/// Makes what the links need, so that a way that there is not shows here.
ColourTransform::ColourTransform(std::vector<Link> links, bool clip) : links_(std::move(links)), clip_(clip) {
    for (const Link& link : links_) link.step->law(link.black_point_compensation);
}

void ColourTransform::apply(const void* src, ColourLayout from, void* dst, ColourDepth to, std::int64_t count,
                            const ColourOptions& options) const {
    if (links_.front().step->from_inks() != from.inks) {
        throw ColourFault(kColour_BadArgument, "the pixels are not of the kind that the transform takes");
    }
    apply_steps(src, from, dst, to, count, options, options.clip.value_or(clip_));
}

void ColourTransform::apply_steps(const void* src, ColourLayout from, void* dst, ColourDepth to, std::int64_t count,
                                  const ColourOptions& options, bool clip) const {
    const auto law = [&](const Link& link) -> const ColourLaw& {
        return link.step->law(options.black_point_compensation.value_or(link.black_point_compensation));
    };
    if (links_.size() == 1) return law(links_[0]).run(src, from, dst, to, clip, count);
    for (const Link& link : links_) law(link);  // fails before a pixel is written, or not at all
    Between between{};
    const auto* s = static_cast<const std::uint8_t*>(src);
    auto* d = static_cast<std::uint8_t*>(dst);
    for (std::int64_t left = count; left > 0; left -= kRun) {
        const std::int64_t run = std::min(left, kRun);
        law(links_.front()).run(s, from, between.data(), ColourDepth::real, false, run);
        for (std::size_t i = 1; i + 1 < links_.size(); ++i) {
            law(links_[i]).run(between.data(), kFloats, between.data(), ColourDepth::real, false, run);
        }
        law(links_.back()).run(between.data(), kFloats, d, to, clip, run);
        s += static_cast<std::size_t>(run) * BytesOf(from.depth);
        d += static_cast<std::size_t>(run) * BytesOf(to);
    }
}

ColourTransformRef MakeColourTransform(const ColourProfile& from, const ColourProfile& to, Intent intent,
                                       const ColourOptions& options) {
    const bool compensation = options.black_point_compensation.value_or(false);
    std::vector<ColourTransform::Link> links{{std::make_shared<const ColourStep>(from, to, intent), compensation}};
    return ColourTransformRef(new ColourTransform(std::move(links), options.clip.value_or(false)));
}

ColourTransformRef JoinColourTransforms(const ColourTransform& first, const ColourTransform& second) {
    if (second.links().front().step->from_inks()) {
        throw ColourFault(kColour_NoLink, "a transform of inks can be the first alone");
    }
    std::vector<ColourTransform::Link> links = first.links();
    links.insert(links.end(), second.links().begin(), second.links().end());
    return ColourTransformRef(new ColourTransform(std::move(links), second.clip()));
}

ColourTransformRef ChangeColourTransform(const ColourTransform& transform, const ColourOptions& options) {
    std::vector<ColourTransform::Link> links = transform.links();
    for (ColourTransform::Link& link : links) {
        link.black_point_compensation = options.black_point_compensation.value_or(link.black_point_compensation);
    }
    return ColourTransformRef(new ColourTransform(std::move(links), options.clip.value_or(transform.clip())));
}

// --- made transforms -------------------------------------------------------------------------------
namespace {

using MadeKey = std::tuple<std::array<std::uint8_t, 16>, std::array<std::uint8_t, 16>, Intent, bool>;
struct MadeTransforms {
    std::mutex mutex;
    std::map<MadeKey, ColourTransformRef> all;
};
MadeTransforms& Made() {
    static MadeTransforms made;
    return made;
}

std::array<std::uint8_t, 16> IDOf(const ColourProfile& profile) {
    std::array<std::uint8_t, 16> id{};
    const t_CMX_ID told = profile.ID();
    std::copy(std::begin(told.bytes), std::end(told.bytes), id.begin());
    return id;
}

ColourTransform* KeptTransform(const ColourProfile& from, const ColourProfile& to, Intent intent, bool compensation) {
    MadeTransforms& made = Made();
    const std::lock_guard lock(made.mutex);
    const MadeKey key{IDOf(from), IDOf(to), intent, compensation};
    auto found = made.all.find(key);
    if (found == made.all.end()) {
        ColourOptions options;
        options.black_point_compensation = compensation;
        found = made.all.emplace(key, MakeColourTransform(from, to, intent, options)).first;
    }
    found->second.get()->Reference();
    return found->second.get();
}

}  // namespace

HCL_CMX_Transform MakeTransform(const HCL_CMX_Profile& from, const HCL_CMX_Profile& to, Intent intent,
                                bool black_point_compensation, std::string* fault) {
    HCL_CMX_Transform transform;
    const CMX_Error error = ColourBoundary([&] {
        transform.Reset(KeptTransform(ColourProfileOf(from.GetProfile()), ColourProfileOf(to.GetProfile()), intent,
                                      black_point_compensation));
    });
    TellColourFault(error, fault);
    return transform;
}

void ForgetTransforms() {
    MadeTransforms& made = Made();
    const std::lock_guard lock(made.mutex);
    made.all.clear();
}

}  // namespace standalone
