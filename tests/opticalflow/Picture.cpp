// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <numbers>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

float rounded_position(double position) {
    const float p = static_cast<float>(position);
    if (p == kInvalid) return p;
    return std::floor((std::fmod(p, 1.0F) + 0.0025F) / 0.005F) * 0.005F;
}

Field enlarged(const Field& field, int w, int h, float scale) {
    Field out(w, h);
    for (int y = 0; y < h; ++y) {
        const float py = (real(y) + 0.5F) * scale;
        float px = 0.5F * scale;
        for (int x = 0; x < w; ++x, px += scale) out.at(x, y) = field.bilinear(px, py);
    }
    return out;
}

States enlarged(const States& map, int w, int h) {
    Field states(map.w, map.h);
    for (std::size_t i = 0; i < map.px.size(); ++i) states.px[i].x = real(map.px[i]);
    const float sx = real(map.w) / real(w), sy = real(map.h) / real(h);
    States out(w, h);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) out.at(x, y) = static_cast<int>(states.bilinear(real(x) * sx, real(y) * sy).x);
    }
    return out;
}

namespace {

constexpr int kRadius = 10;
using Taps = std::array<float, 2 * kRadius + 1>;

Taps taps_of(float fraction) {
    using std::numbers::pi;
    Taps taps{};
    float sum = 0;
    for (int k = -kRadius; k <= kRadius; ++k) {
        const double d = static_cast<double>(k) - static_cast<double>(fraction);
        const double tap = d == 0 ? 1 : (std::cos(pi * d / kRadius) + 1) * 0.5 * (std::sin(pi * d) / d);
        taps[static_cast<std::size_t>(k + kRadius)] = static_cast<float>(tap);
        sum += static_cast<float>(tap);
    }
    for (float& tap : taps) tap /= sum;
    return taps;
}

bool near_centre(float fraction) { return fraction < 0.01F || fraction > 0.99F; }

}  // namespace

Colour windowed_sinc(const Frame& frame, float x, float y) {
    const Whole u = whole(x - 0.5F), v = whole(y - 0.5F);
    if (near_centre(u.fraction) && near_centre(v.fraction)) {
        return frame.read(u.index + (u.fraction > 0.99F ? 1 : 0), v.index + (v.fraction > 0.99F ? 1 : 0));
    }
    const Taps across = taps_of(u.fraction), down = taps_of(v.fraction);
    Colour out{};
    for (int j = 0; j <= 2 * kRadius; ++j) {
        Colour row{};
        for (int i = 0; i <= 2 * kRadius; ++i) {
            const Colour& tap = frame.read(u.index + i - kRadius, v.index + j - kRadius);
            for (std::size_t k = 0; k < 4; ++k) row[k] += tap[k] * across[static_cast<std::size_t>(i)];
        }
        for (std::size_t k = 0; k < 4; ++k) out[k] += row[k] * down[static_cast<std::size_t>(j)];
    }
    return out;
}

namespace {

Colour warped(const Frame& frame, int x, int y, Vec v, float k, float scale, bool sinc) {
    if (!v.valid()) return {0, -1, -1, -1};
    const float dx = v.x * k * scale, dy = v.y * k * scale;
    if (dx == kInvalid) return {128, 128, 128, 128};
    const float px = real(x) + 0.5F - dx, py = real(y) + 0.5F + dy;
    return sinc ? windowed_sinc(frame, px, py) : bilinear(frame, px, py);
}

Frame stored(Frame frame) {
    for (Colour& colour : frame.px) {
        for (float& channel : colour) channel = frame.stored(channel);
    }
    return frame;
}

}  // namespace

Frame build_picture(const Frame& frame0, const Frame& frame1, const Field& to1, const Field& to0, const States& map,
                    float scale, float t, const PictureFlags& flags) {
    Frame out(to1.w, to1.h, frame0.depth);
    for (int y = 0; y < out.h; ++y) {
        for (int x = 0; x < out.w; ++x) {
            const Colour s0 = warped(frame0, x, y, to0.at(x, y), t, scale, flags.sinc);
            const Colour s1 = warped(frame1, x, y, to1.at(x, y), 1.0F - t, scale, flags.sinc);
            Colour& pixel = out.at(x, y);
            const int state = map.at(x, y);
            if (state == 1) {
                pixel = flags.paint_states ? Colour{0, 1, 0, 0} : s0;
            } else if (state == 2) {
                pixel = flags.paint_states ? Colour{0, 0, 1, 0} : s1;
            } else if (flags.nearer_alone) {
                pixel = t >= 0.5F ? s1 : s0;
            } else {
                for (std::size_t k = 0; k < 4; ++k) pixel[k] = s0[k] * (1.0F - t) + s1[k] * t;
            }
        }
    }
    return stored(std::move(out));
}

Frame blend(const Frame& a, const Frame& b, float t, int w, int h) {
    Frame out(w, h, a.depth);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Colour &from = a.read(x, y), &to = b.read(x, y);
            for (std::size_t k = 0; k < 4; ++k) out.at(x, y)[k] = from[k] + (to[k] - from[k]) * t;
        }
    }
    return stored(std::move(out));
}

Frame copy(const Frame& frame, int w, int h) {
    Frame out(w, h, frame.depth);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) out.at(x, y) = frame.read(x, y);
    }
    return out;
}

Frame mean_of_equal_passes(const Frame& pass, int passes) {
    Frame out = pass;
    for (std::size_t i = 0; i < out.px.size(); ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            float sum = pass.px[i][k];
            for (int p = 1; p < passes; ++p) sum += pass.px[i][k];
            out.px[i][k] = std::fabs(sum) < 2.3509887e-38F ? 0 : sum / real(passes);
        }
    }
    return stored(std::move(out));
}

}  // namespace flow_model
