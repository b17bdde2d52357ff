// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_GaussianBlurLine.h"

namespace qx {

namespace {

/// 8 bits: exact, and unsigned, for sums of long kernels.
template <class D> using SumOf = std::conditional_t<D::number == 8, std::uint32_t, float>;

template <class D> SumOf<D> product(std::int32_t weight, typename D::Channel channel) {
    if constexpr (D::number == 32) {
        return static_cast<float>(weight) * channel;
    } else {
        return static_cast<SumOf<D>>(weight * channel);
    }
}

template <class D> typename D::Channel mean_of(SumOf<D> sum, std::int32_t divisor) {
    using Channel = typename D::Channel;
    if (divisor == 0) return 0;
    const std::int32_t half = divisor / 2;
    if constexpr (D::number == 8) {
        return static_cast<Channel>((sum + static_cast<std::uint32_t>(half)) / static_cast<std::uint32_t>(divisor));
    } else if constexpr (D::number == 16) {
        const float mean = (sum + static_cast<float>(half)) / static_cast<float>(divisor);
        return static_cast<Channel>(static_cast<std::int32_t>(mean));
    } else {
        return sum / static_cast<float>(divisor);
    }
}

template <class Pixel>
ChannelArray<Pixel> blurred(const GaussianLines& lines, const BlurLine<Pixel>& taps, std::int64_t centre,
                            std::int32_t divisor) {
    using D = DepthOf<Pixel>;
    std::array<SumOf<D>, 4> sums{};
    const auto add = [&](std::int64_t at, std::int64_t distance) {
        if (!taps.has(at)) return;
        const ChannelArray<Pixel> tap = taps.load(at);
        for (unsigned c = 0; c < 4; ++c) sums[c] += product<D>(lines.weights[distance], tap[c]);
    };
    add(centre, 0);
    for (std::int64_t k = 1; k <= lines.reach; ++k) {
        add(centre - k, k);
        add(centre + k, k);
    }
    ChannelArray<Pixel> pixel;
    for (unsigned c = 0; c < 4; ++c) pixel[c] = mean_of<D>(sums[c], divisor);
    return pixel;
}

}  // namespace

template <class Pixel>
void gaussian_blur_line(const GaussianLines& lines, const BlurLine<Pixel>& taps, const BlurLine<Pixel>& raw,
                        const BlurLine<Pixel>& out) {
    for (std::int64_t i = 0; i < out.length; ++i) {
        const std::int64_t centre = i + lines.offset;
        const ChannelArray<Pixel> mean = blurred(lines, taps, centre, lines.divisors[i]);
        ChannelArray<Pixel> pixel = raw.has(centre) ? raw.load(centre) : ChannelArray<Pixel>{};
        for (unsigned c = 0; c < 4; ++c) {
            if ((lines.conv_flags >> c & 1) != 0) pixel[c] = mean[c];
        }
        out.store(i, pixel);
    }
}

template void gaussian_blur_line(const GaussianLines&, const BlurLine<QX_Pixel8>&, const BlurLine<QX_Pixel8>&,
                                 const BlurLine<QX_Pixel8>&);
template void gaussian_blur_line(const GaussianLines&, const BlurLine<QX_Pixel16>&, const BlurLine<QX_Pixel16>&,
                                 const BlurLine<QX_Pixel16>&);
template void gaussian_blur_line(const GaussianLines&, const BlurLine<QX_PixelFloat>&, const BlurLine<QX_PixelFloat>&,
                                 const BlurLine<QX_PixelFloat>&);

}  // namespace qx
