// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

int address(int i, int size, Edge edge) {
    if (i >= 0 && i < size) return i;
    const auto remainder = [i](int period) { return (i % period + period) % period; };
    switch (edge) {
        case Edge::background:
            return -1;
        case Edge::clamp:
            return i < 0 ? 0 : size - 1;
        case Edge::mirror:
            return std::min(remainder(2 * size), 2 * size - 1 - remainder(2 * size));
        case Edge::wrap:
            break;
    }
    return remainder(size);
}

Whole whole(float position) {
    if (!(position >= -1e9F)) return {-1000000000, 0};
    if (position >= 1e9F) return {1000000000, 0};
    const float below = std::floor(position);
    return {static_cast<int>(below), position - below};
}

static float lerp(float a, float b, float f) { return a + (b - a) * f; }

static float between(float a, float b, float c, float d, float fx, float fy) {
    const float upper = lerp(a, b, fx), lower = lerp(c, d, fx);
    return lerp(upper, lower, fy);
}

float Image::mix(int i, int j, float fx, float fy) const {
    return between(read(i, j), read(i + 1, j), read(i, j + 1), read(i + 1, j + 1), fx, fy);
}

Vec Field::read(int x, int y) const {
    const int i = address(x, w, edge), j = address(y, h, edge);
    return i < 0 || j < 0 ? background : at(i, j);
}

Vec Field::bilinear(float x, float y) const {
    const Whole u = whole(x - 0.5F), v = whole(y - 0.5F);
    const Vec a = read(u.index, v.index), b = read(u.index + 1, v.index);
    const Vec c = read(u.index, v.index + 1), d = read(u.index + 1, v.index + 1);
    return {between(a.x, b.x, c.x, d.x, u.fraction, v.fraction), between(a.y, b.y, c.y, d.y, u.fraction, v.fraction)};
}

Colour bilinear(const Frame& frame, float x, float y) {
    const Whole u = whole(x - 0.5F), v = whole(y - 0.5F);
    const Colour &a = frame.read(u.index, v.index), &b = frame.read(u.index + 1, v.index);
    const Colour &c = frame.read(u.index, v.index + 1), &d = frame.read(u.index + 1, v.index + 1);
    Colour out{};
    for (std::size_t k = 0; k < 4; ++k) out[k] = between(a[k], b[k], c[k], d[k], u.fraction, v.fraction);
    return out;
}

float Frame::stored(float value) const {
    if (depth == 32) return value;
    if (!(value > 0)) return 0;
    return value >= range() ? range() : std::trunc(value);
}

Rows rows_of(int part, int count, int rows) {
    const int each = (rows + count - 1) / count;
    const int begin = std::min(part * each, rows);
    return {begin, part == count - 1 ? rows : std::min(begin + each, rows)};
}

void each_part(const Parts& parts, int rows, const std::function<void(Rows)>& body) {
    for (int i = 0; i < parts.count; ++i) {
        body(rows_of(parts.reversed ? parts.count - 1 - i : i, parts.count, rows));
    }
}

}  // namespace flow_model
