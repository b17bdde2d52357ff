// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/QX_AdvancedFrameBlending.h"

#include <cmath>
#include <exception>

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_World.h"
#include "opticalflow/src/RenderWorker.h"
#include "platform/TK_Report.h"
#include "platform/TK_Strings.h"
#include "platform/TK_Suites.h"

using namespace solvan_of;

namespace {

constexpr int kSilent = 10000;  // hosts' own word for "it has been told already"

template <class T> bool lies_between(T value, T least, T most) { return value >= least && value <= most; }

void wrap(const QX_World& world, auto& texture) {
    texture.wrap(world.data, world.width, world.height, world.rowbytes);
    texture.setAddressing(Addressing::clamp, Addressing::clamp);
}

bool has_pixels(const QX_World* world) {
    return world != nullptr && world->data != nullptr && world->width > 0 && world->height > 0;
}

/// 516 for worlds that a render cannot take.
int check(const QX_Solvan_AlgoParams& algo, const QX_World* first, const QX_World* second, const QX_World* output) {
    for (const QX_World* world : {first, second, output})
        if (!has_pixels(world)) return kQX_BadParameter;
    for (const QX_World* frame : {first, second}) {
        if (frame->Depth() != output->Depth()) return kQX_BadParameter;
        const bool is_alike = frame->width == output->width && frame->height == output->height;
        if (algo.interpolationMode == kQX_Solvan_Tween && !is_alike) return kQX_BadParameter;
    }
    return kQX_NoError;
}

int report(int code) {
    if (code == kQX_NoError || code == kSilent || code == kQX_Interrupted) return code;
    const char* const text = code == kQX_OutOfMemory
                                 ? "$$$/VN/PIN/Solvan/AllocFailed=Frame Blending - Failed to allocate memory."
                                 : "$$$/VN/PIN/Solvan/MiscFailure=Frame Blending - Non-specific error.";
    TKp_ReportErrString(0, code, TK_ZStringToMBString(text).c_str());
    return code;
}

}  // namespace

QX_AdvancedFrameBlending::QX_AdvancedFrameBlending(const QX_Solvan_AlgoParams& algo, const QX_Solvan_OtherParams& other,
                                                   const QX_Solvan_InterruptFuncs& interrupt)
    : algo_(algo), other_(other), interrupt_(interrupt) {
    constexpr double kHundredth = 0.009999999776482582;  // 0.01 as a float
    algo_.vectorDetail *= 0.01f;
    algo_.convergenceError *= 0.01f;
    algo_.lumaRed *= kHundredth;
    algo_.lumaGreen *= kHundredth;
    algo_.lumaBlue *= kHundredth;
}

QX_AdvancedFrameBlending::QX_AdvancedFrameBlending(const QX_Solvan_OtherParams& other,
                                                   const QX_Solvan_InterruptFuncs& interrupt)
    : other_(other), interrupt_(interrupt) {}

int QX_AdvancedFrameBlending::CheckParamRange() const {
    const QX_Solvan_AlgoParams& p = algo_;
    const bool fits =
        p.interpolationMode <= 2 && lies_between(p.vectorDetail, 0.05f, 1.0f) &&
        lies_between(p.estimatorSmoothness, -1000.0f, 1000.0f) && lies_between(p.refineSmoothness, -1000.0f, 1000.0f) &&
        lies_between<int>(p.refineIterations, 1, 50) && lies_between(p.convergenceError, 0.0f, 0.1f) &&
        p.highQualityFilter <= 1 && lies_between<int>(p.blockSize, 4, 40) && lies_between(p.lumaRed, 0.0, 1.0) &&
        lies_between(p.lumaGreen, 0.0, 1.0) && lies_between(p.lumaBlue, 0.0, 1.0) &&
        lies_between(p.shutterAngle, 0.0f, 360.0f) && lies_between<int>(p.sampleCount, 1, 20) &&
        p.reservedChoice <= 3 && std::fabs(p.lumaGreen + p.lumaRed + p.lumaBlue - 1.0) < 0.02;
    return fits ? kQX_NoError : kQX_ParameterOutOfRange;
}

int QX_AdvancedFrameBlending::Render(QX_World* firstFrame, QX_World* secondFrame, QX_World* output) {
    for (const QX_World* world : {firstFrame, secondFrame, output})
        if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::frame_blending);
    if (const int code = CheckParamRange()) return code;
    int code = kQX_NoError;
    try {
        const QSBasicSuite* suite = nullptr;
        if (const int failed = TK_QS_GetQSBasicSuite(&suite)) throw int{failed};
        keepBasicSuite(suite);
        code = check(algo_, firstFrame, secondFrame, output);
        const auto render = [&]<class Pixel>() {
            RenderFrames<Pixel> frames;
            wrap(*firstFrame, frames.first);
            wrap(*secondFrame, frames.second);
            wrap(*output, frames.output);
            return RenderWorker<Pixel>(algo_, other_, interrupt_, frames).run();
        };
        if (code == kQX_NoError) {
            switch (output->Depth()) {
                case 8:
                    code = render.operator()<Argb<std::uint8_t>>();
                    break;
                case 16:
                    code = render.operator()<Argb<std::uint16_t>>();
                    break;
                case 32:
                    code = render.operator()<Argb<float>>();
                    break;
                default:
                    break;
            }
        }
    } catch (int thrown) {
        code = thrown;
    } catch (const std::exception& fault) {
        code = TK_TranslateAndReportException(fault);
    }
    return report(code);
}

void QX_AdvancedFrameBlending::ComputeCRC(Crc& crc) const {
    for_each_field(algo_, [&](const void* bytes, std::size_t count) { crc.process_bytes(bytes, count); });
}
