// SPDX-License-Identifier: Apache-2.0
// Means of ellipses, row by row from running sums, which make what is out of focus and bright round.
#include <cmath>

#include "QX/sampling/QX_HorizontalSum.h"
#include "scene/effects/Blurs.h"
#include "scene/effects/RadiusMap.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

struct Sums {
    double alpha = 0, red = 0, green = 0, blue = 0;

    void add(const QX_PixelFloat& cell, double times) {
        alpha += cell.alpha * times;
        red += cell.red * times;
        green += cell.green * times;
        blue += cell.blue * times;
    }
};

/// An ellipse about a pixel, as a stretch in each row. Its half axes are a half longer than the radius, so that a
/// radius of 0 is the pixel itself.
class Ellipse {
public:
    Ellipse(double across, double down, double radians) {
        const double a = across + 0.5, b = down + 0.5, c = std::cos(radians), s = std::sin(radians);
        xx_ = c * c / (a * a) + s * s / (b * b);
        xy_ = c * s * (1 / (a * a) - 1 / (b * b));
        yy_ = s * s / (a * a) + c * c / (b * b);
        rows_ = static_cast<int>(std::sqrt(a * a * s * s + b * b * c * c));
    }
    int rows() const { return rows_; }  ///< above and below the middle one
    struct Stretch {
        double from, to;
    };
    Stretch at(int y) const {
        const double middle = -xy_ * y / xx_;
        const double half = std::sqrt(std::max(0.0, (xy_ * xy_ - xx_ * yy_) * y * y + xx_)) / xx_;
        return {middle - half, middle + half};
    }

    double area() const {
        double area = 0;
        for (int y = -rows_; y <= rows_; ++y) area += at(y).to - at(y).from;
        return area;
    }

private:
    double xx_, xy_, yy_;  // of xx x^2 + 2 xy x y + yy y^2 = 1
    int rows_;
};

/// Sums of stretches of a layer's rows; pixel n reaches from n - 0.5 to n + 0.5. What lies outside is clear, or the
/// nearest pixel again. Nothing is padded for that: a table with its padding would grow by the square of the radius.
template <class Pixel> class Stretches {
    using Table = QX_HorizontalSumTable<Pixel>;

public:
    Stretches(const QX_World& from, const Disc& disc, bool repeats) : repeats_(repeats), height_(from.height) {
        QX_LinearBlendingTables light{};
        light.to_linear_gamma = static_cast<float>(disc.gamma);
        const auto sums_of = [&](const QX_World& world) {
            return std::make_unique<Table>(dynamic_cast<const QX_WorldX<Pixel>*>(&world), 0, 0, 0, disc.gain,
                                           disc.threshold, disc.saturation, 1, 0, false,
                                           disc.gamma > 0 ? &light : nullptr);
        };
        const std::unique_ptr<QX_World> last(QX_World::NewReference(row_of<Pixel>(from, 0) + from.width - 1, 1,
                                                                    from.height, from.Depth(), from.rowbytes));
        table_ = sums_of(from);
        last_ = sums_of(*last);
    }

    /// The first and the last row around y that add something.
    int first_row(int y, int rows) const { return repeats_ ? -rows : std::max(-rows, -y); }
    int last_row(int y, int rows) const { return repeats_ ? rows : std::min(rows, height_ - 1 - y); }

    void add(int y, double from, double to, Sums& sums) const {
        const int row = std::clamp(y, 0, height_ - 1);
        add_up_to(row, to + 0.5, 1, sums);
        add_up_to(row, from + 0.5, -1, sums);
    }

private:
    void add_up_to(int y, double end, double sign, Sums& sums) const {
        const QX_PixelFloat* const row = table_->Row(y);
        const double limited = std::clamp(end, 0.0, static_cast<double>(table_->Width()));
        const int whole = static_cast<int>(limited);
        const double part = limited - whole;
        if (whole > 0) sums.add(row[whole - 1], sign * (1 - part));
        if (part > 0) sums.add(row[whole], sign * part);
        if (repeats_ && end != limited) sums.add(end < 0 ? row[0] : last_->Row(y)[0], sign * (end - limited));
    }
    const bool repeats_;
    const int height_;
    std::unique_ptr<Table> table_{}, last_{};  ///< of the layer, and of its last column
};

