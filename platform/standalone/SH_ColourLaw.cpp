// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourLaw.h"

#include <cmath>

namespace standalone {
namespace {

/// A pixel's channels by depth, and what stands for 1.
template <ColourDepth> struct Channels;
template <> struct Channels<ColourDepth::eight> {
    using Type = std::uint8_t;
    static constexpr float kFull = 255;
};
template <> struct Channels<ColourDepth::sixteen> {
    using Type = std::uint16_t;
    static constexpr float kFull = 32768;
};
template <> struct Channels<ColourDepth::real> {
    using Type = float;
    static constexpr float kFull = 1;
};

/// The next number that the destination holds. What is not a number passes no comparison.
template <ColourDepth To> typename Channels<To>::Type Stored(float value, bool clip) {
    if constexpr (To == ColourDepth::real) {
        if (!clip) return value;
        return value > 0 ? (value < 1 ? value : 1) : 0;
    } else {
        constexpr double kFull = Channels<To>::kFull;
        const double nearest = std::floor(static_cast<double>(value) * kFull + 0.5);
        const double limited = nearest > 0 ? (nearest < kFull ? nearest : kFull) : 0;
        return static_cast<typename Channels<To>::Type>(limited);
    }
}

/// @tparam Skip  channels before the colours: alpha, or none before inks
template <ColourDepth From, int Skip, ColourDepth To>
void RunPipeline(const cmsPipeline* pipeline, const void* src, void* dst, bool clip, std::int64_t count) {
    using In = Channels<From>;
    const auto* s = static_cast<const typename In::Type*>(src);
    auto* d = static_cast<typename Channels<To>::Type*>(dst);
    for (; count > 0; --count, s += 4, d += 4) {
        float in[4], out[3];
        for (int c = Skip; c < 4; ++c) in[c - Skip] = static_cast<float>(s[c]) / In::kFull;
        cmsPipelineEvalFloat(in, out, pipeline);
        for (int c = 0; c < 3; ++c) d[c + 1] = Stored<To>(out[c], clip);
    }
}

using RunFn = void(const cmsPipeline*, const void*, void*, bool, std::int64_t);
template <ColourDepth From, int Skip> RunFn* PickTo(ColourDepth to) {
    switch (to) {
        case ColourDepth::eight:
            return RunPipeline<From, Skip, ColourDepth::eight>;
        case ColourDepth::sixteen:
            return RunPipeline<From, Skip, ColourDepth::sixteen>;
        default:
            return RunPipeline<From, Skip, ColourDepth::real>;
    }
}
RunFn* Pick(ColourLayout from, ColourDepth to) {
    switch (from.depth) {
        case ColourDepth::eight:
            return from.inks ? PickTo<ColourDepth::eight, 0>(to) : PickTo<ColourDepth::eight, 1>(to);
        case ColourDepth::sixteen:
            return from.inks ? PickTo<ColourDepth::sixteen, 0>(to) : PickTo<ColourDepth::sixteen, 1>(to);
        default:
            return PickTo<ColourDepth::real, 1>(to);
    }
}

cmsHPROFILE Open(cmsContext context, const ColourProfile& profile) {
    const ColourBytes& file = profile.file();
    return cmsOpenProfileFromMemTHR(context, file.data(), static_cast<cmsUInt32Number>(file.size()));
}

}  // namespace

ColourLaw::ColourLaw(const ColourProfile& from, const ColourProfile& to, Intent intent, bool black_point_compensation) {
    const bool inks = from.content().space == ProfileSpace::cmyk;
    arena_.must(kColour_NoLink, "there is no way from one profile to the other", [&](cmsContext context) {
        const cmsHPROFILE source = Open(context, from), target = Open(context, to);
        if (source == nullptr || target == nullptr) return false;
        const cmsUInt32Number flags =
            cmsFLAGS_NOCACHE | (black_point_compensation ? cmsFLAGS_BLACKPOINTCOMPENSATION : 0U);
        const auto* const made = cmsCreateTransformTHR(context, source, inks ? TYPE_CMYK_FLT : TYPE_RGB_FLT, target,
                                                       TYPE_RGB_FLT, static_cast<cmsUInt32Number>(intent), flags);
        if (made == nullptr) return false;
        pipeline_ = LastColourPipeline();
        return cmsCloseProfile(source) && cmsCloseProfile(target);
    });
}

const ColourForm* ColourLaw::form(ColourDepth from, ColourDepth to, bool clip) const {
    const bool limits = clip && to == ColourDepth::real;
    return forms_[static_cast<int>(from)][static_cast<int>(to)][limits ? 1 : 0].get(
        [&] { return MakeColourForm(pipeline_, from, to, limits); });
}

void ColourLaw::run(const void* src, ColourLayout from, void* dst, ColourDepth to, bool clip,
                    std::int64_t count) const {
    const ColourForm* const own = from.inks ? nullptr : form(from.depth, to, clip);
    if (own != nullptr) return own->run(src, dst, count);
    Pick(from, to)(pipeline_, src, dst, clip, count);
}

}  // namespace standalone
