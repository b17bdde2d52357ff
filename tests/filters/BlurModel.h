// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "QX/filters/QX_GaussianKernel.h"
#include "tests/support/Test.h"

/// Line blurs as they are told, pixel by pixel: no sums that run where integers allow for others, no buffers, spans
/// counted out.
namespace qx::test {

/// A world over memory of the test at any alignment, with bytes around it that nobody may touch.
template <class Pixel> struct Plate {
    int width, height, rowbytes;
    std::vector<std::byte> memory;
    World world;

    Plate(int w, int h, FillKind fill, std::uint64_t seed, int shift = 0, int padding = 0)
        : width(w),
          height(h),
          rowbytes(w * static_cast<int>(sizeof(Pixel)) + padding),
          memory(static_cast<std::size_t>(128 + shift + h * rowbytes + 128), std::byte{0x5A}),
          world(QX_World::NewReference(memory.data() + 64 + shift, w, h, DepthOf<Pixel>::number, rowbytes)) {
        std::vector<Pixel> row(static_cast<std::size_t>(w));
        for (int y = 0; y < h; ++y) {
            fill_pixels<Pixel>(row, fill, seed * 1000 + static_cast<std::uint64_t>(y));
            std::memcpy(place(0, y), row.data(), row.size() * sizeof(Pixel));
        }
    }
    std::byte* place(int x, int y) const {
        return static_cast<std::byte*>(world->data) + y * rowbytes + x * static_cast<int>(sizeof(Pixel));
    }
    std::array<QX_ChannelOf<Pixel>, 4> at(int x, int y) const {
        std::array<QX_ChannelOf<Pixel>, 4> pixel;
        std::memcpy(&pixel, place(x, y), sizeof pixel);
        return pixel;
    }
};

struct Blur {
    float radius = 0;
    std::uint32_t flags = 15;
    int iterations = -1;  ///< -1: Gaussian
    bool from_columns = false, to_columns = false, straight = false, copies = false;
    const QX_ProgressInfo* progress = nullptr;

