// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {
namespace {

void project(Tween& tween, const Field& source, std::vector<List>& lists, float k) {
    for (int y = 0; y < source.h; ++y) {
        for (int x = 0; x < source.w; ++x) {
            const Vec v = source.at(x, y);
            int qx = 0, qy = 0;
            if (k * v.x != kInvalid) {
                qx = whole(real(x) + 0.5F - k * v.x).index;
                qy = whole(real(y) + 0.5F + k * v.y).index;
            }
            if (qx < 0 || qx >= tween.w || qy < 0 || qy >= tween.h || !v.valid()) continue;
            List& list = lists[place(tween.w, qx, qy)];
            if (std::find(list.begin(), list.end(), v) == list.end()) list.push_back(v);
        }
    }
}

/// What frame `image` shows at the end of vector k * v from pixel (x, y).
float end_value(const Image& image, int x, int y, Vec v, float k) {
    const float dx = k * v.x, dy = k * v.y;
    if (dx == 0 && dy == 0) return image.read(x, y);
    if (dx == kInvalid) return 128;
    const float px = real(x) + 0.5F - dx, py = real(y) + 0.5F + dy;
    if (px < 0 || px > real(image.w) || py < 0 || py > real(image.h)) return 16711425;
    return ring_sample(image, px, py);
}

float apart(Vec a, Vec b) { return std::fabs(a.x - b.x) + std::fabs(a.y - b.y); }

List gathered(const Monitor& monitor, const Field& field, const List& temporal, int x, int y) {
    List list = monitor.candidates(x, y);
    list.push_back(field.at(x, y));
    list.insert(list.end(), temporal.begin(), temporal.end());
    if (list.size() > 200) list.resize(200);
    return filtered(list);
}

/// The one nearest to `mean`, for pixels that one frame alone shows.
void choose_alone(const List& list, Vec mean, float smoothness, Vec& result) {
    float least = 1.7014117e38F;
    for (const Vec& v : list) {
        const float cost = apart(mean, v) * 8.0F * smoothness;
        if (cost < least) {
            least = cost;
            result = v;
        }
    }
}

void choose_pair(Tween& tween, int x, int y, const List& a, const List& b, Vec mean1, Vec mean0) {
    const float dw = tween.weights.data * 65535.0F;
    float least = 1.7014117e38F;
    Vec best1 = tween.to1.at(x, y), best0 = tween.to0.at(x, y);
    for (const Vec& u : a) {
        const float fa = end_value(tween.frame1, x, y, u, 1.0F - tween.t);
        for (const Vec& v : b) {
            const float fb = end_value(tween.frame0, x, y, v, tween.t);
            const float cost = (std::fabs(u.x + v.x) + std::fabs(u.y + v.y)) * tween.symmetry +
                               std::fabs(fb - fa) * dw +
                               (8.0F * apart(mean0, v) + 8.0F * apart(mean1, u)) * tween.weights.smoothness;
            if (cost < least) {
                least = cost;
                best1 = u;
                best0 = v;
            }
        }
    }
    tween.to1.at(x, y) = best1;
    tween.to0.at(x, y) = best0;
}

List negated(List list) {
    for (Vec& v : list) v = {-v.x, -v.y};
    return list;
}

/// Rows of both results before a pass, for what lies outside of a part.
struct Before {
    Field to1, to0;
};

void choose(Tween& tween, const Before& before, Rows part, int x, int y, Random& random) {
    const int state = tween.map.at(x, y);
    List a = gathered(tween.monitor1, tween.to1, tween.list1(x, y), x, y);
    List b = gathered(tween.monitor0, tween.to0, tween.list0(x, y), x, y);
    const bool borrows = (tween.flags & 0x800U) != 0;
    if (state == 0 && (a.empty() || b.empty()) && !borrows) return;
    if (a.size() == 1 && b.size() == 1) {
        tween.to1.at(x, y) = a[0];
        tween.to0.at(x, y) = b[0];
        return;
    }
    shuffle_each(a, random);
    shuffle_each(b, random);
    Vec mean1 = neighbour_mean(tween.to1, before.to1, part, x, y);
    Vec mean0 = neighbour_mean(tween.to0, before.to0, part, x, y);
    if (borrows && a.empty()) {
        a = negated(b);
        mean1 = {-mean0.x, -mean0.y};
    } else if (borrows && b.empty()) {
        b = negated(a);
        mean0 = {-mean1.x, -mean1.y};
    }
    if (state == 1) {
        choose_alone(a, mean1, tween.weights.smoothness, tween.to1.at(x, y));
    } else if (state == 2) {
        choose_alone(b, mean0, tween.weights.smoothness, tween.to0.at(x, y));
    } else if (state == 0) {  // what stayed unknown chooses nothing
        choose_pair(tween, x, y, a, b, mean1, mean0);
    }
}

enum Word : unsigned { kRestart = 0x2, kHoles = 0x4, kOccluded = 0x8, kProgress = 0x10 };

/// Whether one of the vectors that this pixel needs is there.
bool has_needed(const Tween& tween, int x, int y) {
    const int state = tween.map.at(x, y);
    return (state != 1 && tween.to1.at(x, y).valid()) || (state != 2 && tween.to0.at(x, y).valid());
}

}  // namespace

