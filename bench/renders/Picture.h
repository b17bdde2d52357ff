// SPDX-License-Identifier: Apache-2.0
// Pictures from seeds, and checksums of them, made with nothing but the public headers: this program is also compiled
// against other states of the library.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "QX/QX.h"

namespace renders {

class Numbers {
public:
    explicit Numbers(std::uint64_t seed) : random_(seed) {}
    int below(int n) { return static_cast<int>(random_() % static_cast<std::uint64_t>(n)); }
    int between(int low, int high) { return low + below(high - low); }
    double unit() { return static_cast<double>(random_() >> 11) * 0x1p-53; }

private:
    std::mt19937_64 random_;
};

template <class Pixel> constexpr int kBits = 2 * static_cast<int>(sizeof(Pixel));
template <class Pixel> auto channel(double part) {
    constexpr double full = kBits<Pixel> == 8 ? 255 : kBits<Pixel> == 16 ? 32768 : 1;
    return static_cast<decltype(Pixel::alpha)>(part * full);
}

/// A world of its own pixels: runs of opaque, clear and graded ones, and now and then a channel that is 0 or full; in
/// float also one beyond the scale.
template <class Pixel> struct Picture {
    Picture(int width, int height, std::uint64_t seed) {
        Numbers random(seed);
        const auto colour = [&] {
            const double part = random.unit();
            const int kind = random.below(16);
            const bool beyond = kBits<Pixel> == 32 && (kind == 2 || kind == 3);
            return channel<Pixel>(kind < 2 ? kind : !beyond ? part : kind == 2 ? part * 4 : -part);
        };
        const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        while (pixels.size() < size) {
            const int length = 1 + random.below(60), kind = random.below(8);
            for (int k = 0; k < length && pixels.size() < size; ++k) {
                const double graded = (k + random.unit()) / length;
                const double alpha = kind < 3 ? 1 : kind < 5 ? 0 : kind < 7 ? graded : random.unit();
                pixels.push_back({channel<Pixel>(alpha), colour(), colour(), colour()});
            }
        }
        record.data = pixels.data();
        record.width = width, record.height = height;
        record.rowbytes = width * static_cast<int>(sizeof(Pixel));
        record.extent_hint = {0, 0, width, height};
        record.pix_aspect_num = record.pix_aspect_den = 1;
        QXp_SetWorldDepth(&record, kBits<Pixel>);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    QX_MaskWorld mask(int x, int y, int kind) { return {record, x, y, static_cast<std::uint32_t>(kind)}; }

    std::vector<Pixel> pixels{};
    QX_LayerDef record{};
};

/// FNV-1a over 64 bits: the sum with a number more.
template <class Number> std::uint64_t add(Number number, std::uint64_t sum) {
    unsigned char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    for (const unsigned char byte : bytes) sum = (sum ^ byte) * 0x100000001B3u;
    return sum;
}
constexpr std::uint64_t kNothing = 0xCBF29CE484222325u;

/// Prints a line: the name of a render and its checksum. All that is no number counts as one, since which of its bits
/// an operation keeps is the compiler's choice.
template <class Pixel>
void tell(const std::string& name, const std::vector<Pixel>& pixels, std::uint64_t sum = kNothing) {
    for (const Pixel& p : pixels) {
        for (const auto v : {p.alpha, p.red, p.green, p.blue}) {
            sum = std::isnan(static_cast<double>(v)) ? add(12345678.0f, sum) : add(v, sum);
        }
    }
    std::printf("%s %016llx\n", name.c_str(), static_cast<unsigned long long>(sum));
}
/// The same, of the result of a call and the pixels that it left.
template <class Pixel> void tell(const std::string& name, int code, const Picture<Pixel>& picture) {
    tell(name, picture.pixels, add(code, kNothing));
}

template <class Pixel> std::string depth_name() { return std::to_string(kBits<Pixel>); }

/// Calls work(Pixel{}) for the three depths.
template <class Work> void at_each_depth(const Work& work) {
    work(QX_Pixel8{});
    work(QX_Pixel16{});
    work(QX_PixelFloat{});
}

inline const QX_LinearBlendingTables* gamma_tables() {
    static const QX_LinearBlendingTables tables = [] {
        QX_LinearBlendingTables built;
        QX_BuildGammaBlendingTables(2.2f, &built);
        return built;
    }();
    return &tables;
}

}  // namespace renders
