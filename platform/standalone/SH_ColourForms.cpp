// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourForms.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "platform/TK_CPU.h"
#include "platform/standalone/SH_ColourFormCurves.h"

namespace standalone {
namespace {

/// Three rows of three factors and an offset, from three colours to three.
using Matrix = std::array<std::array<double, 4>, 3>;
constexpr Matrix kIdentity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

/// What a pipeline does where it is curves, matrices and curves; null curves leave what they get.
struct Chain {
    cmsToneCurve* const* in = nullptr;
    Matrix matrix = kIdentity;
    cmsToneCurve* const* out = nullptr;
};

Matrix behind(const Matrix& first, const _cmsStageMatrixData& second) {
    Matrix made{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            for (std::size_t k = 0; k < 3; ++k) made[i][j] += second.Double[3 * i + k] * first[k][j];
        }
        if (second.Offset != nullptr) made[i][3] += second.Offset[i];
    }
    return made;
}

std::optional<Chain> chain_of(const cmsPipeline* law) {
    Chain chain;
    bool mixes = false;
    for (const cmsStage* stage = cmsPipelineGetPtrToFirstStage(law); stage != nullptr; stage = cmsStageNext(stage)) {
        if (cmsStageInputChannels(stage) != 3 || cmsStageOutputChannels(stage) != 3) return std::nullopt;
        const cmsStageSignature type = cmsStageType(stage);
        if (type == cmsSigIdentityElemType) continue;
        const void* data = cmsStageData(const_cast<cmsStage*>(stage));  // read alone
        if (chain.out != nullptr) return std::nullopt;
        if (type == cmsSigMatrixElemType) {
            chain.matrix = behind(chain.matrix, *static_cast<const _cmsStageMatrixData*>(data));
            mixes = true;
        } else if (type == cmsSigCurveSetElemType) {
            auto& place = chain.in == nullptr && !mixes ? chain.in : chain.out;
            place = static_cast<const _cmsStageToneCurvesData*>(data)->TheCurves;
        } else {
            return std::nullopt;
        }
    }
    return chain;
}

/// Some roundings of floats lie between a colour's matrix in float and in double: 1e-6 of the largest colour is more
/// than they make while a row's factors stay below this sum.
constexpr double kMostWeight = 4;

bool set_matrix(const Matrix& matrix, qx::ColourChain& chain) {
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& row = matrix[i];
        const double weight = std::fabs(row[0]) + std::fabs(row[1]) + std::fabs(row[2]);
        chain.matrix[i][0] = static_cast<float>(row[0] + row[1] + row[2]);
        chain.matrix[i][1] = static_cast<float>(row[(i + 1) % 3]);
        chain.matrix[i][2] = static_cast<float>(row[(i + 2) % 3]);
        chain.offset[i] = static_cast<float>(row[3]);
        if (!(weight <= kMostWeight) || !(std::fabs(row[3]) <= kMostWeight)) return false;
    }
    return true;
}

qx::Level level_of_processor() {
    const auto has = [](int flag) { return TK_G_CPU_DataP->flags[flag] != 0; };
    if (has(kTK_CPU_FasterRows)) return has(kTK_CPU_WidestRows) ? qx::Level::avx512 : qx::Level::avx2;
    return has(kTK_CPU_Vector) ? qx::Level::sse4 : qx::Level::plain;
}

class Form final : public ColourForm, public TK_MemTrackedObject {
public:
    /// @return false where there is no such form
    bool make(const Chain& law, ColourDepth src, ColourDepth dst, bool clip) {
        const qx::Level level = level_of_processor();
        const auto& kernels = qx::colour_kernels_of(level);
        if (!set_matrix(law.matrix, chain_)) return false;
        const int terms = dst == ColourDepth::eight ? qx::kPowerTerms8 : qx::kPowerTerms;
        const bool made = src == ColourDepth::real
                              ? in_.make_for_floats(law.in, FormCurves::Side::in, qx::kPowerTerms, kernels)
                              : in_.make_for_codes(law.in, src == ColourDepth::eight);
        if (!made || !out_.make_for_floats(law.out, FormCurves::Side::out, terms, kernels)) return false;
        chain_.in = in_.curves(), chain_.out = out_.curves(), chain_.clip = clip;
        const auto from = static_cast<int>(src), to = static_cast<int>(dst);
        const auto kind_in = static_cast<int>(in_.kind()), kind_out = static_cast<int>(out_.kind());
        const auto& own = looks_up_all() ? qx::colour_kernels_of(std::min(level, qx::Level::avx2)) : kernels;
        const auto& runs = src == ColourDepth::real ? own.from_floats[kind_in] : own.from_codes[from];
        run_ = runs.to[to][kind_out];
        return true;
    }
    void run(const void* src, void* dst, std::int64_t count) const override { run_(chain_, count, src, dst); }

private:
    /// Lookups are all that counts then, and registers of 64 bytes take longer for them than those of 32.
    bool looks_up_all() const { return in_.kind() == qx::CurveKind::steps && out_.kind() == qx::CurveKind::steps; }

    FormCurves in_, out_;
    qx::ColourChain chain_{};
    qx::ColourRun run_ = nullptr;
};

}  // namespace

std::unique_ptr<const ColourForm> MakeColourForm(const cmsPipeline* law, ColourDepth src, ColourDepth dst, bool clip) {
    const auto chain = chain_of(law);
    if (!chain) return nullptr;
    auto form = std::make_unique<Form>();
    if (!form->make(*chain, src, dst, clip)) return nullptr;
    return form;
}

}  // namespace standalone
