// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_UnoScan.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QX/filters/QX_GaussianKernel.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Report.h"
#include "platform/TK_Memory.h"

namespace {

using qx::Depth16;
using qx::Depth8;

/// A line and the span of it that changes; a pass reads the copy of what the line was.
template <class Sample> struct Scan {
    std::int32_t len, start, end;
    Sample *scratch, *line;

    /// The line as far as a window of this reach sees it from the span.
    void copy(std::int32_t reach) const {
        const std::int32_t from = std::max(start - reach, 0), to = end + std::min(reach, len - end);
        std::memcpy(scratch + from, line + from, static_cast<std::size_t>(to - from) * sizeof(Sample));
    }
    std::int64_t copied(std::int64_t at) const { return scratch[std::clamp<std::int64_t>(at, 0, len - 1)]; }
};

/// Quotients by one divisor, from 2 to below 2^31, of n below 2^32 at 8 bits, and below 2^16 times the divisor at 16
/// bits, where the divisor is 2^15 or more. The factor f lies above 2^k / divisor, by less than 1, so n * f / 2^k lies
/// above n / divisor by less than n / 2^k. That stays below 1 / divisor, and so below the next integer: n * divisor is
/// less than 2^k, with k = 64 for divisors below 2^24, as they are at 8 bits, and less than 2^16 * 2^62 with k = 78.
template <class D> class Quotient {
public:
    explicit Quotient(std::int64_t divisor)
        : factor_(static_cast<std::uint64_t>((kOne - 1) / static_cast<Wide>(divisor)) + 1) {}
    std::int64_t operator()(std::int64_t n) const {
        return static_cast<std::int64_t>(static_cast<Wide>(n) * factor_ >> kShift);
    }

private:
    __extension__ using Wide = unsigned __int128;
    static constexpr int kShift = D::number == 8 ? 64 : 78;
    static constexpr Wide kOne = Wide{1} << kShift;
    std::uint64_t factor_;
};

/// A pass over a span: the mean of the samples nearer than `reach`, and of `share` parts of `full` of the two at
/// `reach`. Kept: of these the left one counts inside the line alone.
template <class D> class BoxPass {
public:
    using Sample = typename D::Channel;

    BoxPass(const Scan<Sample>& scan, std::int32_t reach, std::int32_t share)
        : scan_(scan), reach_(reach), share_(share) {}

    void run() {
        scan_.copy(reach_);
        sum_ = first_sum();
        // Where the whole window lies inside no place is limited.
        const std::int32_t left = std::clamp(reach_, scan_.start, scan_.end);
        const std::int32_t right = std::clamp(scan_.len - reach_, left, scan_.end);
        const auto limited = [scan = scan_](std::int64_t at) { return scan.copied(at); };
        const auto inside = [copy = scan_.scratch](std::int64_t at) { return std::int64_t{copy[at]}; };
        step<false>(scan_.start, left, limited);
        step<true>(left, right, inside);
        step<true>(right, scan_.end, limited);
    }

private:
    std::int64_t first_sum() const {
        const std::int64_t from = std::int64_t{scan_.start} - reach_ + 1, to = std::int64_t{scan_.start} + reach_;
        std::int64_t sum = std::max<std::int64_t>(0, -from) * scan_.copied(0) +
                           std::max<std::int64_t>(0, to - scan_.len) * scan_.copied(to);
        for (auto i = std::max<std::int64_t>(from, 0); i < std::min<std::int64_t>(to, scan_.len); ++i) {
            sum += scan_.scratch[i];
        }
        return sum;
    }

    /// What a step needs is held apart from the line, of which the compiler cannot tell that it lies elsewhere.
    template <bool has_left, class At> void step(std::int64_t from, std::int64_t to, const At at) {
        if (from >= to) return;
        const Quotient<D> quotient(std::int64_t{D::full} * (2 * reach_ - 1) +
                                   std::int64_t{share_} * (has_left ? 2 : 1));
        const std::int64_t reach = reach_, share = share_;
        Sample* const line = scan_.line;
        std::int64_t sum = sum_, left = at(from - reach);
        for (std::int64_t x = from; x < to; ++x) {
            const std::int64_t right = at(x + reach), ends = has_left ? left + right : right;
            line[x] = static_cast<Sample>(quotient(D::full * sum + share * ends + D::half));
            left = at(x - reach + 1);
            sum += right - left;
        }
        sum_ = sum;
    }

    const Scan<Sample>& scan_;
    std::int32_t reach_, share_;
    std::int64_t sum_ = 0;
};

/// The weights around a sample, in memory that ends with them.
class Bell {
public:
    explicit Bell(double radius)
        : handle_(TK_AllocateHandle(
              qx::site(qx::Place::mask_buffer), qx::text_of(qx::Text::gaussian_weights),
              (2 * static_cast<std::size_t>(std::ceil(std::max(radius, 0.0))) + 1) * sizeof(std::uint32_t))) {
        code_ = handle_ == nullptr
                    ? kQX_OutOfMemory
                    : QX_GaussianKernel(nullptr, radius, kQX_GaussianKernel_OneRow | kQX_GaussianKernel_Normalise, 1.0,
                                        &width_, static_cast<std::uint32_t*>(*handle_));
    }
    ~Bell() { TK_FreeHandle(handle_); }
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;

