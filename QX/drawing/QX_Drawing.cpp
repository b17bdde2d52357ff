// SPDX-License-Identifier: Apache-2.0
#include "QX/drawing/QX_Drawing.h"

#include <algorithm>
#include <cmath>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Fixed.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

template <class Pixel> bool set_pixel(std::int32_t x, std::int32_t y, const Pixel* pixel, const QX_LayerDef* world) {
    if (pixel == nullptr || world == nullptr || world->data == nullptr) return false;
    if (x < 0 || x >= world->width || y < 0 || y >= world->height) return false;
    *qx::pixel_at<Pixel>(*world, x, y) = *pixel;
    return true;
}

// --- lines: 16.16 numbers that wrap ------------------------------------------------------------------

/// One coordinate of a walk.
struct Axis {
    std::int32_t at, step;
    std::int32_t pixel() const { return at >> 16; }
    void advance(std::int64_t steps) {
        at = qx::wrapping_sum(at, qx::wrapping_product(step, static_cast<std::int32_t>(steps)));
    }
};

/// The walk from one end to the other; `count` steps lead from the first pixel to the last.
struct Walk {
    Axis major, minor;
    std::int64_t count;
};

/// @param delta  of the major coordinate, then of the minor one
Walk walk_of(double major, double end, double minor, const double (&delta)[2]) {
    const std::int32_t start = qx::to_fixed(major), rounded = qx::wrapping_sum(start, qx::kFixedHalf) & ~0xFFFF;
    const std::int32_t minor_step = qx::to_fixed(delta[1] / delta[0]);
    const std::int64_t moved = std::int64_t{minor_step} * qx::wrapping_difference(rounded, start) >> 16;
    Walk walk{
        {rounded, qx::kFixedOne},
        {qx::wrapping_sum(qx::wrapping_sum(qx::to_fixed(minor), static_cast<std::int32_t>(moved)), qx::kFixedHalf),
         minor_step},
        0};
    walk.count = std::int64_t{qx::truncate_to_int(end + 0.5)} - walk.major.pixel();
    if (walk.count < 0) {
        walk.count = -walk.count;
        walk.major.step = -qx::kFixedOne;
        walk.minor.step = M_WrappingNegate(minor_step);
    }
    return walk;
}

/// Steps until a coordinate that moves by a pixel a step, wrapping at 16 bits, is in 0..extent - 1.
std::int64_t steps_to_enter(const Axis& axis, std::int32_t extent) {
    const std::int32_t p = axis.pixel();
    if (p >= 0 && p < extent) return 0;
    const std::int32_t last = std::min(extent, 0x8000) - 1;
    return axis.step > 0 ? -p & 0xFFFF : (p - last) & 0xFFFF;
}

/// Where the major coordinate is outside the world nothing can be stored, so that ends far away cost little.
template <class Store> void run(Walk walk, std::int32_t extent, const Store& store) {
    if (extent <= 0) return;
    for (std::int64_t left = walk.count; left >= 0; --left) {
        if (const std::int64_t skip = steps_to_enter(walk.major, extent)) {
            if ((left -= skip) < 0) return;
            walk.major.advance(skip);
            walk.minor.advance(skip);
        }
        store(walk.major.pixel(), walk.minor.pixel());
        walk.major.advance(1);
        walk.minor.advance(1);
    }
}

template <class Store>
void draw_line(const double from[2], const double to[2], const QX_LayerDef& world, const Store& store) {
    const double dx = to[0] - from[0], dy = to[1] - from[1];
    if (std::abs(dx) < 1e-12 && std::abs(dy) < 1e-12) {
        store(qx::wrapping_sum(qx::to_fixed(from[0]), qx::kFixedHalf) >> 16,
              qx::wrapping_sum(qx::to_fixed(from[1]), qx::kFixedHalf) >> 16);
    } else if (std::abs(dx) > std::abs(dy)) {
        run(walk_of(from[0], to[0], from[1], {dx, dy}), world.width, store);
    } else {
        run(walk_of(from[1], to[1], from[0], {dy, dx}), world.height,
            [&](std::int32_t y, std::int32_t x) { store(x, y); });
    }
}

