// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/GradientSource.h"

#include <algorithm>

#include "pictures/Pixels.h"
#include "scene/effects/Work.h"
#include "scene/sources/Rounded.h"

namespace qx::scene {
bool GradientTracks::moves() const {
    return from.moves() || to.moves() ||
           std::any_of(stops.begin(), stops.end(), [](const Stop& stop) { return stop.colour.moves(); });
}

Gradient GradientTracks::at(int frame) const {
    Gradient gradient{.radial = radial, .from = from.at(frame), .to = to.at(frame), .stops = {}};
    for (const Stop& stop : stops) gradient.stops.push_back({stop.at, stop.colour.at(frame)});
    return gradient;
}

Piece GradientSource::picture(const SourceMoment& moment) const {
    auto picture = new_made(moment, size_);
    picture->precision = pictures::precision_of(moment.depth);
    const QX_World& world = *picture->world;
    const Gradient gradient = gradient_.at(moment.frame);
    const Moment work{.subject = moment.subject, .picture = {}, .note = {}, .watch = moment.watch};
    on_all_rows(world.height, work, moment.watch, [&](int y) {
        pictures::with_pixel_of(world, [&]<class Pixel>() {
            Pixel* const row = row_of<Pixel>(world, y);
            for (int x = 0; x < world.width; ++x) row[x] = rounded<Pixel>(gradient.at(x + 0.5, y + 0.5));
        });
    });
    return {picture};
}

}  // namespace qx::scene
