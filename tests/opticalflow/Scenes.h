// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>

#include "tests/opticalflow/FlowModel.h"

/// Pairs of frames whose motion is known, painted from seeds.
namespace flow_model::scenes {

/// Numbers of its own, the same with every library.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}
    std::uint64_t bits() {  // splitmix64
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31);
    }
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }  ///< 0 to 1, without 1
    double between(double from, double to) { return from + (to - from) * unit(); }
    int below(int n) { return static_cast<int>(bits() % static_cast<std::uint64_t>(n)); }
    bool once_in(int n) { return below(n) == 0; }

private:
    std::uint64_t state_;
};

struct Rgb {
    double red, green, blue;
};
using Texture = std::function<Rgb(double x, double y)>;  ///< colours from 0 to 1 everywhere in the plane

/// Smooth from one point of a lattice to the next.
inline double lattice_noise(std::uint64_t seed, double x, double y) {
    const double i = std::floor(x), j = std::floor(y);
    const auto knot = [&](double di, double dj) {
        const auto u = static_cast<std::uint64_t>(static_cast<std::int64_t>(i + di) + (1 << 20));
        const auto v = static_cast<std::uint64_t>(static_cast<std::int64_t>(j + dj) + (1 << 20));
        return Dice(seed ^ (u << 32) ^ v).unit();
    };
    const auto ease = [](double f) { return f * f * f * (f * (f * 6 - 15) + 10); };
    const double fx = ease(x - i), fy = ease(y - j);
    const double upper = knot(0, 0) + (knot(1, 0) - knot(0, 0)) * fx;
    const double lower = knot(0, 1) + (knot(1, 1) - knot(0, 1)) * fx;
    return upper + (lower - upper) * fy;
}

/// Waves of `coarse` pixels and of halves of it, down to about eight pixels, with contrast enough for the estimator's
/// idea of an error.
inline Texture cloth(std::uint64_t seed, double coarse = 60) {
    return [=](double x, double y) {
        double channels[3] = {};
        for (std::uint64_t c = 0; c < 3; ++c) {
            double weights = 0, weight = 1;
            for (double wave = coarse; wave >= 7; wave /= 2, weight *= 0.8) {
                const auto octave = static_cast<std::uint64_t>(wave * 16);
                channels[c] += weight * lattice_noise(seed * 1000003 + octave * 8 + c, x / wave, y / wave);
                weights += weight;
            }
            channels[c] = 0.5 + 1.8 * (channels[c] / weights - 0.5);
        }
        return Rgb{channels[0], channels[1], channels[2]};
    };
}
inline Texture plain(Rgb colour) {
    return [=](double, double) { return colour; };
}
/// Few flat areas with sharp edges.
inline Texture areas(std::uint64_t seed) {
    return [=](double x, double y) {
        const auto step = [&](std::uint64_t c) { return std::floor(lattice_noise(seed + c, x / 18, y / 18) * 4) / 4; };
        return Rgb{step(0), step(1), step(2)};
    };
}

/// Shows at (x, y) what `texture` has at place(x, y).
using Places = std::function<std::pair<double, double>(double x, double y)>;
inline Texture through(const Texture& texture, const Places& places) {
    return [=](double x, double y) {
        const auto [u, v] = places(x, y);
        return texture(u, v);
    };
}
inline Texture moved(const Texture& texture, double dx, double dy) {
    return through(texture, [=](double x, double y) { return std::pair{x - dx, y - dy}; });
}
inline Texture turned(const Texture& texture, double angle, double cx, double cy) {
    const double c = std::cos(angle), s = std::sin(angle);
    return through(texture, [=](double x, double y) {
        return std::pair{cx + c * (x - cx) + s * (y - cy), cy - s * (x - cx) + c * (y - cy)};
    });
}
/// `patch` in a rectangle over `ground`.
inline Texture over(const Texture& patch, const Texture& ground, double left, double top, double w, double h) {
    return [=](double x, double y) {
        const bool inside = x >= left && x < left + w && y >= top && y < top + h;
        return inside ? patch(x, y) : ground(x, y);
    };
}

inline Frame painted(const Texture& texture, int w, int h, int depth) {
    Frame frame(w, h, depth);
    const auto channel = [&](double value) {
        return frame.stored(static_cast<float>(value * static_cast<double>(frame.range()) + (depth == 32 ? 0 : 0.5)));
    };
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Rgb c = texture(x + 0.5, y + 0.5);
            frame.at(x, y) = {frame.range(), channel(c.red), channel(c.green), channel(c.blue)};
        }
    }
    return frame;
}

