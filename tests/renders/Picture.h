// SPDX-License-Identifier: Apache-2.0
// Pictures from seeds, and checksums of them, made with nothing but the public headers: this program is also compiled
// against other states of the library.
#pragma once

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
    std::uint64_t bits() { return random_(); }
    int below(int n) { return static_cast<int>(random_() % static_cast<std::uint64_t>(n)); }
    int between(int low, int high) { return low + below(high - low); }
    double unit() { return static_cast<double>(random_() >> 11) * 0x1p-53; }

private:
    std::mt19937_64 random_;
};

template <class Pixel> struct DepthName;
template <> struct DepthName<QX_Pixel8> {
    static constexpr int bits = 8;
    static constexpr double full = 255;
};
template <> struct DepthName<QX_Pixel16> {
    static constexpr int bits = 16;
    static constexpr double full = 32768;
};
template <> struct DepthName<QX_PixelFloat> {
    static constexpr int bits = 32;
    static constexpr double full = 1;
};

/// A world of its own pixels: runs of opaque, clear and graded ones, and now and then a channel that is 0 or full; in
/// float also one beyond the scale.
template <class Pixel> class Picture {
    using Channel = decltype(Pixel::alpha);
    static constexpr double kFull = DepthName<Pixel>::full;

public:
    Picture(int width, int height, std::uint64_t seed)
        : pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        record_.data = pixels_.data();
        record_.width = width, record_.height = height;
        record_.rowbytes = width * static_cast<int>(sizeof(Pixel));
        record_.extent_hint = {0, 0, width, height};
        record_.pix_aspect_num = record_.pix_aspect_den = 1;
        QXp_SetWorldDepth(&record_, DepthName<Pixel>::bits);
        fill(seed);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    QX_LayerDef* record() { return &record_; }
    QX_MaskWorld mask(int x, int y, int kind) { return {record_, x, y, static_cast<std::uint32_t>(kind)}; }
    const std::vector<Pixel>& pixels() const { return pixels_; }

private:
    void fill(std::uint64_t seed) {
        Numbers random(seed);
        for (std::size_t i = 0; i < pixels_.size();) {
            const int length = 1 + random.below(60), kind = random.below(8);
            for (int k = 0; k < length && i < pixels_.size(); ++k, ++i) {
                const double graded = (k + random.unit()) / length;
                const double alpha = kind < 3 ? 1 : kind < 5 ? 0 : kind < 7 ? graded : random.unit();
                pixels_[i] = {channel(alpha), colour(random), colour(random), colour(random)};
            }
        }
    }
    static Channel channel(double part) { return static_cast<Channel>(part * kFull); }
    static Channel colour(Numbers& random) {
        const double part = random.unit();
        const int kind = random.below(16);
        if (kind == 0) return channel(0);
        if (kind == 1) return channel(1);
        if constexpr (DepthName<Pixel>::bits == 32) {
            if (kind == 2) return channel(part * 4);
            if (kind == 3) return channel(-part);
        }
        return channel(part);
    }

    std::vector<Pixel> pixels_;
    QX_LayerDef record_{};
};

/// FNV-1a over 64 bits.
class Checksum {
public:
    void add(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i) sum_ = (sum_ ^ bytes[i]) * 0x100000001B3u;
    }
    void add(int number) { add(&number, sizeof number); }
    template <class Integer> void add(const std::vector<Integer>& all) { add(all.data(), all.size() * sizeof all[0]); }
    /// All that is no number counts as one, since which of its bits an operation keeps is the compiler's choice.
    void add(const std::vector<QX_PixelFloat>& all) {
        for (const QX_PixelFloat& p : all) {
            for (float v : {p.alpha, p.red, p.green, p.blue}) {
                if (v != v) v = 12345678.0f;
                add(&v, sizeof v);
            }
        }
    }
    std::uint64_t value() const { return sum_; }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325u;
};

/// One line: the name of a render and its checksum.
inline void tell(const std::string& name, const Checksum& sum) {
    std::printf("%s %016llx\n", name.c_str(), static_cast<unsigned long long>(sum.value()));
}

/// The result of a call and the pixels that it left.
template <class Pixel> void tell(const std::string& name, int code, const Picture<Pixel>& picture) {
    Checksum sum;
    sum.add(code);
    sum.add(picture.pixels());
    tell(name, sum);
}

template <class Pixel> std::string depth_name() { return std::to_string(DepthName<Pixel>::bits); }

/// Calls work.run<Pixel>() for the three depths.
template <class Work> void at_each_depth(Work work) {
    work.template run<QX_Pixel8>();
    work.template run<QX_Pixel16>();
    work.template run<QX_PixelFloat>();
}

void transfers();
void transforms(int count);
void samplers();
void copies();
void worlds();

}  // namespace renders