template <class Pixel> QX_ChannelOf<Pixel> stored(double v) {
    using D = DepthOf<Pixel>;
    if constexpr (D::number == 32) {
        return static_cast<float>(v);
    } else {
        return static_cast<QX_ChannelOf<Pixel>>(std::clamp(v, 0.0, 1.0) * D::full + 0.5);
    }
}

/// A straight pixel from sums over an area, of which what is missing is clear.
template <class Pixel> Pixel mean_of(const Sums& sums, double area, double gamma) {
    if (!(sums.alpha > 0)) return Pixel{};
    const auto colour = [&](double sum) {
        const double c = sum / sums.alpha;
        return stored<Pixel>(gamma > 0 && c > 0 ? std::pow(c, 1 / gamma) : c);
    };
    const double alpha = std::min(sums.alpha / area, 1.0);
    return {stored<Pixel>(alpha), colour(sums.red), colour(sums.green), colour(sums.blue)};
}

template <class Pixel> class Discs {
public:
    Discs(const QX_World& from, const BlurCall& call, const Moment& moment)
        : call_(call), moment_(moment), radians_(call.disc.degrees * (3.14159265358979323846 / 180)) {
        must_do(moment, [&] { stretches_ = std::make_unique<Stretches<Pixel>>(from, call.disc, call.keeps_edge); });
    }

    void make(int left, int top, QX_World& to) const {
        const Ellipse whole = ellipse(1);
        const double area = whole.area();
        on_all_rows(to.height, moment_, moment_.watch, [&](int y) {
            Pixel* const row = row_of<Pixel>(to, y);
            for (int x = 0; x < to.width; ++x) {
                if (call_.map == nullptr) {
                    row[x] = mean(whole, area, x - left, y - top);
                } else {
                    const Ellipse own =
                        ellipse(map_factor<Pixel>(call_.map.get(), x - left + call_.map_x, y - top + call_.map_y));
                    row[x] = mean(own, own.area(), x - left, y - top);
                }
            }
        });
    }

private:
    Ellipse ellipse(double factor) const {
        return {call_.radius_x * call_.disc.aspect * factor, call_.radius_y * factor, radians_};
    }

    Pixel mean(const Ellipse& ellipse, double area, int x, int y) const {
        Sums sums;
        const int last = stretches_->last_row(y, ellipse.rows());
        for (int row = stretches_->first_row(y, ellipse.rows()); row <= last; ++row) {
            const auto [from, to] = ellipse.at(row);
            stretches_->add(y + row, x + from, x + to, sums);
        }
        return mean_of<Pixel>(sums, area, call_.disc.gamma);
    }

    const BlurCall& call_;
    const Moment& moment_;
    const double radians_;
    std::unique_ptr<Stretches<Pixel>> stretches_{};
};

}  // namespace

void blur_disc(Canvas& canvas, const BlurCall& call, const Moment& moment) {
    const QX_World& from = *canvas.world;
    const double reach = std::max(call.radius_x * call.disc.aspect, call.radius_y);
    const int margin = call.grows ? static_cast<int>(std::min(std::ceil(reach), 1e6)) : 0;
    auto to =
        new_canvas(moment, from.width + 2 * std::int64_t{margin}, from.height + 2 * std::int64_t{margin}, from.Depth());
    pictures::with_pixel_of(from, [&]<class Pixel>() { Discs<Pixel>(from, call, moment).make(margin, margin, *to); });
    keep_channels(canvas, call.channels, margin, margin, *to);
    canvas = {std::move(to), canvas.x - margin, canvas.y - margin};
}

}  // namespace qx::scene
