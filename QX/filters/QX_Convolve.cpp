// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Convolve.h"

#include <algorithm>

#include "QX/filters/QX_ConvolveKernels.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

const qx::ConvolveKernels* kernels = &qx::plain::convolve_kernels;

/// A kernel's reach to either side, and where its window lies.
struct Shape {
    std::int64_t rows, columns;       ///< half sizes
    std::int32_t offset_x, offset_y;  ///< from a destination pixel to its source pixel

    std::int64_t row_length() const { return 2 * columns + 1; }
    std::int64_t taps() const { return (2 * rows + 1) * row_length(); }
};

Shape shape_of(std::uint32_t flags, std::int32_t size, const QX_LayerDef& src, const QX_LayerDef& dst) {
    const bool one_dimension = (flags & kQX_Convolve_OneDimension) != 0;
    const bool down = one_dimension && (flags & kQX_Convolve_DownColumn) != 0;
    const bool by_origin = (flags & kQX_Convolve_HonourOrigin) != 0;
    const auto offset = [by_origin](int to, int from) { return by_origin ? static_cast<std::int16_t>(to - from) : 0; };
    return {one_dimension && !down ? 0 : size >> 1, down ? 0 : size >> 1, offset(dst.origin_x, src.origin_x),
            offset(dst.origin_y, src.origin_y)};
}

/// Sums wrap in 32 bits.
std::int32_t divisor_of(std::uint32_t flags, const std::int32_t* kernel, std::int64_t taps) {
    if ((flags & kQX_Convolve_Normalise) == 0) return static_cast<std::int32_t>(static_cast<std::uint32_t>(taps) << 8);
    std::uint32_t sum = 0;
    for (std::int64_t i = 0; i < taps; ++i) sum += static_cast<std::uint32_t>(kernel[i]);
    return sum == 0 ? 1 : static_cast<std::int32_t>(sum);
}

/// Whether no weight takes more; of very many nobody asks.
bool fit_16_bits(const std::int32_t* kernel, std::int64_t taps) {
    return taps <= 1 << 16 &&
           std::all_of(kernel, kernel + taps, [](std::int32_t w) { return w == static_cast<std::int16_t>(w); });
}

/// The part of a window that lies in the source, along one axis: the first of its weights, and how many there are.
struct Part {
    std::int64_t first, count;
};
Part part_of(std::int64_t half, std::int64_t centre, std::int64_t length) {
    const std::int64_t first = std::max<std::int64_t>(0, half - centre);
    return {first, std::max<std::int64_t>(0, std::min(2 * half + 1, length - centre + half) - first)};
}