    void operator()(const QX_World* src, QX_World* dst) const {
        const auto alpha = straight ? GK::kAlphaType_Straight : GK::kAlphaType_Premultiplied;
        if (iterations < 0) {
            QX_GaussianBlur1D(progress, src, radius, flags, from_columns, alpha, to_columns, alpha, copies, dst);
        } else {
            QX_BoxBlur1D(progress, src, radius, flags, iterations, from_columns, alpha, to_columns, alpha, copies, dst);
        }
    }
};
inline std::ostream& operator<<(std::ostream& out, const Blur& b) {
    return out << "radius " << b.radius << " flags " << b.flags << " passes " << b.iterations << " columns "
               << b.from_columns << b.to_columns << " straight " << b.straight << " copies " << b.copies;
}

template <class Pixel> class BlurModel {
    using D = DepthOf<Pixel>;
    using Channel = typename D::Channel;
    static constexpr bool real = D::number == 32;
    using Values = std::vector<Channel>;  ///< one channel along a line
    /// Positions of the source line from `begin` on; nothing lies outside.
    struct Span {
        int begin;
        Values values;
        bool has(int at) const { return at >= begin && at < begin + static_cast<int>(values.size()); }
        Channel at(int i) const { return has(i) ? values[static_cast<std::size_t>(i - begin)] : Channel{}; }
    };

public:
    /// What `blur` makes of `dst`.
    static Plate<Pixel> blurred(const Blur& blur, const Plate<Pixel>& src, const Plate<Pixel>& dst) {
        Plate<Pixel> out(dst.width, dst.height, FillKind::clear, 0);
        const int lines = blur.to_columns ? dst.width : dst.height, length = blur.to_columns ? dst.height : dst.width;
        const auto origin = [](const QX_World& w, bool x) { return x ? w.origin_x : w.origin_y; };
        const int across = origin(*dst.world, blur.to_columns) - origin(*src.world, blur.from_columns);
        const int along = origin(*dst.world, !blur.to_columns) - origin(*src.world, !blur.from_columns);
        for (int line = 0; line < lines; ++line) {
            for (unsigned c = 0; c < 4; ++c) {
                Values values;
                for (int i = 0; i < length; ++i) {
                    values.push_back(blur.to_columns ? dst.at(line, i)[c] : dst.at(i, line)[c]);
                }
                filter_line(blur, src, line + across, along, c, values);
                for (int i = 0; i < length; ++i) {
                    const auto at = blur.to_columns ? out.place(line, i) : out.place(i, line);
                    std::memcpy(at + c * sizeof(Channel), &values[static_cast<std::size_t>(i)], sizeof(Channel));
                }
            }
        }
        return out;
    }

    static void expect(const Blur& blur, const Plate<Pixel>& src, Plate<Pixel>& dst) {
        const Plate<Pixel> want = blurred(blur, src, dst);
        std::vector<std::byte> around = dst.memory;
        blur(src.world.get(), dst.world.get());
        for (const auto& [x, y] : places(dst.width, dst.height)) {
            ASSERT_EQ(dst.at(x, y), want.at(x, y))
                << "at " << x << ", " << y << " of " << dst.width << " x " << dst.height << " " << blur;
            std::memcpy(around.data() + (dst.place(x, y) - dst.memory.data()), dst.place(x, y), sizeof(Pixel));
        }
        ASSERT_TRUE(around == dst.memory) << "touched what lies around, " << blur;
    }

private:
    static void filter_line(const Blur& b, const Plate<Pixel>& src, int line, int along, unsigned c, Values& out) {
        const int lines = b.from_columns ? src.width : src.height, length = b.from_columns ? src.height : src.width;
        if (line < 0 || line >= lines) return out.assign(out.size(), Channel{});
        Span raw{0, {}}, taps{0, {}};
        for (int i = 0; i < length; ++i) {
            const auto pixel = b.from_columns ? src.at(line, i) : src.at(i, line);
            raw.values.push_back(pixel[c]);
            taps.values.push_back(b.straight && c > 0 ? matted(pixel[0], pixel[c]) : pixel[c]);
        }
        const bool selected = (b.flags >> c & 1) != 0;
        if (b.iterations >= 0) {
            if (selected) box(b, taps, along, out);
            return;
        }
        for (std::size_t i = 0; i < out.size(); ++i) {
            const int t = static_cast<int>(i) + along;
            out[i] = selected ? gaussian(b, taps, t) : raw.at(t);
        }
    }

    static Channel matted(Channel alpha, Channel colour) {
        if constexpr (real) return alpha * colour;
        const std::int64_t product = std::int64_t{1} * static_cast<int>(alpha) * static_cast<int>(colour);
        return static_cast<Channel>(D::number == 8 ? (product * 2 + 255) / 510 : (product + 16383) / 32768);
    }

    static Channel gaussian(const Blur& b, const Span& taps, int t) {
        const int reach = static_cast<int>(std::ceil(b.radius));
        const auto weight = [&](int k) { return k == 0 ? 255 : int(255.0 * QXp_GaussianValue(k / (b.radius + 1.0))); };
        std::uint64_t exact = 0;
        float sum = 0;
        std::int32_t all = 0, used = 0;
        for (int i = 0; i <= 2 * reach; ++i) {  // 0, -1, 1, -2, 2 ...
            const int k = (i + 1) / 2, at = i % 2 != 0 ? t - k : t + k, w = weight(k);
            all += w;
            if (!taps.has(at)) continue;
            used += w;
            exact += static_cast<std::uint64_t>(w) * static_cast<std::uint64_t>(real ? 0 : taps.at(at));
            sum += static_cast<float>(w) * static_cast<float>(taps.at(at));
        }
        const std::int32_t divisor = (b.flags & 16) != 0 ? used : all, half = divisor / 2;
        if (divisor == 0) return 0;
        if (D::number == 8)
            return static_cast<Channel>((exact + static_cast<unsigned>(half)) / static_cast<unsigned>(divisor));
        if (D::number == 16)
            return static_cast<Channel>((sum + static_cast<float>(half)) / static_cast<float>(divisor));
        return static_cast<Channel>(sum / static_cast<float>(divisor));
    }

    static void box(const Blur& b, Span in, int along, Values& out) {
        const int reach = static_cast<int>(std::ceil(b.radius)), n = b.iterations;
        const int source_end = static_cast<int>(in.values.size());
        const int end = along + static_cast<int>(out.size());
        for (int p = 0; p < n; ++p) {
            const int more = reach * (n - 1 - p), cut = reach * (p + 1);
            const bool last = p == n - 1;
            const int from = last ? along : std::max(along - more, -cut);
            const int to = last ? end : std::min(end + more, source_end + cut);
            Span next{from, {}};
            float sum = 0;
            for (int t = from; t < to; ++t) next.values.push_back(mean(b, in, t, t == from, sum));
            in = next;
        }
        if (n > 0) out = in.values;
    }

    /// `running` goes on from position to position.
    static Channel mean(const Blur& b, const Span& in, int t, bool first, float& running) {
        const int reach = static_cast<int>(std::ceil(b.radius));
        const int shortage = static_cast<int>((static_cast<float>(reach) - b.radius) * 1024.0f);
        std::int64_t exact = 0, units = 0;
        float from_left = 0;
        for (int at = t - reach; at <= t + reach; ++at) {
            if (!in.has(at)) continue;
            units += 1024 - (at == t - reach || at == t + reach ? shortage : 0);
            exact += static_cast<std::int64_t>(real ? 0 : in.at(at));
            from_left += static_cast<float>(in.at(at));
        }
        const int inside =
            std::min(t + reach + 1, in.begin + static_cast<int>(in.values.size())) - std::max(t - reach, in.begin);
        if (first) {
            running = from_left;
        } else {
            running = (running - static_cast<float>(in.at(t - reach - 1))) + static_cast<float>(in.at(t + reach));
        }
        if (inside <= 0) running = 0;
        const float sum = real ? running : static_cast<float>(exact);
        const float ends = static_cast<float>(in.at(t - reach)) + static_cast<float>(in.at(t + reach));
        const auto divisor = (b.flags & 16) != 0 ? units : std::int64_t{2} * (512 * (2 * reach + 1) - shortage);
        if (divisor == 0) return 0;
        const float v = (1024.0f * sum - static_cast<float>(shortage) * ends) / static_cast<float>(divisor);
        const float limited = v < 0 ? 0 : v > static_cast<float>(D::full) ? static_cast<float>(D::full) : v;
        return static_cast<Channel>(real ? limited : std::nearbyint(limited));
    }
};

}  // namespace qx::test
