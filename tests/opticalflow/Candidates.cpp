// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <utility>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

int Random::next() {
    const std::uint32_t first = state * 1103515245U + 12345U, second = first * 1103515245U + 12345U;
    state = second;
    return static_cast<int>(((second >> 16) & 255U) ^ (((first >> 16) & 255U) << 7));
}

List filtered(const List& list) {
    List out;
    for (const Vec& v : list) {
        if (v.valid() && std::find(out.begin(), out.end(), v) == out.end()) out.push_back(v);
    }
    return out;
}

void shuffle(List& list, Random& random) {
    if (list.empty()) return;
    const int n = static_cast<int>(list.size());
    for (int times = (n - 1) / 2 + 1; times > 0; --times) {
        const auto i = static_cast<std::size_t>(random.next() % n);
        const auto k = static_cast<std::size_t>(random.next() % n);
        std::swap(list[i], list[k]);
    }
}

void shuffle_each(List& list, Random& random) {
    const int n = static_cast<int>(list.size());
    for (int i = 0; i < n; ++i) {
        const auto k = static_cast<std::size_t>(random.next() % n);
        std::swap(list[static_cast<std::size_t>(i)], list[k]);
    }
}

Vec neighbour_mean(const Field& now, const Field& before, Rows part, int x, int y) {
    static constexpr int offsets[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}};
    Vec sum;
    int n = 0;
    for (const auto& [dx, dy] : offsets) {
        if (!now.has(x + dx, y + dy)) continue;
        const Vec v = (part.has(y + dy) ? now : before).at(x + dx, y + dy);
        if (!v.valid_parts()) continue;
        sum.x += v.x;
        sum.y += v.y;
        ++n;
    }
    return n == 0 ? Vec{} : Vec{sum.x / real(n), sum.y / real(n)};
}

Vec neighbour_mean(const Field& field, int x, int y) { return neighbour_mean(field, field, {0, field.h}, x, y); }

void Monitor::run(const Field& field) {
    saw_invalid = false;
    if (first) {
        map = States(field.w, field.h, 1);
        saved = field;
        first = false;
        return;
    }
    all = false;
    for (int y = 0; y < field.h; ++y) {
        for (int x = 0; x < field.w; ++x) {
            const Vec v = field.at(x, y);
            if (!v.valid_parts()) saw_invalid = true;
            const bool same = v == saved.at(x, y);
            map.at(x, y) = same ? 0 : 1;
            if (!same) saved.at(x, y) = v;
        }
    }
}

List Monitor::candidates(int x, int y) const {
    static constexpr int offsets[8][2] = {{-1, 1}, {0, 1}, {1, 1}, {-1, 0}, {1, 0}, {-1, -1}, {0, -1}, {1, -1}};
    List out;
    for (const auto& [dx, dy] : offsets) {
        if (map.has(x + dx, y + dy) && (all || map.at(x + dx, y + dy) != 0)) out.push_back(saved.at(x + dx, y + dy));
    }
    return out;
}

Weights weights_of(float balance) { return balance < 0 ? Weights{1 - balance, 1} : Weights{1, balance + 1}; }

}  // namespace flow_model
