// SPDX-License-Identifier: Apache-2.0
#include "scene/effects/Work.h"

#include "QX/pixelops/QX_Premul.h"
#include "pictures/Picture.h"

namespace qx::scene {

QX_LayerDef record_of(const QX_World& world) {
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    return record;
}

QX_LayerDef band_of(const QX_World& world, const M_LRect& band) {
    QX_LayerDef record = record_of(world);
    record.data = static_cast<std::byte*>(record.data) + std::ptrdiff_t{band.top} * record.rowbytes;
    record.height = band.bottom - band.top;
    record.origin_x = world.origin_x;
    record.origin_y = world.origin_y + band.top;
    return record;
}

void multiply(QX_World& world, const Moment& moment) {
    must_do(moment, [&] {
        QX_LayerDef record = record_of(world);
        return QX_Premul(nullptr, true, &record);
    });
}

void unmultiply(QX_World& world, const Moment& moment) {
    must_do(moment, [&] {
        QX_LayerDef record = record_of(world);
        if (world.Depth() == 8) return QX_PremulColor(nullptr, &record, nullptr, false, &record);
        if (world.Depth() == 16) return QX_PremulColor16(nullptr, &record, nullptr, false, &record);
        return QX_PremulColorFloat(nullptr, &record, nullptr, false, &record);
    });
}

std::unique_ptr<QX_World> new_canvas(const Moment& moment, std::int64_t width, std::int64_t height, int depth) {
    return pictures::new_world(moment.subject, width, height, depth);
}

void keep_channels(const Canvas& canvas, unsigned selected, int left, int top, QX_World& world) {
    if (selected == 15) return;
    const QX_World& from = *canvas.world;
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        pictures::each_pixel<Pixel>(world, [&](Pixel& p, int x, int y) {
            const int sx = x - left, sy = y - top;
            const bool inside = sx >= 0 && sy >= 0 && sx < from.width && sy < from.height;
            const Pixel own = inside ? row_of<Pixel>(from, sy)[sx] : Pixel{};
            if ((selected & 1) == 0) p.alpha = own.alpha;
            if ((selected & 2) == 0) p.red = own.red;
            if ((selected & 4) == 0) p.green = own.green;
            if ((selected & 8) == 0) p.blue = own.blue;
        });
    });
}

}  // namespace qx::scene