template <class Pixel> class Convolution {
public:
    Convolution(const Shape& shape, const std::int32_t* const (&kernel)[4], const qx::KernelScale& scale,
                const QX_LayerDef& src, const QX_LayerDef& dst)
        : shape_(shape), kernel_(kernel), scale_(scale), src_(src), dst_(dst) {
        in_16_bits_ = std::all_of(kernel, kernel + 4, [&](const auto* k) { return fit_16_bits(k, shape.taps()); });
    }

    /// One row: windows that the source cuts at either side go pixel by pixel.
    void row(std::int32_t y) const {
        const std::int64_t columns = shape_.columns, width = std::max(dst_.width, 0);
        const std::int64_t whole = std::clamp<std::int64_t>(columns - shape_.offset_x, 0, width);
        const std::int64_t cut = std::clamp<std::int64_t>(src_.width - columns - shape_.offset_x, whole, width);
        const Part rows = part_of(shape_.rows, std::int64_t{y} + shape_.offset_y, src_.height);
        for (std::int64_t x = 0; x < whole; ++x) pixels(x, y, 1, rows);
        if (cut > whole) pixels(whole, y, cut - whole, rows);
        for (std::int64_t x = cut; x < width; ++x) pixels(x, y, 1, rows);
    }

private:
    /// Pixels side by side whose windows the source cuts alike.
    void pixels(std::int64_t x, std::int32_t y, std::int64_t count, const Part& rows) const {
        const std::int64_t centre = x + shape_.offset_x;
        const Part columns = part_of(shape_.columns, centre, src_.width);
        qx::KernelWindow window{
            .first = {}, .rows = 0, .columns = 0, .row_length = shape_.row_length(), .in_16_bits = in_16_bits_};
        const auto* source = static_cast<const std::byte*>(src_.data);
        if (rows.count > 0 && columns.count > 0) {
            window.rows = static_cast<std::int32_t>(rows.count);
            window.columns = static_cast<std::int32_t>(columns.count);
            for (int i = 0; i < 4; ++i) {
                window.first[i] = kernel_[i] + rows.first * window.row_length + columns.first;
            }
            const std::int64_t top = y + shape_.offset_y - shape_.rows + rows.first;
            source += top * src_.rowbytes + (centre - shape_.columns + columns.first) * std::int64_t{sizeof(Pixel)};
        }
        kernels->of<Pixel>().row(static_cast<std::int32_t>(count), window, scale_, source, src_.rowbytes,
                                 qx::row_of<Pixel>(dst_, y) + x);
    }

    const Shape& shape_;
    const std::int32_t* const (&kernel_)[4];
    const qx::KernelScale& scale_;
    const QX_LayerDef &src_, &dst_;
    bool in_16_bits_;
};

/// Rows in order; the progress function is asked once enough weights have been used.
template <class Pixel>
int convolve_rows(const QX_ProgressInfo* progress, const Convolution<Pixel>& convolution, const QX_LayerDef& dst,
                  std::int64_t taps) {
    std::int64_t used = 0;
    for (std::int32_t y = 0; y < dst.height; ++y) {
        convolution.row(y);
        used += dst.width * std::min<std::int64_t>(taps, 2049);  // enough for one row
        if (progress == nullptr || progress->progress_func == nullptr || used <= 2048) continue;
        used = 0;
        if (const int code = progress->progress_func(progress->refcon, y + 1, dst.height)) return code;
    }
    return 0;
}

}  // namespace

void qx::choose_convolve_kernels(Level level) { kernels = &convolve_kernels_of(level); }

int QX_Convolve(const QX_ProgressInfo* progress, const QX_LayerDef* src, const M_LRect*, std::uint32_t flags,
                std::int32_t size, const std::int32_t* a_kernel, const std::int32_t* r_kernel,
                const std::int32_t* g_kernel, const std::int32_t* b_kernel, QX_LayerDef* dst) {
    using qx::Place;
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(Place::convolve);
    if (src == nullptr || dst == nullptr) return qx::report_bad_parameter(Place::convolve);
    const int depth = QXp_WorldDepth(src);
    if (const int code = qx::must_have_depth(QXp_WorldDepth(dst), depth, "source", Place::convolve,
                                             "QX_Convolve requires source and dst worlds to be same depth")) {
        return code;
    }
    const std::int32_t* const kernel[4] = {a_kernel, r_kernel, g_kernel, b_kernel};
    const auto missing = [&] { return std::find(kernel, kernel + 4, nullptr) != kernel + 4; };
    return qx::with_depth(*dst, Place::convolve, [&]<class Pixel>() {
        if (src->data == nullptr || dst->data == nullptr || missing() || size < 0 || size % 2 == 0) {
            return qx::report_bad_parameter(Place::convolve);
        }
        const Shape shape = shape_of(flags, size, *src, *dst);
        qx::KernelScale scale{.divisor = {}, .clamps = (flags & kQX_Convolve_Unclamped) == 0};
        for (int i = 0; i < 4; ++i) scale.divisor[i] = divisor_of(flags, kernel[i], shape.taps());
        return convolve_rows(progress, Convolution<Pixel>(shape, kernel, scale, *src, *dst), *dst, shape.taps());
    });
}
