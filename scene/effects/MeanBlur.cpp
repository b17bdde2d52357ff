// SPDX-License-Identifier: Apache-2.0
// Means of rectangles, looked up in sums made once, so that their size may change from pixel to pixel.
#include <cmath>

#include "QX/sampling/QX_SummedArea.h"
#include "scene/effects/Blurs.h"
#include "scene/effects/RadiusMap.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

template <class Pixel>
void means(const QX_World& from, const BlurCall& call, int left, int top, const Moment& moment, QX_World& to) {
    std::unique_ptr<QX_SummedAreaTable> table;
    must_do(moment, [&] { table = std::make_unique<QX_SummedAreaTable>(&from, false); });
    const auto sample = [&](float l, float t, float r, float b, Pixel* out) {
        if (table->use_double) {
            QX_SummedAreaTable_SampleAA<Pixel, QX_PixelDouble>(from.width, from.height, table->double_table, l, t, r, b,
                                                               out);
        } else {
            QX_SummedAreaTable_SampleAA<Pixel, QX_PixelFloat>(from.width, from.height, table->float_table, l, t, r, b,
                                                              out);
        }
    };
    on_all_rows(to.height, moment, moment.watch, [&](int y) {
        const int sy = y - top;
        for (int x = 0; x < to.width; ++x) {
            const int sx = x - left;
            const double factor = map_factor<Pixel>(call.map.get(), sx + call.map_x, sy + call.map_y);
            const double rx = call.radius_x * factor, ry = call.radius_y * factor;
            Pixel& out = row_of<Pixel>(to, y)[x];
            if (rx == 0 && ry == 0) {
                const bool inside = sx >= 0 && sy >= 0 && sx < from.width && sy < from.height;
                out = inside ? row_of<Pixel>(from, sy)[sx] : Pixel{};
                continue;
            }
            // Pixel n reaches from n - 0.5 to n + 0.5, to which sampling adds a half.
            double l = sx - 0.5 - rx, r = sx + 0.5 + rx, t = sy - 0.5 - ry, b = sy + 0.5 + ry;
            if (call.keeps_edge) {
                l = std::max(l, -0.5);
                t = std::max(t, -0.5);
                r = std::min(r, from.width - 0.5);
                b = std::min(b, from.height - 0.5);
            }
            sample(static_cast<float>(l), static_cast<float>(t), static_cast<float>(r), static_cast<float>(b), &out);
        }
    });
}

}  // namespace

void blur_mean(Canvas& canvas, const BlurCall& call, const Moment& moment) {
    const QX_World& from = *canvas.world;
    const int across = call.grows ? static_cast<int>(std::ceil(call.radius_x)) : 0;
    const int down = call.grows ? static_cast<int>(std::ceil(call.radius_y)) : 0;
    auto to =
        new_canvas(moment, from.width + 2 * std::int64_t{across}, from.height + 2 * std::int64_t{down}, from.Depth());
    pictures::with_pixel_of(from, [&]<class Pixel>() { means<Pixel>(from, call, across, down, moment, *to); });
    keep_channels(canvas, call.channels, across, down, *to);
    canvas = {std::move(to), canvas.x - across, canvas.y - down};
}

}  // namespace qx::scene
