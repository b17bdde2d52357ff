// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

float ring_sample(const Image& image, float x, float y) {
    const Whole u = whole(x - 0.5F), v = whole(y - 0.5F);
    if (u.index < -1 || u.index >= image.w || v.index < -1 || v.index >= image.h) return kInvalid;
    return image.mix(u.index, v.index, u.fraction, v.fraction);
}

namespace {

float data_cost(const Image& first, const Image& second, int x, int y, Vec c, const Weights& weights) {
    const float sample = ring_sample(first, real(x) + 0.5F - c.x, real(y) + 0.5F + c.y);
    return std::fabs(sample - second.read(x, y)) * weights.data / 123.0F * 65535.0F;
}

/// The first of those that cost least.
Vec cheapest(const List& list, const std::function<float(Vec)>& cost) {
    Vec best = list[0];
    float least = cost(best);
    for (std::size_t i = 1; i < list.size(); ++i) {
        const float c = cost(list[i]);
        if (c < least) {
            least = c;
            best = list[i];
        }
    }
    return best;
}

}  // namespace

Field initial_assignment(const Field& in, const Image& first, const Image& second, int size, const Weights& weights,
                         const Parts& parts) {
    const int s = size - kOverlap / 2;
    const int offsets[9][2] = {{-s, -s}, {-s, 0}, {-s, s}, {0, -s}, {0, s}, {s, -s}, {s, 0}, {s, s}, {0, 0}};
    Field out(in.w, in.h);
    each_part(parts, in.h, [&](Rows rows) {
        Random random;
        for (int y = rows.begin; y < rows.end; ++y) {
            for (int x = 0; x < in.w; ++x) {
                List list;
                for (const auto& [dx, dy] : offsets) {
                    if (in.has(x + dx, y + dy)) list.push_back(in.at(x + dx, y + dy));
                }
                list = filtered(list);
                shuffle(list, random);
                if (list.empty()) continue;
                out.at(x, y) = list.size() == 1
                                   ? list[0]
                                   : cheapest(list, [&](Vec c) { return data_cost(first, second, x, y, c, weights); });
            }
        }
    });
    return out;
}

void refine_pass(Field& field, const Monitor& monitor, const Image& first, const Image& second, const Weights& weights,
                 const Parts& parts) {
    const Field before = field;
    each_part(parts, field.h, [&](Rows rows) {
        Random random;
        for (int y = rows.begin; y < rows.end; ++y) {
            for (int x = 0; x < field.w; ++x) {
                List list = monitor.candidates(x, y);
                if (list.empty()) continue;
                list.insert(list.begin(), field.at(x, y));
                list = filtered(list);
                shuffle(list, random);
                if (list.empty()) continue;
                if (list.size() == 1) {
                    field.at(x, y) = list[0];
                    continue;
                }
                const Vec m = neighbour_mean(field, before, rows, x, y);
                field.at(x, y) = cheapest(list, [&](Vec c) {
                    const float far = (std::fabs(m.x - c.x) + std::fabs(m.y - c.y)) * weights.smoothness * 8.0F;
                    return data_cost(first, second, x, y, c, weights) + far;
                });
            }
        }
    });
}

Field refine(const Field& in, const Image& first, const Image& second, const Params& params, const Parts& parts) {
    const Weights weights = weights_of(params.refine_smoothness);
    Field out = initial_assignment(in, first, second, params.block, weights, parts);
    Monitor monitor{.map = {}, .saved = {}, .first = true, .all = true, .saw_invalid = false};
    monitor.run(out);
    for (int i = 0; i < params.iterations; ++i) {
        refine_pass(out, monitor, first, second, weights, parts);
        if (i + 1 < params.iterations) monitor.run(out);
    }
    return out;
}

}  // namespace flow_model
