// SPDX-License-Identifier: Apache-2.0
// Mask buffers with one another: combined, blended, and made of another depth.
#include "QX/world/QX_UnoCombine.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QX/indep/QX_Report.h"
#include "QX/pixelops/QX_Noise.h"
#include "QX/world/QX_UnoKernels.h"
#include "QX/world/QX_UnoRows.h"

namespace {

using namespace qx;

/// What of a source goes where in a destination. `left` and `top` are of the source.
struct Overlap {
    std::int64_t shift_x, shift_y;
    std::int32_t left, top, columns, rows;

    bool empty() const { return columns <= 0 || rows <= 0; }
};

/// The overlap of a rectangle of a source, which is as large as told, with a destination.
Overlap overlap(const M_LRect* rect, const M_LPoint* point, std::int32_t width, std::int32_t height,
                const QX_UnoBuffer& dst) {
    const M_LRect r = rect != nullptr ? *rect : M_LRect{0, 0, width, height};
    Overlap o{};
    if (point != nullptr) o.shift_x = std::int64_t{point->x} - r.left, o.shift_y = std::int64_t{point->y} - r.top;
    const auto clip = [](std::int64_t from, std::int64_t to, std::int64_t shift, std::int64_t length,
                         std::int64_t target, std::int32_t& first, std::int32_t& count) {
        const std::int64_t start = std::max({from, std::int64_t{0}, -shift});
        const std::int64_t stop = std::min({to, length, target - shift});
        first = start < stop ? static_cast<std::int32_t>(start) : 0;
        count = start < stop ? static_cast<std::int32_t>(stop - start) : 0;
    };
    clip(r.left, r.right, o.shift_x, width, dst.width, o.left, o.columns);
    clip(r.top, r.bottom, o.shift_y, height, dst.height, o.top, o.rows);
    return o;
}

/// Calls row(count, source samples, ..., destination samples) for the rows of an overlap.
template <class Target, class Source, class Row, class... Buffer>
int for_rows_of(const QX_ProgressInfo* progress, const Overlap& o, decltype(&QX_IterateGeneric) iterate,
                QX_UnoBuffer* dst, const Row& row, const Buffer*... src) {
    const auto x = static_cast<std::int32_t>(o.left + o.shift_x), top = static_cast<std::int32_t>(o.top + o.shift_y);
    return for_uno_rows(
        progress, o.rows,
        [&](std::int32_t y) {
            row(o.columns, samples_at<const Source>(*src, o.left, o.top + y)..., samples_at<Target>(*dst, x, top + y));
        },
        iterate);
}

constexpr bool clears_uncovered(int mode) { return mode == kQX_Uno_Intersect || mode == kQX_Uno_Minimum; }

/// Clears the samples over which no sample of a source, which is as large as told, lies. Some lie over some.
template <class Sample>
void clear_uncovered(const Overlap& o, std::int32_t width, std::int32_t height, QX_UnoBuffer* dst) {
    const auto left = std::max<std::int64_t>(o.shift_x, 0),
               right = std::min<std::int64_t>(o.shift_x + width, dst->width);
    const auto clear = [&](std::int64_t y, std::int64_t from, std::int64_t to) {
        auto* const first = samples_at<Sample>(*dst, static_cast<std::int32_t>(from), static_cast<std::int32_t>(y));
        std::memset(first, 0, static_cast<std::size_t>(to - from) * sizeof(Sample));
    };
    for (std::int64_t y = 0; y < dst->height; ++y) {
        const bool covered = y >= o.shift_y && y < o.shift_y + height;
        clear(y, 0, covered ? left : dst->width);
        if (covered) clear(y, right, dst->width);
    }
}

/// One value of the running noise for each sample that grows, in their order, in the vector forms too.
template <class Sample>
void grow_by_noise(std::int32_t count, const UnoStrength& strength, const Sample* src, Sample* dst) {
    constexpr std::int32_t kRun = 512;
    constexpr std::uint32_t bits = sizeof(Sample) == 1 ? 0xFF : 0x7FFF;
    NoiseRow noise;
    Sample values[kRun];
    for (std::int32_t run; count > 0; count -= run, src += run, dst += run) {
        run = std::min(count, kRun);
        for (std::int32_t i = 0; i < run; ++i) {
            values[i] = static_cast<Sample>(noise.next_if(dst[i] < strength.limit) & bits);
        }
        chosen_uno_kernels().rows<Sample>().grow_noisily(run, strength, src, values, dst);
    }
}

/// A limit as a sample: what lies between two is the upper one.
template <class D> std::int32_t limit_of(float limit) {
    return truncate_to_int(std::ceil(limited_share(limit) * static_cast<float>(D::full)));
}

/// Gives `rows` what combines a row of samples of one depth.
template <class D, class Rows> int with_operator(int mode, const UnoStrength& strength, const Rows& rows) {
    using Sample = typename D::Channel;
    const UnoRows<Sample>& kernels = chosen_uno_kernels().rows<Sample>();
    if (mode == kQX_Uno_NoisyScreen) {
        return rows([&](std::int32_t n, const Sample* s, Sample* d) { grow_by_noise(n, strength, s, d); });
    }
    if (strength.opacity == D::full && strength.limit == D::full) return rows(kernels.combine[std::max(mode, 1) - 1]);
    if (mode == kQX_Uno_Screen) {
        return rows([&](std::int32_t n, const Sample* s, Sample* d) { kernels.grow(n, strength, s, d); });
    }
    return rows([&](std::int32_t n, const Sample* s, Sample* d) { kernels.add(n, strength.opacity, s, d); });
}

constexpr std::int64_t kBytesForAllProcessors = 76800;

template <class Source, class Target>
int accumulate(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode, const UnoStrength& strength,
               const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst) {
    using From = typename Source::Channel;
    using To = typename Target::Channel;
    const Overlap o = overlap(rect, point, src->width, src->height, *dst);
    if (o.empty()) return 0;
    const bool large = std::int64_t{o.rows} * o.columns * std::int64_t{sizeof(To)} >= kBytesForAllProcessors;
    const auto rows = [&](const auto& row) {
        return for_rows_of<To, From>(progress, o, large ? &QX_IterateGeneric : &QX_IterateGeneric_Static, dst, row,
                                     src);
    };
    if constexpr (std::is_same_v<Source, Target>) {
        const int code = with_operator<Source>(mode, strength, rows);
        if (code == 0 && clears_uncovered(mode)) clear_uncovered<To>(o, src->width, src->height, dst);
        return code;
    } else {
        return rows(
            [&](std::int32_t n, const From* s, To* d) { chosen_uno_kernels().add_widened(n, strength.opacity, s, d); });
    }
}

template <class Sample>
int transfer(const QX_ProgressInfo* progress, const QX_UnoBuffer* a, const QX_UnoBuffer* b, int mode,
             const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst) {
    const std::int32_t width = std::min(a->width, b->width), height = std::min(a->height, b->height);
    const Overlap o = overlap(rect, point, width, height, *dst);
    if (o.empty()) return 0;
    const auto row = [] {
        if constexpr (std::is_same_v<Sample, float>)
            return chosen_uno_kernels().transfer_float;
        else
            return chosen_uno_kernels().rows<Sample>().transfer;
    }();
    const int code = for_rows_of<Sample, Sample>(progress, o, &QX_IterateGeneric, dst, row, a, b);
    if (code == 0 && clears_uncovered(mode)) clear_uncovered<Sample>(o, width, height, dst);
    return code;
}

constexpr std::int32_t shift_of(std::int32_t precision) {
    return precision == 1 ? 0 : precision == 4 ? 2 : precision == 8 ? 3 : 4;
}

/// Gives `rows` what makes a row of deep samples one of this type.
template <class Sample, class Rows> int with_conversion(std::int32_t precision, const Rows& rows) {
    if constexpr (std::is_same_v<Sample, float>) {
        if (precision == 0) return report_bad_parameter(Place::mask_buffer);
        const auto factor = static_cast<float>(1.0 / precision);
        return rows([=](std::int32_t n, const std::uint16_t* s, float* d) {
            chosen_uno_kernels().scale_to_float(n, factor, s, d);
        });
    } else {
        return rows([=](std::int32_t n, const std::uint16_t* s, Sample* d) {
            chosen_uno_kernels().rows<Sample>().shift(n, shift_of(precision), s, d);
        });
    }
}

template <class Sample>
int convert(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, const M_LRect* rect, std::int32_t precision,
            QX_UnoBuffer* dst) {
    return with_conversion<Sample>(precision, [&](const auto& row) {
        const Overlap o = overlap(rect, nullptr, src->width, src->height, *dst);
        return for_rows_of<Sample, std::uint16_t>(progress, o, &QX_IterateGeneric, dst, row, src);
    });
}

}  // namespace

