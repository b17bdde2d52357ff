// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/sheet/FlowWheel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "QX/indep/QX_Area.h"
#include "tools/qx/sheet/Font.h"

namespace qx::tool {
namespace {

constexpr QX_Pixel8 kBlack{255, 0, 0, 0}, kWhite{255, 255, 255, 255};

/// The wheel, as it is usual for such fields: stretches of steps that the eye tells apart, each from one full colour to
/// the next. One channel changes on a stretch.
struct Stretch {
    int steps;
    std::array<double, 3> from, to;
};
constexpr Stretch kWheel[] = {
    {15, {1, 0, 0}, {1, 1, 0}},  // red to yellow
    {6, {1, 1, 0}, {0, 1, 0}},   // to green
    {4, {0, 1, 0}, {0, 1, 1}},   // to cyan
    {11, {0, 1, 1}, {0, 0, 1}},  // to blue
    {13, {0, 0, 1}, {1, 0, 1}},  // to magenta
    {6, {1, 0, 1}, {1, 0, 0}},   // back to red
};
constexpr int kSteps = 15 + 6 + 4 + 11 + 13 + 6;

/// @param turn  0 to 1: from the right over below
std::array<double, 3> hue(double turn) {
    double at = turn * kSteps;
    for (const Stretch& stretch : kWheel) {
        if (at < stretch.steps) {
            std::array<double, 3> colour{};
            for (std::size_t i = 0; i < 3; ++i)
                colour[i] = stretch.from[i] + (stretch.to[i] - stretch.from[i]) * at / stretch.steps;
            return colour;
        }
        at -= stretch.steps;
    }
    return kWheel[0].from;
}

struct Legend {
    int radius, x, y;  ///< of its middle
};
/// Of no radius where there is no room.
Legend legend_of(int width, int height) {
    constexpr int least = 8, most = 60, margin = 4;
    const int radius = std::min(std::min(width, height) / 12, most);
    return {radius < least ? 0 : radius, width - radius - margin, height - radius - margin - kGlyphHeight - 2};
}

void draw_legend(QX_World& world, double most) {
    const Legend legend = legend_of(world.width, world.height);
    if (legend.radius == 0) return;
    const int reach = legend.radius + 1;
    for (int y = -reach; y <= reach; ++y) {
        for (int x = -reach; x <= reach; ++x) {
            const double length = std::hypot(x, y);
            if (length > reach) continue;
            const auto part = [&](int v) { return static_cast<float>(v * most / legend.radius); };
            row_of<QX_Pixel8>(world, legend.y + y)[legend.x + x] =
                length > legend.radius ? kBlack : flow_colour({part(x), part(y)}, most * 1.0001);
        }
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.3g px", most);
    const int top = legend.y + reach + 2, left = legend.x - reach;
    for (const int shadow : {1, 0})
        draw_text(world, left + shadow, top + shadow, 1, shadow != 0 ? kWhite : kBlack, text);
}

}  // namespace

QX_Pixel8 flow_colour(const scene::FlowField::Vector& vector, double most) {
    if (!scene::is_known(vector)) return kBlack;
    const double u = static_cast<double>(vector.u), v = static_cast<double>(vector.v);
    const double length = std::hypot(u, v) / most;
    double turn = std::atan2(v, u) / (2 * std::numbers::pi);
    if (turn < 0) turn += 1;
    const auto colour = hue(turn);
    const auto channel = [&](double full) {
        const double value = length <= 1 ? 1 - length * (1 - full) : full * 0.75;
        return static_cast<std::uint8_t>(value * 255 + 0.5);
    };
    return {255, channel(colour[0]), channel(colour[1]), channel(colour[2])};
}

double usual_length(const scene::FlowField& field) {
    constexpr double least = 0.01;
    std::vector<float> lengths;
    for (const auto& vector : field.vectors) {
        if (scene::is_known(vector)) lengths.push_back(std::hypot(vector.u, vector.v));
    }
    if (lengths.empty()) return 1;
    const auto place = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() * 99 / 100);
    const auto at = std::min(place, lengths.end() - 1);
    std::nth_element(lengths.begin(), at, lengths.end());
    return std::max<double>(static_cast<double>(*at), least);
}

pictures::Picture flow_picture(const scene::FlowField& field, double most) {
    pictures::Picture picture;
    picture.world = pictures::new_world("flow", field.width, field.height, 8);
    for (int y = 0; y < field.height; ++y) {
        QX_Pixel8* const row = row_of<QX_Pixel8>(*picture.world, y);
        for (int x = 0; x < field.width; ++x) row[x] = flow_colour(field.at(x, y), most);
    }
    draw_legend(*picture.world, most);
    return picture;
}

}  // namespace qx::tool
