// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

Image luminance(const Frame& frame, const Params& params) {
    float red = static_cast<float>(params.red), green = static_cast<float>(params.green);
    float blue = static_cast<float>(params.blue);
    const float sum = green + red + blue;
    red = sum == 0 ? 1 : red / sum;
    green = sum == 0 ? 1 : green / sum;
    blue = sum == 0 ? 1 : blue / sum;
    const float unit = frame.depth == 8 ? 0.003921569F : frame.depth == 16 ? 3.0517578e-05F : 1.0F;
    red *= unit, green *= unit, blue *= unit;
    Image out(frame.w, frame.h);
    for (std::size_t i = 0; i < out.px.size(); ++i) {
        const auto& [a, r, g, b] = frame.px[i];
        out.px[i] = g * green + r * red + b * blue;
    }
    return out;
}

namespace {

/// Numbers along a line, from `begin` on.
struct Line {
    int begin;
    std::vector<float> values;
    float at(int i) const { return values[static_cast<std::size_t>(i - begin)]; }
};

struct Box {
    int r, extra, passes;
    float f, norm;
    Box(float radius, int count) : r(static_cast<int>(std::floor(radius))), passes(count) {
        f = radius - real(r);
        extra = f == 0 ? r + 1 : r + 2;
        norm = 1.0F / (real(2 * r + 1) + 2.0F * f);
    }
    int reach() const { return passes * extra; }
};

/// `line` has `reach` values before 0 and behind n; so have the lines between the passes, less and less.
Line box_line(Line line, int n, const Box& box) {
    for (int pass = 1; pass <= box.passes; ++pass) {
        const int margin = (box.passes - pass) * box.extra;
        Line out{-margin, {}};
        float sum = 0;
        for (int i = -margin - box.r; i <= -margin + box.r; ++i) sum += line.at(i);
        for (int i = -margin; i < n + margin; ++i) {
            float value = sum;
            if (box.f != 0) value = sum + box.f * (line.at(i - box.r - 1) + line.at(i + box.r + 1));
            out.values.push_back(value * box.norm);
            sum += line.at(i + box.r + 1);
            sum -= line.at(i - box.r);
        }
        line = std::move(out);
    }
    return line;
}

}  // namespace

Image box_blur(const Image& image, float rx, float ry, int passes) {
    const float most = 3.0F * real(std::max(image.w, image.h));
    rx = std::min(rx, most);
    ry = std::min(ry, most);
    if (rx == 0 && ry == 0) return image;
    const int pad = static_cast<int>((ry + 2.0F) * real(passes));
    const Box along(rx, passes), down(ry, passes);
    Image rows(image.w, image.h + 2 * pad);
    for (int y = -pad; y < image.h + pad; ++y) {
        Line line{-along.reach(), {}};
        for (int x = line.begin; x < image.w + along.reach(); ++x) line.values.push_back(image.read(x, y));
        const Line out = box_line(std::move(line), image.w, along);
        for (int x = 0; x < image.w; ++x) rows.at(x, y + pad) = out.at(x);
    }
    Image out(image.w, image.h);
    for (int x = 0; x < image.w; ++x) {
        Line line{-down.reach(), {}};
        for (int y = line.begin; y < image.h + down.reach(); ++y) line.values.push_back(rows.at(x, y + pad));
        const Line column = box_line(std::move(line), image.h, down);
        for (int y = 0; y < image.h; ++y) out.at(x, y) = column.at(y);
    }
    return out;
}

Image nearest(const Image& image, int w, int h, float scale) {
    Image out(w, h);
    for (int y = 0; y < h; ++y) {
        const float py = (real(y) + 0.5F) * scale;
        float px = 0.5F * scale;
        for (int x = 0; x < w; ++x, px += scale) out.at(x, y) = image.read(whole(px).index, whole(py).index);
    }
    return out;
}

namespace {

Image reduced(const Image& image, float detail) {
    const int w = static_cast<int>(real(image.w) * detail), h = static_cast<int>(real(image.h) * detail);
    if (w <= 0 || h <= 0) return {};
    const float scale = real(image.w) / real(w), radius = scale / 3.0F;
    return nearest(box_blur(image, radius, radius, 3), w, h, scale);
}

/// Of what `mask` shows; the sums of the parts in their order.
float shown_mean(const Image& image, const Image& mask, const Parts& parts) {
    float sum = 0;
    int count = 0;
    for (int part = 0; part < parts.count; ++part) {
        const Rows rows = rows_of(part, parts.count, image.h);
        float part_sum = 0;
        for (int y = rows.begin; y < rows.end; ++y) {
            for (int x = 0; x < image.w; ++x) {
                if (mask.read(x, y) < 0.5F) continue;
                part_sum += image.read(x, y);
                ++count;
            }
        }
        sum += part_sum;
    }
    return count == 0 ? 0 : sum / real(count);
}

}  // namespace

Image working_frame(const Frame& frame, const Params& params) {
    return reduced(luminance(frame, params), params.detail);
}

Image masked_working_frame(const Frame& frame, const Image& mask, const Params& params, const Parts& parts) {
    Image out = working_frame(frame, params);
    if (out.px.empty()) return out;
    Image shown = mask;
    for (float& value : shown.px) value *= 0.003921569F;
    shown = reduced(shown, params.detail);
    const float mean = shown_mean(out, shown, parts);
    for (std::size_t i = 0; i < out.px.size(); ++i) {
        if (shown.px[i] < 0.5F) out.px[i] = mean;
    }
    return out;
}

int level_count(int w, int h) {
    for (int levels = 1;; ++levels) {
        w /= 2;
        if (w <= 7) return levels;
        h /= 2;
        if (h <= 7) return levels;
    }
}

std::vector<Image> pyramid(const Image& image, int levels) {
    std::vector<Image> out{image};
    while (static_cast<int>(out.size()) < levels) {
        const Image smooth = box_blur(out.back(), 1, 1, 3);
        Image half(smooth.w / 2, smooth.h / 2);
        const float sx = real(half.w) / real(smooth.w), sy = real(half.h) / real(smooth.h);
        for (int y = 0; y < half.h; ++y) {
            for (int x = 0; x < half.w; ++x) {
                half.at(x, y) =
                    smooth.read(static_cast<int>(real(x) / sx + 0.5F), static_cast<int>(real(y) / sy + 0.5F));
            }
        }
        out.push_back(std::move(half));
    }
    return out;
}

}  // namespace flow_model