int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode, float opacity,
                            float limit, const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst) {
    return with_samples(src, [&]<class Source>() {
        return with_samples(dst, [&]<class Target>() {
            constexpr bool same = std::is_same_v<Source, Target>, widens = Target::number > Source::number;
            const bool known = mode >= kQX_Uno_NoisyScreen && mode <= kQX_Uno_Add;
            if (same ? !known : !(widens && mode == kQX_Uno_Add)) return report_bad_parameter(Place::mask_buffer);
            if constexpr (same || widens) {
                const UnoStrength strength{sample_of<Source>(opacity), limit_of<Source>(limit)};
                return accumulate<Source, Target>(progress, src, mode, strength, rect, point, dst);
            } else {
                return 0;
            }
        });
    });
}
int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode, const M_LRect* rect,
                            const M_LPoint* point, QX_UnoBuffer* dst) {
    return QX_AccumulateUnoBuffers(progress, src, mode, 1.0f, 1.0f, rect, point, dst);
}
int QX_AccumulateUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, int mode, const M_LRect* rect,
                            QX_UnoBuffer* dst) {
    return QX_AccumulateUnoBuffers(progress, src, mode, rect, nullptr, dst);
}

int QX_TransferUnoBuffers(const QX_ProgressInfo* progress, const QX_UnoBuffer* a, const QX_UnoBuffer* b, int mode,
                          const M_LRect* rect, const M_LPoint* point, QX_UnoBuffer* dst) {
    if (!is_live(a) || !is_live(b) || !is_live(dst) || a->depth != b->depth || a->depth != dst->depth) {
        return report_damaged_mask();
    }
    return with_any_samples(
        dst, [&]<class D>() { return transfer<typename D::Channel>(progress, a, b, mode, rect, point, dst); });
}

int QX_ConvertDeepUnoBuffer(const QX_ProgressInfo* progress, const QX_UnoBuffer* src, const M_LRect* rect,
                            std::int32_t precision, QX_UnoBuffer* dst) {
    if (!is_live(src)) return report_damaged_mask();
    if (src->depth != 16) return 0;
    return with_any_samples(
        dst, [&]<class D>() { return convert<typename D::Channel>(progress, src, rect, precision, dst); });
}