/// The low bits of what the colour comes to, without limits.
template <class Pixel> Pixel line_colour(const QX_PixelFloat& c) {
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return c;
    } else {
        return {qx::alpha_from_float<Pixel>(c.alpha), qx::alpha_from_float<Pixel>(c.red),
                qx::alpha_from_float<Pixel>(c.green), qx::alpha_from_float<Pixel>(c.blue)};
    }
}

// --- brush -------------------------------------------------------------------------------------------

std::uint8_t brushed(std::uint8_t c, std::uint8_t colour, std::int64_t weight) {
    return static_cast<std::uint8_t>(std::min<std::int64_t>((c * (255 - weight) + colour * weight) / 255, 255));
}

void brush_pixel(QX_Pixel8& p, const QX_Pixel8& colour, std::uint32_t weight) {
    p = {brushed(p.alpha, colour.alpha, weight), brushed(p.red, colour.red, weight),
         brushed(p.green, colour.green, weight), brushed(p.blue, colour.blue, weight)};
}

/// The brush's rectangle before the world cuts it. Kept: its edges are 16-bit numbers, the last ones included.
M_LRect brush_area(std::int32_t x, std::int32_t y, std::uint32_t flags, std::int32_t radius) {
    const bool line = (flags & kQX_BrushLine) != 0, column = line && (flags & kQX_BrushColumn) != 0;
    const std::int32_t half_width = column ? 0 : radius, half_height = line && !column ? 0 : radius;
    const auto edge = [](std::int32_t from, std::int32_t by) {
        return static_cast<std::int16_t>(qx::wrapping_sum(from, by));
    };
    return {edge(x, -half_width), edge(y, -half_height), edge(x, half_width) + 1, edge(y, half_height) + 1};
}

}  // namespace

bool QX_SetPixel8(std::int32_t x, std::int32_t y, const QX_Pixel8* pixel, QX_LayerDef* world) {
    return set_pixel(x, y, pixel, world);
}

bool QX_SetPixel16(std::int32_t x, std::int32_t y, const QX_Pixel16* pixel, QX_LayerDef* world) {
    return set_pixel(x, y, pixel, world);
}

bool QX_SetPixelFloat(std::int32_t x, std::int32_t y, const QX_PixelFloat* pixel, QX_LayerDef* world) {
    return set_pixel(x, y, pixel, world);
}

int QX_DrawLine(const double from[2], const double to[2], const QX_PixelFloat* colour, QX_World* world) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::draw_line);
    if (from == nullptr || to == nullptr || colour == nullptr || world == nullptr || world->data == nullptr) {
        return qx::report_bad_parameter(qx::Place::draw_line);
    }
    return qx::with_depth(*world, qx::Place::draw_line, [&]<class Pixel>() {
        const Pixel pixel = line_colour<Pixel>(*colour);
        draw_line(from, to, *world, [&](std::int32_t x, std::int32_t y) { set_pixel(x, y, &pixel, world); });
        return 0;
    });
}

int QX_PaintSpot(void*, std::int32_t x, std::int32_t y, std::uint32_t flags, std::int32_t size,
                 const std::uint32_t* weights, QX_Pixel8 colour, QX_LayerDef* world) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::paint_spot);
    if (world == nullptr || world->data == nullptr || weights == nullptr || size < 0 || size % 2 == 0) {
        return qx::report_bad_parameter(qx::Place::paint_spot);
    }
    const M_LRect brush = brush_area(x, y, flags, size >> 1), area = qx::clip_to(*world, &brush);
    const std::ptrdiff_t stride = (flags & kQX_BrushLine) != 0 && (flags & kQX_BrushColumn) != 0 ? 1 : size;
    for (std::int32_t row = area.top; row < area.bottom; ++row) {
        auto* pixels = qx::row_of<QX_Pixel8>(*world, row);
        const std::uint32_t* row_weights = weights + (row - brush.top) * stride;
        for (std::int32_t i = area.left; i < area.right; ++i) {
            brush_pixel(pixels[i], colour, row_weights[i - brush.left]);
        }
    }
    return 0;
}
