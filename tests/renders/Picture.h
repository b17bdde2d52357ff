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
template <class Pixel> constexpr double kFull = kBits<Pixel> == 8 ? 255 : kBits<Pixel> == 16 ? 32768 : 1;
template <class Pixel> auto channel(double part) { return static_cast<decltype(Pixel::alpha)>(part * kFull<Pixel>); }

/// A world of its own pixels: runs of opaque, clear and graded ones, and now and then a channel that is 0 or full; in
/// float also one beyond the scale.
template <class Pixel> class Picture {
public:
    Picture(int width, int height, std::uint64_t seed) {
        Numbers random(seed);
        const auto colour = [&] {
            const double part = random.unit();
            const int kind = random.below(16);
            const bool beyond = kBits<Pixel> == 32 && (kind == 2 || kind == 3);
            return channel<Pixel>(kind < 2 ? kind : !beyond ? part : kind == 2 ? part * 4 : -part);
        };
        const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        while (pixels_.size() < size) {
            const int length = 1 + random.below(60), kind = random.below(8);
            for (int k = 0; k < length && pixels_.size() < size; ++k) {
                const double graded = (k + random.unit()) / length;
                const double alpha = kind < 3 ? 1 : kind < 5 ? 0 : kind < 7 ? graded : random.unit();
                pixels_.push_back({channel<Pixel>(alpha), colour(), colour(), colour()});
            }
        }
        record_.data = pixels_.data();
        record_.width = width, record_.height = height;
        record_.rowbytes = width * static_cast<int>(sizeof(Pixel));
        record_.extent_hint = {0, 0, width, height};
        record_.pix_aspect_num = record_.pix_aspect_den = 1;
        QXp_SetWorldDepth(&record_, kBits<Pixel>);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    QX_LayerDef* record() { return &record_; }
    QX_MaskWorld mask(int x, int y, int kind) { return {record_, x, y, static_cast<std::uint32_t>(kind)}; }
    const std::vector<Pixel>& pixels() const { return pixels_; }

private:
    std::vector<Pixel> pixels_;
    QX_LayerDef record_{};
};

/// FNV-1a over 64 bits.
class Checksum {
public:
    template <class Number> void add(Number number) {
        unsigned char bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        for (const unsigned char byte : bytes) sum_ = (sum_ ^ byte) * 0x100000001B3u;
    }
    /// All that is no number counts as one, since which of its bits an operation keeps is the compiler's choice.
    template <class Pixel> void add(const std::vector<Pixel>& pixels) {
        for (const Pixel& p : pixels) {
            for (const auto v : {p.alpha, p.red, p.green, p.blue}) {
                std::isnan(static_cast<double>(v)) ? add(12345678.0f) : add(v);
            }
        }
    }
    /// One line: the name of a render and its checksum.
    void tell(const std::string& name) const {
        std::printf("%s %016llx\n", name.c_str(), static_cast<unsigned long long>(sum_));
    }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325u;
};

/// The result of a call and the pixels that it left.
template <class Pixel> void tell(const std::string& name, int code, const Picture<Pixel>& picture) {
    Checksum sum;
    sum.add(code);
    sum.add(picture.pixels());
    sum.tell(name);
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

void transfers();
void transforms(int count);
void samplers();
void copies();
void worlds();

}  // namespace renders
