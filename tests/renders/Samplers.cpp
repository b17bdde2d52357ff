// SPDX-License-Identifier: Apache-2.0
// Samples of a point, an area and a run of pixels, at positions inside, outside and across the edges.
#include "Picture.h"

namespace renders {
namespace {

constexpr int kSize = 40;

/// Many samples of one routine. @param inside  positions whose taps all lie in the picture
template <class Pixel, class Sample> void sampled(const std::string& name, bool inside, Sample sample) {
    Numbers random(static_cast<std::uint64_t>(name.size()));
    const int low = inside ? 12 : -8, high = kSize - low;
    std::vector<Pixel> out(3000);
    for (Pixel& pixel : out) {
        const int x = random.between(low * 65536, high * 65536), y = random.between(low * 65536, high * 65536);
        sample(x, y, &pixel);
    }
    Checksum sum;
    sum.add(out);
    sum.tell("sample/" + depth_name<Pixel>() + "/" + name);
}

template <class Pixel> void sets(int quality) {
    Picture<Pixel> source(kSize, kSize, 5);
    QX_SampPB params{};
    params.src = source.record();
    const QX_SamplerSet<Pixel> set = QXp_GetSamplerSet<Pixel>(quality);
    const std::string q = "/quality-" + std::to_string(quality);
    sampled<Pixel>("clipped" + q, false, [&](int x, int y, Pixel* out) { set.clipped(nullptr, x, y, &params, out); });
    sampled<Pixel>("plus" + q, false, [&](int x, int y, Pixel* out) {
        bool all_in = false;
        set.plus(nullptr, x, y, &params, &all_in, out);
    });
    sampled<Pixel>("unclipped" + q, true,
                   [&](int x, int y, Pixel* out) { set.unclipped(nullptr, x, y, &params, out); });
    sampled<Pixel>("translate" + q, true, [&](int x, int y, Pixel* out) {
        double weights[4];
        QX_SubpixelSampleComputeWeight(x & 65535, y & 65535, weights);
        set.translate(nullptr, x, y, weights, &params, out);
    });
    sampled<Pixel>("span" + q, true, [&](int x, int y, Pixel* out) {
        QX_AlphaSumOf<Pixel> alpha = 0;
        Pixel run[9];
        set.span(nullptr, 9, x, y, &params, &alpha, run);
        *out = run[(x >> 3 & 0xFFFF) % 9];
    });
    for (const int radius : {20000, 40000, 90000, 400000}) {
        params.x_radius = radius;
        params.y_radius = radius / 2 + 20000;
        sampled<Pixel>("area-" + std::to_string(radius) + q, false,
                       [&](int x, int y, Pixel* out) { set.area(nullptr, x, y, &params, out); });
    }
}

}  // namespace

void samplers() {
    at_each_depth([]<class Pixel>(Pixel) {
        sets<Pixel>(1);
        sets<Pixel>(2);
    });
    Picture<QX_Pixel8> source(kSize, kSize, 6);
    QX_SampPB params{};
    params.src = source.record();
    params.x_radius = params.y_radius = 90000;
    params.area = static_cast<std::int32_t>(std::int64_t{4} * 90000 * 90000 >> 16);
    const auto plain = [&](const char* name, const auto& routine) {
        sampled<QX_Pixel8>(name, false, [&](int x, int y, QX_Pixel8* out) { routine(nullptr, x, y, &params, out); });
    };
    plain("nearest", QX_NNSample);
    plain("premul", QX_SubpixelSample_Premul);
    plain("area-premul", QX_AreaSample_Premul);
}

}  // namespace renders
