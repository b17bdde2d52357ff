// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_BoxBlurPass.h"

#include <algorithm>
#include <cmath>

#include "QX/indep/QX_Report.h"

namespace qx {

BoxWindow::BoxWindow(float radius, std::uint32_t flags)
    : reach(static_cast<std::int64_t>(std::ceil(radius))),
      end_short(static_cast<std::int32_t>((static_cast<float>(reach) - radius) * 1024.0f)),
      conv_flags(flags) {}

namespace {

/// Sums of integers are exact.
template <class Pixel>
using SumsOf = std::array<std::conditional_t<DepthOf<Pixel>::number == 32, float, std::int64_t>, 4>;

template <class Pixel> void add(SumsOf<Pixel>& sums, const ChannelArray<Pixel>& pixel) {
    for (unsigned c = 0; c < 4; ++c) sums[c] += pixel[c];
}
template <class Pixel> void subtract(SumsOf<Pixel>& sums, const ChannelArray<Pixel>& pixel) {
    for (unsigned c = 0; c < 4; ++c) sums[c] -= pixel[c];
}

/// The window as it moves along a line. A float sum begins at the first position and goes on from there.
template <class Pixel> class RunningWindow {
public:
    RunningWindow(const BoxWindow& window, const BlurLine<Pixel>& in, std::int64_t at)
        : window_(window), in_(in), at_(at) {
        for (std::int64_t i = std::max<std::int64_t>(left(), 0); i <= last_inside(); ++i)
            add<Pixel>(sums_, in_.load(i));
    }
    void step() {
        if (in_.has(left())) subtract<Pixel>(sums_, in_.load(left()));
        ++at_;
        if (in_.has(right())) add<Pixel>(sums_, in_.load(right()));
        if (inside() == 0) sums_ = {};
    }
    std::int64_t inside() const {
        return std::max<std::int64_t>(last_inside() - std::max<std::int64_t>(left(), 0) + 1, 0);
    }
    std::int64_t divisor() const {
        const int ends = in_.has(left()) + in_.has(right());
        return window_.normalises_edges() ? 1024 * inside() - window_.end_short * ends : window_.full();
    }
    const SumsOf<Pixel>& sums() const { return sums_; }
    SumsOf<Pixel> ends() const {
        SumsOf<Pixel> ends{};
        if (in_.has(left())) add<Pixel>(ends, in_.load(left()));
        if (in_.has(right())) add<Pixel>(ends, in_.load(right()));
        return ends;
    }

private:
    std::int64_t left() const { return at_ - window_.reach; }
    std::int64_t right() const { return at_ + window_.reach; }
    std::int64_t last_inside() const { return std::min(right(), in_.length - 1); }

    const BoxWindow& window_;
    const BlurLine<Pixel>& in_;
    std::int64_t at_;
    SumsOf<Pixel> sums_{};
};

/// Each step in float; halves go to the even number.
template <class D, class Sum>
typename D::Channel mean_of(const BoxWindow& window, Sum sum, Sum ends, std::int64_t divisor) {
    if (divisor == 0) return 0;
    const float whole = 1024.0f * static_cast<float>(sum);
    const float lacking = static_cast<float>(window.end_short) * static_cast<float>(ends);
    const float v = (whole - lacking) / static_cast<float>(divisor);
    const float full = static_cast<float>(D::full), limited = v < 0 ? 0.0f : v > full ? full : v;
    return static_cast<typename D::Channel>(D::number == 32 ? limited : std::nearbyint(limited));
}

}  // namespace
}  // namespace qx

template <class Pixel>
void QXp_BoxBlurPass(const qx::BoxWindow& window, const qx::BlurLine<Pixel>& in, std::int64_t offset,
                     const qx::BlurLine<Pixel>& out) {
    if (out.step != sizeof(Pixel)) {
        throw qx::report_failed_verification(qx::Place::blur, "untested SSE2 codepath in blur");
    }
    qx::RunningWindow<Pixel> running(window, in, offset);
    for (std::int64_t i = 0; i < out.length; ++i) {
        if (i > 0) running.step();
        const auto ends = running.ends();
        const std::int64_t divisor = running.divisor();
        auto pixel = out.load(i);
        for (unsigned c = 0; c < 4; ++c) {
            if ((window.conv_flags >> c & 1) == 0) continue;
            pixel[c] = qx::mean_of<qx::DepthOf<Pixel>>(window, running.sums()[c], ends[c], divisor);
        }
        out.store(i, pixel);
    }
}

template void QXp_BoxBlurPass(const qx::BoxWindow&, const qx::BlurLine<QX_Pixel8>&, std::int64_t,
                              const qx::BlurLine<QX_Pixel8>&);
template void QXp_BoxBlurPass(const qx::BoxWindow&, const qx::BlurLine<QX_Pixel16>&, std::int64_t,
                              const qx::BlurLine<QX_Pixel16>&);
template void QXp_BoxBlurPass(const qx::BoxWindow&, const qx::BlurLine<QX_PixelFloat>&, std::int64_t,
                              const qx::BlurLine<QX_PixelFloat>&);
