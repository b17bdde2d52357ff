// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_HorizontalSum.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "platform/M_Matrix.h"

namespace {

using namespace qx;

struct Padding {
    std::int32_t x, y;
};

/// A padding as a number of cells; one that no table could have is short memory.
std::int32_t cells_of(double pad) {
    constexpr double most = 1 << 29;  // twice of it beside a world fits 32 bits
    if (!(pad <= most)) throw std::bad_alloc();
    return static_cast<std::int32_t>(pad);
}

Padding padding_of(double radius, double aspect, double rotation) {
    M_Matrix3 matrix = kM_IdentityMatrix;
    M_Matrix3_Scale(aspect, 1, &matrix);
    M_Matrix3_Rotate(rotation, &matrix);
    M_FloatRect reach{-radius, -radius, radius, radius};
    M_TransformFloatRect(matrix, &reach);
    return {cells_of(std::ceil((reach.right - reach.left) / 2)), cells_of(std::ceil((reach.bottom - reach.top) / 2))};
}

/// What a pixel counts as.
template <class Pixel> class Light {
public:
    Light(double gain, double threshold, double saturation, const QX_LinearBlendingTables* tables)
        : gain_(static_cast<float>(5.0 * gain)),
          threshold_(static_cast<float>(threshold)),
          saturation_(static_cast<float>(saturation)),
          tables_(tables) {}

    QX_PixelFloat of(const Pixel& p) const {
        const float alpha = on_scale(p.alpha);
        QX_PixelFloat v{alpha, colour(p.red, alpha), colour(p.green, alpha), colour(p.blue, alpha)};
        if (gain_ > 0) brighten(v);
        return v;
    }

private:
    static float on_scale(QX_ChannelOf<Pixel> c) {
        if constexpr (DepthOf<Pixel>::number == 8) return static_cast<float>(c) * kRow8ToFloat;
        if constexpr (DepthOf<Pixel>::number == 16) return static_cast<float>(c) * kRow16ToFloat;
        return static_cast<float>(c);
    }

    float colour(QX_ChannelOf<Pixel> channel, float alpha) const {
        float c = on_scale(channel);
        if (tables_ == nullptr) return c * alpha;
        if (c >= 0) c = powf(c, tables_->to_linear_gamma);
        return alpha != 1 ? c * alpha : c;
    }

    void brighten(QX_PixelFloat& v) const {
        const float luma = (0.299f * v.red + 0.587f * v.green) + 0.114f * v.blue;
        const float boost = luma > threshold_ ? (luma - threshold_) * gain_ : 0;
        if (!(boost > 0)) return;
        const float size = std::abs(luma);
        for (float* c : {&v.red, &v.green, &v.blue}) {
            const float excess = size <= 1e-12f ? *c : *c / size - 1.0f;
            *c += boost * (1.0f + saturation_ * excess);
        }
    }

    const float gain_, threshold_, saturation_;
    const QX_LinearBlendingTables* const tables_;
};

/// One row, whose edges are repeated on either side.
template <class Pixel>
void sum_row(const Pixel* row, std::int32_t width, std::int32_t pad, const Light<Pixel>& light, QX_PixelFloat* cell) {
    QX_PixelFloat sum{};
    const auto add = [&](const QX_PixelFloat& v) {
        sum.alpha += v.alpha;
        sum.red += v.red;
        sum.green += v.green;
        sum.blue += v.blue;
        *cell++ = sum;
    };
    const QX_PixelFloat first = light.of(row[0]), last = light.of(row[width - 1]);
    for (std::int32_t i = 0; i < pad; ++i) add(first);
    for (std::int32_t x = 0; x < width; ++x) add(light.of(row[x]));
    for (std::int32_t i = 0; i < pad; ++i) add(last);
}

}  // namespace

template <class Pixel>
QX_HorizontalSumTable<Pixel>::QX_HorizontalSumTable(const QX_WorldX<Pixel>* src, int a, int b, double radius,
                                                    double gain, double threshold, double saturation, double aspect,
                                                    double rotation, bool padded, const QX_LinearBlendingTables* tables)
    : a_(a), b_(b), padded_(padded) {
    if (is_gpu_world(src)) throw report_gpu_world(Place::summed_areas);
    if (src == nullptr || src->data == nullptr || src->width < 1 || src->height < 1) {
        throw report_bad_parameter(Place::summed_areas);
    }
    throw_if(guarded([&] {
        const Padding pad = padded ? padding_of(radius, aspect, rotation) : Padding{0, 0};
        const std::int64_t columns = src->width + 2 * std::int64_t{pad.x}, rows = src->height + 2 * std::int64_t{pad.y};
        if (std::max(columns, rows) > INT32_MAX) throw std::bad_alloc();
        const auto cells = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
        if (cells > cells_.max_size()) throw std::bad_alloc();
        cells_.resize(cells);
        pad_x_ = pad.x, pad_y_ = pad.y;
        width_ = static_cast<std::int32_t>(columns), height_ = static_cast<std::int32_t>(rows);
    }));
    const Light<Pixel> light(gain, threshold, saturation, tables);
    const auto row = [this](std::int32_t y) { return cells_.data() + std::int64_t{y} * width_; };
    for (std::int32_t y = 0; y < src->height; ++y) sum_row(src->Row(y), src->width, pad_x_, light, row(pad_y_ + y));
    const QX_PixelFloat *first = row(pad_y_), *last = row(pad_y_ + src->height - 1);
    for (std::int32_t y = 0; y < pad_y_; ++y) {
        std::copy_n(first, width_, row(y));
        std::copy_n(last, width_, row(height_ - 1 - y));
    }
}

template class QX_HorizontalSumTable<QX_Pixel8>;
template class QX_HorizontalSumTable<QX_Pixel16>;
template class QX_HorizontalSumTable<QX_PixelFloat>;
