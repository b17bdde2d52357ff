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

private:
    double xx_, xy_, yy_;  // of xx x^2 + 2 xy x y + yy y^2 = 1
    int rows_;
};

/// Sums of stretches of a table's rows; pixel n reaches from n - 0.5 to n + 0.5.
template <class Pixel> class Stretches {
public:
    explicit Stretches(const QX_HorizontalSumTable<Pixel>& table) : table_(table) {}

    void add(int y, double from, double to, Sums& sums) const {
        const int row = y + table_.PadY();
        if (row < 0 || row >= table_.Height()) return;
        add_up_to(table_.Row(row), to + 0.5 + table_.PadX(), 1, sums);
        add_up_to(table_.Row(row), from + 0.5 + table_.PadX(), -1, sums);
    }

private:
    void add_up_to(const QX_PixelFloat* row, double end, double sign, Sums& sums) const {
        const double limited = std::clamp(end, 0.0, static_cast<double>(table_.Width()));
        const int whole = static_cast<int>(limited);
        const double part = limited - whole;
        if (whole > 0) sums.add(row[whole - 1], sign * (1 - part));
        if (part > 0) sums.add(row[whole], sign * part);
    }
    const QX_HorizontalSumTable<Pixel>& table_;
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
        : from_(from), call_(call), moment_(moment), radians_(call.disc.degrees * (3.14159265358979323846 / 180)) {}

    void make(int left, int top, QX_World& to) const {
        QX_LinearBlendingTables light{};
        light.to_linear_gamma = static_cast<float>(call_.disc.gamma);
        const auto* const source = dynamic_cast<const QX_WorldX<Pixel>*>(&from_);
        const double down = call_.radius_y + 1, aspect = (across() + 1) / down;
        std::unique_ptr<QX_HorizontalSumTable<Pixel>> table;
        must_do(moment_, [&] {
            table = std::make_unique<QX_HorizontalSumTable<Pixel>>(
                source, 0, 0, down, call_.disc.gain, call_.disc.threshold, call_.disc.saturation, aspect, radians_,
                call_.keeps_edge, call_.disc.gamma > 0 ? &light : nullptr);
        });
        const Stretches<Pixel> stretches(*table);
        on_all_rows(to.height, moment_, moment_.watch, [&](int y) {
            Pixel* const row = row_of<Pixel>(to, y);
            for (int x = 0; x < to.width; ++x) row[x] = disc(stretches, x - left, y - top);
        });
    }

private:
    double across() const { return call_.radius_x * call_.disc.aspect; }

    Pixel disc(const Stretches<Pixel>& stretches, int x, int y) const {
        const double factor = map_factor<Pixel>(call_.map.get(), x + call_.map_x, y + call_.map_y);
        const Ellipse ellipse(across() * factor, call_.radius_y * factor, radians_);
        Sums sums;
        double area = 0;
        for (int row = -ellipse.rows(); row <= ellipse.rows(); ++row) {
            const auto [from, to] = ellipse.at(row);
            area += to - from;
            stretches.add(y + row, x + from, x + to, sums);
        }
        return mean_of<Pixel>(sums, area, call_.disc.gamma);
    }

    const QX_World& from_;
    const BlurCall& call_;
    const Moment& moment_;
    const double radians_;
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
