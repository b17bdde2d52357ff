// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/sheet/Thumbnail.h"

#include <algorithm>
#include <cstdint>

#include "pictures/Picture.h"

namespace qx::tool {
namespace {

constexpr int kCheckerSide = 12;

/// Pixels of `count` that target pixel `i` of `parts` covers, at least one.
struct Span {
    Span(int i, int parts, int count)
        : begin(static_cast<int>(std::int64_t{i} * count / parts)),
          end(std::max(static_cast<int>((std::int64_t{i} + 1) * count / parts), begin + 1)) {}
    int begin, end;
};

QX_Pixel8 mean(const QX_World& source, const Span& columns, const Span& rows) {
    std::uint64_t alpha = 0, red = 0, green = 0, blue = 0;
    for (int y = rows.begin; y < rows.end; ++y) {
        const auto* row = pictures::row_of<QX_Pixel8>(source, y);
        for (int x = columns.begin; x < columns.end; ++x) {
            const std::uint64_t a = row[x].alpha;
            alpha += a;
            red += a * row[x].red;
            green += a * row[x].green;
            blue += a * row[x].blue;
        }
    }
    if (alpha == 0) return {};
    const auto count =
        static_cast<std::uint64_t>(columns.end - columns.begin) * static_cast<std::uint64_t>(rows.end - rows.begin);
    const auto rounded = [](std::uint64_t sum, std::uint64_t by) {
        return static_cast<std::uint8_t>((sum + by / 2) / by);
    };
    return {rounded(alpha, count), rounded(red, alpha), rounded(green, alpha), rounded(blue, alpha)};
}

/// 0 at an edge, 255 from a sixth of the length on.
int rise(int i, int length) {
    const int slope = std::max(length / 6, 1);
    return std::min({(2 * i + 1) * 255 / (2 * slope), (2 * (length - 1 - i) + 1) * 255 / (2 * slope), 255});
}

}  // namespace

std::unique_ptr<QX_World> scaled(const QX_World& source, int width, int height) {
    auto target = pictures::new_world("thumbnail", width, height, 8);
    pictures::each_pixel<QX_Pixel8>(*target, [&](QX_Pixel8& p, int x, int y) {
        p = mean(source, Span(x, width, source.width), Span(y, height, source.height));
    });
    return target;
}

void fit(const QX_World& world, int side, int* width, int* height) {
    const int longest = std::max(world.width, world.height);
    const auto part = [=](int length) {
        return std::max(static_cast<int>((std::int64_t{length} * side + longest / 2) / longest), 1);
    };
    *width = part(world.width);
    *height = part(world.height);
}

void soften_edges(QX_World& world) {
    pictures::each_pixel<QX_Pixel8>(world, [&](QX_Pixel8& p, int x, int y) {
        p.alpha = static_cast<std::uint8_t>(rise(x, world.width) * rise(y, world.height) / 255);
    });
}

void draw_checkers(QX_World& world) {
    pictures::each_pixel<QX_Pixel8>(world, [](QX_Pixel8& p, int x, int y) {
        const bool odd = ((x / kCheckerSide) ^ (y / kCheckerSide)) & 1;
        p = odd ? QX_Pixel8{255, 200, 200, 200} : QX_Pixel8{255, 150, 150, 150};
    });
}

std::unique_ptr<QX_World> ramp(int width, int height) {
    auto world = pictures::new_world("ramp", width, height, 8);
    pictures::each_pixel<QX_Pixel8>(*world, [=](QX_Pixel8& p, int x, int) {
        const int alpha = width == 1 ? 255 : (255 * x + (width - 1) / 2) / (width - 1);
        p = {static_cast<std::uint8_t>(alpha), 255, 255, 255};
    });
    return world;
}

}  // namespace qx::tool
