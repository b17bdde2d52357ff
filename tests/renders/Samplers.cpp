// SPDX-License-Identifier: Apache-2.0
// Samples of a point, an area and a run of pixels, at positions inside, outside and across the edges.
#include "Picture.h"

namespace renders {
namespace {

constexpr int kSize = 40, kSamples = 3000;

/// Many samples of one routine. @param inside  positions whose taps all lie in the picture
template <class Pixel, class Sample> void sampled(const std::string& name, bool inside, Sample sample) {
    Numbers random(static_cast<std::uint64_t>(name.size()));
    std::vector<Pixel> out;
    for (int i = 0; i < kSamples; ++i) {
        const int low = inside ? 12 : -8, high = inside ? kSize - 12 : kSize + 8;
        const int x = random.between(low * 65536, high * 65536), y = random.between(low * 65536, high * 65536);
        Pixel pixel{};
        sample(x, y, &pixel);
        out.push_back(pixel);
    }
    Checksum sum;
    sum.add(out);
    tell("sample/" + depth_name<Pixel>() + "/" + name, sum);
}

struct Samplers {
    template <class Pixel> void run() const {
        for (int quality = 1; quality <= 2; ++quality) sets<Pixel>(quality);
    }
    template <class Pixel> void sets(int quality) const {
        Picture<Pixel> source(kSize, kSize, 5);
        QX_SampPB params{};
        params.src = source.record();
        const QX_SamplerSet<Pixel> set = QXp_GetSamplerSet<Pixel>(quality);
        const std::string q = "/quality-" + std::to_string(quality);
        sampled<Pixel>("clipped" + q, false,
                       [&](int x, int y, Pixel* out) { set.clipped(nullptr, x, y, &params, out); });
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
};

}  // namespace

void samplers() {
    at_each_depth(Samplers{});
    Picture<QX_Pixel8> source(kSize, kSize, 6);
    QX_SampPB params{};
    params.src = source.record();
    params.x_radius = params.y_radius = 90000;
    params.area = static_cast<std::int32_t>(std::int64_t{4} * 90000 * 90000 >> 16);
    using Pixel = QX_Pixel8;
    sampled<Pixel>("nearest", false, [&](int x, int y, Pixel* out) { QX_NNSample(nullptr, x, y, &params, out); });
    sampled<Pixel>("premul", false,
                   [&](int x, int y, Pixel* out) { QX_SubpixelSample_Premul(nullptr, x, y, &params, out); });
    sampled<Pixel>("area-premul", false,
                   [&](int x, int y, Pixel* out) { QX_AreaSample_Premul(nullptr, x, y, &params, out); });
}

}  // namespace renders