/// Each channel of each pixel by itself.
inline Frame noise(Dice& dice, int w, int h, int depth) {
    Frame frame(w, h, depth);
    for (Colour& pixel : frame.px) {
        for (float& value : pixel) value = frame.stored(static_cast<float>(dice.unit() * (frame.range() + 0.5)));
    }
    return frame;
}

/// Float pixels that no arithmetic is kind to.
inline void spoil(Frame& frame, Dice& dice) {
    static constexpr float values[] = {std::numeric_limits<float>::quiet_NaN(),
                                       std::numeric_limits<float>::infinity(),
                                       -std::numeric_limits<float>::infinity(),
                                       1e38F,
                                       -1e38F,
                                       kInvalid,
                                       1e-40F,
                                       -0.0F};
    for (int n = 1 + dice.below(12); n > 0; --n) {
        Colour& pixel = frame.at(dice.below(frame.w), dice.below(frame.h));
        pixel[static_cast<std::size_t>(dice.below(4))] = values[dice.below(8)];
    }
}

struct Scene {
    std::string name;
    Frame first, second;
    Params params;
    double position = 0.5;
};

inline Params drawn_params(Dice& dice, int w, int h) {
    Params p;
    const float least = 1.001F / static_cast<float>(w < h ? w : h);  // one field pixel in either axis
    p.detail = static_cast<float>(dice.once_in(3) ? 1.0 : dice.between(0.05, 1));
    p.detail = p.detail < least ? least : p.detail;
    p.estimator_smoothness = static_cast<float>(dice.between(-1, 1) * std::pow(10.0, dice.between(0, 3)));
    p.refine_smoothness = static_cast<float>(dice.between(-1, 1) * std::pow(10.0, dice.between(0, 3)));
    p.iterations = 1 + dice.below(dice.once_in(10) ? 50 : 6);
    p.convergence = static_cast<float>(dice.once_in(8) ? 0.0 : dice.between(0, 0.1) * dice.unit());
    p.sinc = dice.once_in(4);
    p.block = 4 + dice.below(dice.once_in(5) ? 37 : 9);
    p.red = dice.unit(), p.green = dice.unit(), p.blue = 1 - p.red - p.green;
    if (p.blue < 0) p.red = 1 - p.red, p.green = 1 - p.green, p.blue = 1 - p.red - p.green;
    return p;
}

/// One of all kinds, 5 to 90 pixels a side. With `wild` float frames may hold numbers that are none.
inline Scene drawn(std::uint64_t seed, bool wild = false) {
    Dice dice(seed);
    static constexpr int depths[] = {8, 16, 32};
    const int w = 5 + dice.below(86), h = 5 + dice.below(86), depth = wild ? 32 : depths[dice.below(3)];
    const double dx = dice.between(-9, 9), dy = dice.between(-9, 9);
    const Texture ground = cloth(seed, dice.between(10, 50));
    Scene scene;
    const auto pair = [&](const char* name, const Texture& a, const Texture& b) {
        scene.name = name;
        scene.first = painted(a, w, h, depth);
        scene.second = painted(b, w, h, depth);
    };
    switch (dice.below(7)) {
        case 0:
            pair("moved", ground, moved(ground, dx, dy));
            break;
        case 1:
            pair("moved whole pixels", ground, moved(ground, std::round(dx), std::round(dy)));
            break;
        case 2:
            pair("turned", ground, turned(ground, dice.between(-0.4, 0.4), w / 2.0, h / 2.0));
            break;
        case 3: {
            const Texture patch = cloth(seed + 1, 20), far = moved(ground, -dx / 3, -dy / 3);
            const double left = w / 4.0, top = h / 4.0;
            pair("patch", over(patch, ground, left, top, w / 2.0, h / 2.0),
                 over(moved(patch, dx, dy), far, left + dx, top + dy, w / 2.0, h / 2.0));
            break;
        }
        case 4:
            scene.name = "noise";
            scene.first = noise(dice, w, h, depth);
            scene.second = noise(dice, w, h, depth);
            break;
        case 5:
            pair("areas", areas(seed), moved(areas(seed), dx, dy));
            break;
        default:
            pair("one colour beside areas", plain({dice.unit(), dice.unit(), dice.unit()}), areas(seed));
            break;
    }
    if (wild) spoil(dice.once_in(2) ? scene.first : scene.second, dice);
    scene.params = drawn_params(dice, w, h);
    scene.position = dice.once_in(3) ? 0.5 : dice.unit();
    scene.name += " of seed " + std::to_string(seed) + ", " + std::to_string(w) + " by " + std::to_string(h) + " at " +
                  std::to_string(depth) + " bits";
    return scene;
}

}  // namespace flow_model::scenes
