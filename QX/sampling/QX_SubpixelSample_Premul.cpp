// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampleGpu.h"
#include "QX/sampling/QX_SampleLanesT.h"
#include "QX/sampling/QX_SampleTapsT.h"

namespace qx::sampling {
namespace {

QX_Pixel8 mix(const QX_Pixel8 (&p)[4], const Position& at) {
    const auto fx = static_cast<std::uint32_t>(at.fx), fy = static_cast<std::uint32_t>(at.fy);
    const std::uint32_t w3 = fx * fy >> 16, w1 = (65536 - fy) * fx >> 16, w2 = (65536 - fx) * fy >> 16;
    const std::uint32_t w0 = 65536 - w2 - w1 - w3;
    const auto channel = [&](auto c) {
        return static_cast<std::uint8_t>((p[0].*c * w0 + p[1].*c * w1 + p[2].*c * w2 + p[3].*c * w3 + 32768) >> 16);
    };
    return {channel(&QX_Pixel8::alpha), channel(&QX_Pixel8::red), channel(&QX_Pixel8::green),
            channel(&QX_Pixel8::blue)};
}

QX_Pixel8 premul_sample(const QX_EffectWorld& world, std::int32_t x, std::int32_t y) {
    const Position at(x, y);
    const auto pixel = [&](int i) {
        return load_at<QX_Pixel8>(pixel_address(world, at.column + (i & 1), at.row + (i >> 1), sizeof(QX_Pixel8)));
    };
    if (at.on_a_pixel()) return contains(world, at.column, at.row) ? pixel(0) : QX_Pixel8{};
    QX_Pixel8 p[4] = {};
    for (int i = 0; i < 4; ++i) {
        if (contains(world, at.column + (i & 1), at.row + (i >> 1))) p[i] = pixel(i);
    }
    return mix(p, at);  // gives four equal pixels back: the weights sum to one
}

}  // namespace
}  // namespace qx::sampling

int QX_SubpixelSample_Premul(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    if (const int code = qx::sampling::refuse_gpu_world(params)) return code;
    *out = qx::sampling::premul_sample(*params->src, x, y);
    return 0;
}
