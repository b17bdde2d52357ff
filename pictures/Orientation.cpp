// SPDX-License-Identifier: Apache-2.0
#include "pictures/Orientation.h"

#include <algorithm>
#include <utility>

#include "pictures/Pixels.h"

namespace qx::pictures {
namespace {

/// Where a pixel that is seen lies in what is stored, of which these are the sides.
struct Stored {
    const Turn turn;
    const int width, height;

    PictureSize seen() const { return turn.exchanged ? PictureSize{height, width} : PictureSize{width, height}; }
    int column(int x, int y) const {
        const int at = turn.exchanged ? y : x;
        return turn.columns_back ? width - 1 - at : at;
    }
    int row(int x, int y) const {
        const int at = turn.exchanged ? x : y;
        return turn.rows_back ? height - 1 - at : at;
    }
};

/// Small squares one by one, so that the rows of both sides stay near.
template <class Visit> void each_in_squares(const PictureSize& size, const Visit& visit) {
    constexpr int side = 64;
    for (int top = 0; top < size.height; top += side) {
        for (int left = 0; left < size.width; left += side) {
            for (int y = top; y < std::min(top + side, size.height); ++y) {
                for (int x = left; x < std::min(left + side, size.width); ++x) visit(x, y);
            }
        }
    }
}

std::unique_ptr<QX_World> turned(const std::string& path, const QX_World& world, int orientation) {
    const Stored stored{turn_of(orientation), world.width, world.height};
    const PictureSize size = stored.seen();
    auto to = new_world(path, size.width, size.height, world.Depth(), false);
    with_pixel_of(world, [&]<class Pixel>() {
        each_in_squares(size, [&](int x, int y) {
            row_of<Pixel>(*to, y)[x] = row_of<Pixel>(world, stored.row(x, y))[stored.column(x, y)];
        });
    });
    return to;
}

}  // namespace

Turn turn_of(int orientation) {
    const int place = orientation - 1;
    const bool exchanged = place >= 4;
    const bool first = place == 1 || place == 2 || place == 6 || place == 7;   // columns run backwards
    const bool second = place == 2 || place == 3 || place == 5 || place == 6;  // rows do
    return {exchanged, first, second};
}

PictureSize turned_size(const InFile& file) {
    return Stored{turn_of(file.orientation), file.size.width, file.size.height}.seen();
}

void turn(const std::string& path, Picture& picture) {
    const int orientation = picture.in_file.orientation;
    if (orientation == 1) return;
    const Stored stored{turn_of(orientation), picture.world->width, picture.world->height};
    const PictureSize size = stored.seen();
    picture.world = turned(path, *picture.world, orientation);
    if (picture.carried) picture.carried = turned(path, *picture.carried, orientation);
    if (!picture.light.empty()) {
        std::vector<bool> light(picture.light.size());
        each_in_squares(size, [&](int x, int y) {
            const auto place = [](int column, int row, int width) {
                return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(column);
            };
            light[place(x, y, size.width)] = picture.light[place(stored.column(x, y), stored.row(x, y), stored.width)];
        });
        picture.light = std::move(light);
    }
    if (stored.turn.exchanged) std::swap(picture.resolution.x, picture.resolution.y);
}

}  // namespace qx::pictures
