// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2_plugin.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

/// Pipelines of the colour library as laws that forms are held to.
namespace qx::test {

using Pipeline = std::unique_ptr<cmsPipeline, decltype(&cmsPipelineFree)>;
using Curve = std::shared_ptr<cmsToneCurve>;
using Triple = std::array<float, 3>;

inline Pipeline no_pipeline() { return {nullptr, &cmsPipelineFree}; }
inline Pipeline copy_of(const cmsPipeline* pipeline) { return {cmsPipelineDup(pipeline), &cmsPipelineFree}; }

/// A context whose transforms show their pipelines. The library does so only for transforms that it may optimise, and
/// before it does.
class Shown {
public:
    Shown() : context_(cmsCreateContext(&plugin(), this)) {}
    ~Shown() { cmsDeleteContext(context_); }
    Shown(Shown&&) = delete;
    cmsContext context() const { return context_; }
    Pipeline law(cmsHPROFILE from, cmsHPROFILE to) {
        latest() = no_pipeline();
        cmsDeleteTransform(cmsCreateTransformTHR(context_, from, TYPE_RGB_FLT, to, TYPE_RGB_FLT, 1, cmsFLAGS_NOCACHE));
        return std::move(latest());
    }

private:
    static Pipeline& latest() {
        static Pipeline one = no_pipeline();
        return one;
    }
    static cmsBool keep(_cmsTransform2Fn*, void**, _cmsFreeUserDataFn*, cmsPipeline** lut, cmsUInt32Number*,
                        cmsUInt32Number*, cmsUInt32Number*) {
        latest() = copy_of(*lut);
        return FALSE;
    }
    static cmsPluginTransform& plugin() {
        static cmsPluginTransform one{{cmsPluginMagicNumber, 2100, cmsPluginTransformSig, nullptr}, {}};
        one.factories.xform = &keep;
        return one;
    }
    cmsContext context_;
};

inline Curve parametric(int type, std::vector<double> parameters) {
    parameters.resize(10);
    return {cmsBuildParametricToneCurve(nullptr, type, parameters.data()), &cmsFreeToneCurve};
}
inline Curve table(unsigned entries, double exponent) {
    std::vector<cmsUInt16Number> values(entries);
    for (unsigned i = 0; i < entries; ++i) {
        values[i] = static_cast<cmsUInt16Number>(std::lround(65535 * std::pow(i / (entries - 1.0), exponent)));
    }
    return {cmsBuildTabulatedToneCurve16(nullptr, entries, values.data()), &cmsFreeToneCurve};
}
inline Curve turned(const Curve& curve) { return {cmsReverseToneCurve(curve.get()), &cmsFreeToneCurve}; }

inline const std::vector<double> kSrgb{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
inline const std::vector<double> kBT709{1 / 0.45, 1 / 1.099, 0.099 / 1.099, 1 / 4.5, 0.081};

enum class Gamut { srgb, p3, rec2020 };
/// A matrix profile as a file holds it.
inline std::shared_ptr<void> profile(Shown& shown, Gamut gamut, const Curve& curve) {
    static constexpr cmsCIExyYTRIPLE primaries[] = {{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}},
                                                    {{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}},
                                                    {{0.708, 0.292, 1}, {0.17, 0.797, 1}, {0.131, 0.046, 1}}};
    const cmsCIExyY white{0.3127, 0.3290, 1};
    cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
    const std::shared_ptr<void> made(
        cmsCreateRGBProfileTHR(shown.context(), &white, &primaries[static_cast<int>(gamut)], curves), &cmsCloseProfile);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(made.get(), nullptr, &size);
    std::vector<char> file(size);
    cmsSaveProfileToMem(made.get(), file.data(), &size);
    return {cmsOpenProfileFromMemTHR(shown.context(), file.data(), size), &cmsCloseProfile};
}

/// Pipelines that are put together by hand.
struct Stages {
    Pipeline pipeline{cmsPipelineAlloc(nullptr, 3, 3), &cmsPipelineFree};

    Stages& add(cmsStage* stage) {
        cmsPipelineInsertStage(pipeline.get(), cmsAT_END, stage);
        return *this;
    }
    Stages& curves(const Curve& r, const Curve& g, const Curve& b) {
        cmsToneCurve* const three[] = {r.get(), g.get(), b.get()};
        return add(cmsStageAllocToneCurves(nullptr, 3, three));
    }
    Stages& curves(const Curve& all) { return curves(all, all, all); }
    Stages& matrix(const std::array<double, 9>& factors, const std::array<double, 3>& offset = {}) {
        return add(cmsStageAllocMatrix(nullptr, 3, 3, factors.data(), offset.data()));
    }
    Stages& identity() { return add(cmsStageAllocIdentity(nullptr, 3)); }
};

/// What a law gives, and how far a form may be off for what 1e-6 of the largest linear colour makes.
class Law {
public:
    explicit Law(const Pipeline& pipeline) : whole_(copy_of(pipeline.get())), head_(copy_of(pipeline.get())) {
        const cmsStage* last = cmsPipelineGetPtrToLastStage(head_.get());
        if (cmsPipelineStageCount(head_.get()) < 2 || cmsStageType(last) != cmsSigCurveSetElemType) return;
        cmsPipelineUnlinkStage(head_.get(), cmsAT_END, nullptr);
        curves_ = static_cast<_cmsStageToneCurvesData*>(cmsStageData(cmsPipelineGetPtrToLastStage(whole_.get())));
    }
    Triple operator()(const Triple& x) const { return evaluated(whole_, x); }
    /// The least and the most of each colour.
    std::array<std::array<float, 2>, 3> range(const Triple& x) const {
        const Triple linear = evaluated(head_, x);
        float largest = 0;
        for (const float c : linear) largest = std::max(largest, std::fabs(c));
        std::array<std::array<float, 2>, 3> made;
        for (std::size_t i = 0; i < 3; ++i) {
            const float slack = 1e-6f * largest;
            const auto out = [&](float v) {
                return curves_ == nullptr ? v : cmsEvalToneCurveFloat(curves_->TheCurves[i], v);
            };
            const auto all = {out(linear[i] - slack), out(linear[i]), out(linear[i] + slack)};
            made[i] = {std::min(all), std::max(all)};
        }
        return made;
    }

private:
    static Triple evaluated(const Pipeline& pipeline, const Triple& x) {
        Triple y{};
        cmsPipelineEvalFloat(x.data(), y.data(), pipeline.get());
        return y;
    }
    Pipeline whole_, head_;
    const _cmsStageToneCurvesData* curves_ = nullptr;
};

}  // namespace qx::test
