// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_UnoScan.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QX/filters/QX_GaussianKernel.h"
#include "QX/filters/QX_UnoScanKernels.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Report.h"
#include "platform/TK_Memory.h"

namespace {

using qx::BoxQuotient;
using qx::BoxWindow;
using qx::Depth16;
using qx::Depth8;

const qx::UnoScanKernels* kernels = &qx::plain::uno_scan_kernels;

template <class Sample> qx::BoxMeans<Sample>* means_of() {
    if constexpr (sizeof(Sample) == 1) {
        return kernels->means8;
    } else {
        return kernels->means16;
    }
}

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

/// A pass over a span. Kept: of the two samples at the reach the left one counts inside the line alone.
template <class D> class BoxPass {
public:
    using Sample = typename D::Channel;

    BoxPass(const Scan<Sample>& scan, const BoxWindow& window) : scan_(scan), window_(window) {}

    void run() {
        scan_.copy(window_.reach);
        sum_ = first_sum();
        // Where the whole window lies inside no place is limited.
        const std::int32_t left = std::clamp(window_.reach, scan_.start, scan_.end);
        const std::int32_t right = std::clamp(scan_.len - window_.reach, left, scan_.end);
        limited_means<1>(scan_.start, left);
        if (left < right) means_of<Sample>()(right - left, window_, scan_.scratch + left, &sum_, scan_.line + left);
        limited_means<2>(right, scan_.end);
    }

private:
    std::int64_t first_sum() const {
        const std::int64_t from = std::int64_t{scan_.start} - window_.reach + 1;
        const std::int64_t to = std::int64_t{scan_.start} + window_.reach;
        std::int64_t sum = std::max<std::int64_t>(0, -from) * scan_.copied(0) +
                           std::max<std::int64_t>(0, to - scan_.len) * scan_.copied(to);
        for (auto i = std::max<std::int64_t>(from, 0); i < std::min<std::int64_t>(to, scan_.len); ++i) {
            sum += scan_.scratch[i];
        }
        return sum;
    }

    template <int ends_inside> void limited_means(std::int64_t from, std::int64_t to) {
        if (from >= to) return;
        const BoxQuotient<D> quotient(window_.divisor<D>(ends_inside));
        const Scan<Sample> scan = scan_;
        for (std::int64_t x = from; x < to; ++x) {
            const std::int64_t right = scan.copied(x + window_.reach);
            const std::int64_t ends = right + (ends_inside == 2 ? scan.copied(x - window_.reach) : 0);
            scan.line[x] = static_cast<Sample>(quotient(window_.weighted<D, std::int64_t>(sum_, ends) + D::half));
            sum_ += right - scan.copied(x - window_.reach + 1);
        }
    }

    const Scan<Sample>& scan_;
    const BoxWindow window_;
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
    BoxPass<D>(scan, {k + 1, 0}).run();
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
    for (int pass = 0; pass < (passes != 0 ? 3 : 1); ++pass) BoxPass<D>(scan, {whole + 1, share}).run();
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

void qx::choose_uno_scan_kernels(Level level) { kernels = &uno_scan_kernels_of(level); }

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
