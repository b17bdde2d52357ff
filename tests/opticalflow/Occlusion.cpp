// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {
namespace {

int seen_by_lists(Tween& tween, int x, int y) {
    if ((tween.flags & 0x10U) == 0) return 0;
    const bool a = tween.list1(x, y).empty(), b = tween.list0(x, y).empty();
    return a && b ? 3 : a ? 2 : b ? 1 : 0;
}

constexpr int kNeighbours[8][2] = {{-1, 1}, {-1, 0}, {-1, -1}, {0, 1}, {0, -1}, {1, 1}, {1, 0}, {1, -1}};

}  // namespace

bool guess_occlusion(Tween& tween) {
    bool changed = false;
    std::array<int, 8> votes{};  // what each neighbour's place voted last
    for (int y = 0; y < tween.h; ++y) {
        for (int x = 0; x < tween.w; ++x) {
            int& state = tween.map.at(x, y);
            if (state < 3) continue;
            changed = true;
            if (state > 3) {
                state = seen_by_lists(tween, x, y);
                continue;
            }
            int count1 = 0, count2 = 0;
            for (std::size_t i = 0; i < 8; ++i) {
                const int nx = x + kNeighbours[i][0], ny = y + kNeighbours[i][1];
                if (!tween.map.has(nx, ny)) continue;
                const int neighbour = tween.map.at(nx, ny);
                if (neighbour <= 2) votes[i] = neighbour;
                count1 += votes[i] == 1;
                count2 += votes[i] == 2;
            }
            if (count1 != count2) state = count1 > count2 ? 1 : 2;
        }
    }
    return changed;
}

bool smooth_occlusion(Tween& tween) {
    bool changed = false;
    for (int y = 0; y < tween.h; ++y) {
        for (int x = 0; x < tween.w; ++x) {
            int ones = 0, twos = 0, zeros = 0;
            for (int ny = y - 1; ny <= y + 1; ++ny) {
                for (int nx = x - 1; nx <= x + 1; ++nx) {
                    if (tween.map.has(nx, ny))
                        ++(tween.map.at(nx, ny) == 1 ? ones : tween.map.at(nx, ny) == 2 ? twos : zeros);
                }
            }
            const int state = tween.map.at(x, y);
            int next = state;
            if (state == 0) {
                next = ones > zeros && ones > twos ? 1 : twos > zeros && twos > ones ? 2 : 0;
            } else if (state == 1) {
                next = ones < zeros ? 0 : ones < twos ? 2 : 1;
            } else {
                next = zeros > twos ? 0 : ones > twos ? 1 : state;
            }
            changed |= next != state;
            tween.map.at(x, y) = next;
        }
    }
    return changed;
}

void blank_occlusion(Tween& tween) {
    const auto blank = [&](int x, int y, std::vector<List>& near, std::vector<List>& far) {
        List& own = near[place(tween.w, x, y)];
        if (own.empty()) return;
        const Vec v = own[0];
        own.clear();
        int qx = 0, qy = 0;
        if (v.valid()) {
            qx = whole(real(x) + 0.5F - v.x + 0.5F).index;
            qy = whole(real(y) + 0.5F + v.y + 0.5F).index;
        }
        if (!tween.map.has(qx, qy) || far[place(tween.w, qx, qy)].empty()) return;
        const Vec end = far[place(tween.w, qx, qy)][0];
        List& other = far[place(tween.w, x, y)];
        other.clear();
        if (end.valid()) other.push_back(end);
    };
    for (int y = 0; y < tween.h; ++y) {
        for (int x = 0; x < tween.w; ++x) {
            if (tween.map.at(x, y) == 1) blank(x, y, tween.lists1, tween.lists0);
            if (tween.map.at(x, y) == 2) blank(x, y, tween.lists0, tween.lists1);
        }
    }
}

void guess_occlusions(Tween& tween) {
    bool changed = guess_occlusion(tween);
    for (int i = 0; i < 10 && changed; ++i) changed = guess_occlusion(tween);
    changed = smooth_occlusion(tween);
    for (int i = 0; i < tween.occlusion_rounds - 1 && changed; ++i) changed = smooth_occlusion(tween);
    blank_occlusion(tween);
}

}  // namespace flow_model
