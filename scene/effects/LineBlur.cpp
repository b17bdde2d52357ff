// SPDX-License-Identifier: Apache-2.0
// Blurs along rows, then along columns.
#include <cmath>

#include "QX/filters/QX_Blur.h"
#include "pictures/Picture.h"
#include "scene/effects/Blurs.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

enum class Shape { gaussian, box };

/// One line blur along rows or columns into a world that lies elsewhere.
class LineBlur {
public:
    LineBlur(Shape shape, const BlurCall& call, const Moment& moment) : shape_(shape), call_(call), moment_(moment) {}

    /// @param straight  the colours of `from` are multiplied by their alpha on the way
    void run(const QX_World& from, bool vertical, bool straight, QX_World& to) {
        const auto alpha = straight ? GK::kAlphaType_Straight : GK::kAlphaType_Premultiplied;
        constexpr auto premultiplied = GK::kAlphaType_Premultiplied;
        const std::uint32_t flags = kQX_Blur_AllChannels | (call_.keeps_edge ? kQX_Blur_NormaliseEdges : 0);
        const auto radius = static_cast<float>(vertical ? call_.radius_y : call_.radius_x);
        StepProgress progress(moment_.watch, step_++, steps());
        const QX_ProgressInfo info = progress.info();
        must_do(moment_, [&] {
            if (shape_ == Shape::gaussian) {
                QX_GaussianBlur1D(&info, &from, radius, flags, vertical, alpha, vertical, premultiplied, false, &to);
            } else {
                QX_BoxBlur1D(&info, &from, radius, flags, call_.passes, vertical, alpha, vertical, premultiplied, false,
                             &to);
            }
        });
        progress.finish();
    }
    /// A Gaussian is run again, boxes know how often.
    int runs() const { return shape_ == Shape::gaussian ? call_.passes : 1; }

private:
    int steps() const { return 2 * runs(); }
    const Shape shape_;
    const BlurCall& call_;
    const Moment& moment_;
    int step_ = 0;
};

/// How far a blur reaches to one side.
std::int64_t reach(double radius, int passes) { return static_cast<std::int64_t>(std::ceil(radius)) * passes; }

/// Boxes hold light from 0 to 1. Light beyond goes through them at a smaller scale, a power of two: exact both ways.
class LightScale {
public:
    explicit LightScale(const QX_World& world) : world_(world) {
        float most = 1;
        pictures::each_pixel<QX_PixelFloat>(world, [&](const QX_PixelFloat& p, int, int) {
            for (const float c : {p.red, p.green, p.blue}) {
                if (c > most && std::isfinite(c)) most = c;
                below_ = below_ || c < 0;
            }
        });
        exponent_ = most > 1 ? std::min(std::ilogb(most) + 1, 127) : 0;  // no float is twice the largest power
    }
    bool below_zero() const { return below_; }
    void shrink() const { scale(world_, -exponent_); }
    void grow(const QX_World& world) const { scale(world, exponent_); }

private:
    static void scale(const QX_World& world, int exponent) {
        if (exponent == 0) return;
        const float factor = std::ldexp(1.0f, exponent);
        pictures::each_pixel<QX_PixelFloat>(world, [&](QX_PixelFloat& p, int, int) {
            p = {p.alpha, p.red * factor, p.green * factor, p.blue * factor};
        });
    }
    const QX_World& world_;
    int exponent_;
    bool below_ = false;
};

/// All passes over a layer. @return multiplied colours
std::unique_ptr<QX_World> blurred(LineBlur& lines, const QX_World& from, bool straight, std::int64_t across,
                                  std::int64_t down, const Moment& moment) {
    const int depth = from.Depth();
    auto rows = new_canvas(moment, from.width + 2 * across, from.height, depth);
    auto columns = new_canvas(moment, rows->width, from.height + 2 * down, depth);
    rows->origin_x = columns->origin_x = from.origin_x - static_cast<std::int32_t>(across);
    rows->origin_y = from.origin_y;
    columns->origin_y = from.origin_y - static_cast<std::int32_t>(down);
    lines.run(from, false, straight, *rows);
    lines.run(*rows, true, false, *columns);
    if (lines.runs() > 1) {
        rows = new_canvas(moment, columns->width, columns->height, depth);
        rows->origin_x = columns->origin_x;
        rows->origin_y = columns->origin_y;
    }
    for (int i = 1; i < lines.runs(); ++i) {
        lines.run(*columns, false, false, *rows);
        lines.run(*rows, true, false, *columns);
    }
    return columns;
}

void blur(Shape shape, Canvas& canvas, const BlurCall& call, const Moment& moment) {
    const std::int64_t across = call.grows ? reach(call.radius_x, call.passes) : 0;
    const std::int64_t down = call.grows ? reach(call.radius_y, call.passes) : 0;
    QX_World& world = *canvas.world;
    world.origin_x = world.origin_y = 0;
    LineBlur lines(shape, call, moment);
    std::unique_ptr<QX_World> result;
    if (shape == Shape::box && world.Depth() == 32) {
        auto multiplied = pictures::at_depth(moment.subject, world, 32);
        multiply(*multiplied, moment);
        const LightScale light(*multiplied);
        if (light.below_zero()) moment.note("light below 0 is lost in box blurs");
        light.shrink();
        result = blurred(lines, *multiplied, false, across, down, moment);
        light.grow(*result);
    } else {
        result = blurred(lines, world, true, across, down, moment);
    }
    unmultiply(*result, moment);
    keep_channels(canvas, call.channels, static_cast<int>(across), static_cast<int>(down), *result);
    canvas = {std::move(result), canvas.x - static_cast<int>(across), canvas.y - static_cast<int>(down)};
}

}  // namespace

void blur_gaussian(Canvas& canvas, const BlurCall& call, const Moment& moment) {
    blur(Shape::gaussian, canvas, call, moment);
}
void blur_box(Canvas& canvas, const BlurCall& call, const Moment& moment) { blur(Shape::box, canvas, call, moment); }

}  // namespace qx::scene