    int code() const { return code_; }
    std::int32_t width() const { return width_; }
    const std::uint32_t* weights() const { return static_cast<const std::uint32_t*>(*handle_); }

private:
    TK_Handle handle_;
    int code_;
    std::int32_t width_ = 0;
};

template <class D> int bell_scan(const Scan<typename D::Channel>& scan, double radius) {
    const Bell bell(radius);
    if (bell.code() != 0) return bell.code();
    const std::int32_t reach = bell.width() / 2;
    std::int64_t total = 0;
    for (std::int32_t i = 0; i < bell.width(); ++i) total += bell.weights()[i];
    scan.copy(reach);
    for (std::int32_t x = scan.start; x < scan.end; ++x) {
        std::int64_t sum = total / 2;
        const std::uint32_t* const centre = bell.weights() + reach;
        const std::int32_t from = std::max(-reach, -x), to = std::min(reach + 1, scan.len - x);  // what lies inside
        for (std::int32_t i = -reach; i < from; ++i) sum += centre[i] * scan.copied(0);
        for (std::int32_t i = from; i < to; ++i) sum += std::int64_t{centre[i]} * scan.scratch[x + i];
        for (std::int32_t i = to; i <= reach; ++i) sum += centre[i] * scan.copied(scan.len - 1);
        scan.line[x] = static_cast<typename D::Channel>(sum / total);
    }
    return 0;
}

template <class D> int g_scan(int kind, const Scan<typename D::Channel>& scan, std::int32_t radius) {
    if (kind == 1) return bell_scan<D>(scan, radius * 0x1p-16);
    const std::int32_t k = std::max(((radius >> 1) + 0x8000) >> 16, 0);
    BoxPass<D>(scan, k + 1, 0).run();
    return 0;
}

template <class D> int box_scan(int passes, Scan<typename D::Channel> scan, std::int32_t radius) {
    const double length = radius * 0x1p-16, r = length * (passes != 0 ? 1.0 : 1.4) / 2.71;
    if (r <= 1.0) return g_scan<D>(passes, scan, radius);
    const std::int32_t margin = 3 + static_cast<std::int32_t>(length * (passes != 0 ? 0.9 : 0.6));
    scan.start = std::max(scan.start - margin, 0);
    scan.end = std::min<std::int32_t>(scan.len, scan.end + std::min(margin, scan.len - scan.end));
    const auto whole = static_cast<std::int32_t>(r);
    const auto share = static_cast<std::int32_t>((r - whole) * D::full);
    for (int pass = 0; pass < (passes != 0 ? 3 : 1); ++pass) BoxPass<D>(scan, whole + 1, share).run();
    return 0;
}

/// Gives `blur` the line with its span, limited to the line.
template <class Sample, class Blur>
int with_span(std::int32_t len, std::int32_t start, std::int32_t end, Sample* scratch, Sample* line, const Blur& blur) {
    const Scan<Sample> scan{len, std::max(start, 0), std::min(end, len), scratch, line};
    if (scan.start >= scan.end) return 0;
    if (scratch == nullptr || line == nullptr) return qx::report_bad_parameter(qx::Place::mask_buffer);
    return blur(scan);
}

}  // namespace

int QX_BoxBlurUnoScan(int passes, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                      std::uint8_t* scratch, std::uint8_t* scan) {
    return with_span(len, start, end, scratch, scan,
                     [=](const auto& span) { return box_scan<Depth8>(passes, span, radius); });
}
int QX_BoxBlurDeepUnoScan(int passes, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                          std::uint16_t* scratch, std::uint16_t* scan) {
    return with_span(len, start, end, scratch, scan,
                     [=](const auto& span) { return box_scan<Depth16>(passes, span, radius); });
}

int QX_GBlurUnoScan(int kind, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                    std::uint8_t* scratch, std::uint8_t* scan) {
    return with_span(len, start, end, scratch, scan,
                     [=](const auto& span) { return g_scan<Depth8>(kind, span, radius); });
}
int QX_GBlurDeepUnoScan(int kind, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                        std::uint16_t* scratch, std::uint16_t* scan) {
    return with_span(len, start, end, scratch, scan,
                     [=](const auto& span) { return g_scan<Depth16>(kind, span, radius); });
}
