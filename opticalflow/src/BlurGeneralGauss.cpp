// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BlurGeneralGauss.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "opticalflow/src/Kernels.h"

namespace solvan_of {
namespace {

qx::BoxShape shape_of(float radius, int passes) {
    const float whole = std::floor(radius), rest = radius - whole;
    const auto r = static_cast<std::int32_t>(whole);
    return {r, rest, 1.0f / (static_cast<float>(2 * r + 1) + 2.0f * rest), r + 1 + (rest != 0.0f ? 1 : 0), passes};
}

/// What is read at each place of [-margin, size + margin).
std::vector<std::int32_t> index_of(const TexAxis& axis, std::int32_t margin) {
    std::vector<std::int32_t> index(static_cast<std::size_t>(axis.size) + 2 * static_cast<std::size_t>(margin));
    for (std::size_t i = 0; i < index.size(); ++i) index[i] = axis.index(static_cast<std::int32_t>(i) - margin);
    return index;
}

/// Room for a part's lines; want of memory is thrown as a code.
EngineBlock<float> room_for(std::size_t floats) {
    EngineBlock<float> room = engineBlock<float>(floats);
    if (room == nullptr) throw 4;
    return room;
}

}  // namespace

Picks all_of(const TexAxis& axis) {
    Picks all(static_cast<std::size_t>(axis.size));
    std::iota(all.begin(), all.end(), 0);
    return all;
}

void BlurGeneralGauss::preProcess(const FloatRows& in, FloatTexture& out) {
    const FnTexIndexer& shape = in.shape();
    const float most = 3.0f * static_cast<float>(std::max(shape.width(), shape.height()));
    across_ = shape_of(std::clamp(radius_x / pixel_aspect_, 0.0f, most), box_passes);
    down_ = shape_of(std::clamp(radius_y, 0.0f, most), box_passes);
    if (columns.empty()) columns = all_of(shape.x);
    if (rows.empty()) rows = all_of(shape.y);
    column_index_ = index_of(shape.x, across_.margin());
    row_index_ = index_of(shape.y, down_.margin());
    pass_count_ = 1;
    if (radius_x == 0.0f && radius_y == 0.0f) return;
    pass_count_ = 2;
    (void)out;
    if (!between_.allocate(static_cast<std::int32_t>(columns.size()), shape.height())) {
        state().stop(4);
        pass_count_ = 0;
    }
}

void BlurGeneralGauss::processPart(const FloatRows& in, FloatTexture& out, int part) {
    if (pass_count_ == 1) {
        copy_rows(in, out, part);
    } else if (pass_ == 0) {
        blur_rows(in, part);
    } else {
        blur_columns(in, out, part);
    }
}

void BlurGeneralGauss::blur_rows(const FloatRows& in, int part) {
    const PartRows mine = rows_of_part(in.shape().height(), part, processorCount());
    if (mine.begin >= mine.end) return;
    const std::int32_t width = in.shape().width();
    const std::size_t line = qx::box_scratch(across_, width);
    const EngineBlock<float> room = room_for(line + std::size_t{qx::kMostLanes} * std::size_t(width));
    qx::BoxLines lines{.shape = across_,
                       .place_step = 1,
                       .length = width,
                       .index = column_index_.data() + across_.margin(),
                       .background = in.background(),
                       .picks = columns.data(),
                       .pick_count = static_cast<std::int32_t>(columns.size()),
                       .out_pick_step = 1,
                       .out_line_step = between_.width(),
                       .scratch = room.get()};
    for (std::int32_t y = mine.begin; y < mine.end && !interrupted(part); y += qx::kMostLanes) {
        lines.lines = std::min(mine.end - y, qx::kMostLanes);
        lines.source = in.rows(y, lines.lines, room.get() + line, &lines.line_step);
        lines.out = between_.row(y);
        kernels().box->blur_lines(lines);
    }
}

// A column is summed whole, so parts share out columns.
void BlurGeneralGauss::blur_columns(const FloatRows& in, FloatTexture& out, int part) {
    const PartRows mine = rows_of_part(between_.width(), part, processorCount());
    if (mine.begin >= mine.end) return;
    const EngineBlock<float> room = room_for(qx::box_scratch(down_, between_.height()));
    qx::BoxLines lines{.shape = down_,
                       .place_step = between_.width(),
                       .line_step = 1,
                       .length = between_.height(),
                       .index = row_index_.data() + down_.margin(),
                       .background = in.background(),
                       .picks = rows.data(),
                       .pick_count = static_cast<std::int32_t>(rows.size()),
                       .out_pick_step = out.row_bytes / std::ptrdiff_t{sizeof(float)},
                       .out_line_step = 1,
                       .scratch = room.get()};
    for (std::int32_t x = mine.begin; x < mine.end && !interrupted(part); x += qx::kMostLanes) {
        lines.lines = std::min(mine.end - x, qx::kMostLanes);
        lines.source = between_.row(0) + x;
        lines.out = out.row(0) + x;
        kernels().box->blur_lines(lines);
    }
}

void BlurGeneralGauss::copy_rows(const FloatRows& in, FloatTexture& out, int part) const {
    const EngineBlock<float> room = room_for(std::size_t{qx::kMostLanes} * std::size_t(in.shape().width()));
    for_rows(part, [&](std::int32_t y) {
        std::ptrdiff_t step;
        const float* const from = in.rows(rows[static_cast<std::size_t>(y)], 1, room.get(), &step);
        float* const to = out.row(y);
        for (std::size_t i = 0; i < columns.size(); ++i) to[i] = from[columns[i]];
    });
}

}  // namespace solvan_of