void temporal_candidates(Tween& tween) {
    tween.lists1.assign(area(tween.w, tween.h), {});
    tween.lists0.assign(area(tween.w, tween.h), {});
    project(tween, tween.backward, tween.lists0, 1.0F - tween.t);
    project(tween, tween.forward, tween.lists1, tween.t);
}

void tween_pass(Tween& tween, const Parts& parts) {
    if ((tween.word & kRestart) != 0) {
        tween.monitor1.first = tween.monitor0.first = true;
        tween.monitor1.run(tween.to1);
        tween.monitor0.run(tween.to0);
    }
    tween.word &= ~static_cast<unsigned>(kRestart | kProgress);
    const Before before{tween.to1, tween.to0};
    const bool holes = (tween.word & kHoles) != 0, occluded = (tween.word & kOccluded) != 0;
    each_part(parts, tween.h, [&](Rows rows) {
        for (int y = rows.begin; y < rows.end; ++y) {
            Random random{tween.pass};
            for (int x = 0; x < tween.w; ++x) {
                if (holes && has_needed(tween, x, y)) continue;
                if (occluded && tween.map.at(x, y) == 0) continue;
                choose(tween, before, rows, x, y, random);
                if (holes && has_needed(tween, x, y)) tween.word |= kProgress;
            }
        }
    });
    if (tween.pass == 0) {
        for (List& list : tween.lists1) list.clear();
        for (List& list : tween.lists0) list.clear();
    }
    tween.monitor1.run(tween.to1);
    tween.monitor0.run(tween.to0);
    ++tween.pass;
}

void iterate_candidates(Tween& tween, const Parts& parts) {
    for (int i = 0; i < tween.iterations; ++i) tween_pass(tween, parts);
    if ((tween.flags & 0x10U) == 0) return;
    const auto fill_holes = [&] {
        tween.word |= kRestart | kHoles;
        int passes = 0;
        do {
            tween_pass(tween, parts);
            ++passes;
        } while (passes < 101 && (tween.word & kProgress) != 0);
        return passes;
    };
    const int passes = fill_holes();
    tween.word = (tween.word | kRestart | kOccluded) & ~static_cast<unsigned>(kHoles);
    for (int i = 0; i < passes; ++i) tween_pass(tween, parts);
    tween.word &= ~static_cast<unsigned>(kOccluded);
    fill_holes();
}

void run_tween(Tween& tween, const Parts& parts) {
    const bool guesses = (tween.flags & 0x10U) != 0;
    if ((tween.flags & 0x4U) == 0) tween.map = States(tween.w, tween.h, guesses ? 666 : 0);
    tween.to1 = tween.to0 = Field(tween.w, tween.h, {kInvalid, kInvalid});
    temporal_candidates(tween);
    if (guesses) guess_occlusions(tween);
    iterate_candidates(tween, parts);
}

}  // namespace flow_model
