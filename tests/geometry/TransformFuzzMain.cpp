// SPDX-License-Identifier: Apache-2.0
// Random small transforms, for the sanitizers: qx_transforms [--count N] [--first SEED] [--seed SEED].
// Matrices of any kind, also degenerate, huge and with perspective; rectangles, masks, fields, modes and motions. What
// must hold: no fault, no undefined behaviour, code 0, and nothing changes outside the rectangle. A case that fails is
// printed with its seed, which reruns it alone.
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

class Case {
public:
    explicit Case(std::uint64_t seed) : random_(seed) {}

    template <class Pixel> bool runs() {
        TestWorld<Pixel> src(size(), size(), kind(), random_()), mask(size(), size(), FillKind::random, random_());
        const int width = size(), height = size();
        const std::uint64_t fill = random_();
        TestWorld<Pixel> dst(width, height, FillKind::layer, fill), start(width, height, FillKind::layer, fill);
        const QX_MaskWorld record = mask_at(*mask.record(), place(), place(), static_cast<std::uint32_t>(below(4)));
        const M_LRect rect{place(), place(), place() + 8, place() + 8};
        TransformCall call;
        call.matrices = matrices();
        call.quality = below(5) - 1;
        call.field = below(3);
        call.src2dst = below(2) == 0;
        call.mode = {below(44) - 3, below(3) == 0 ? 1.0f : 0.6f, nullptr, below(4) == 0, static_cast<int>(random_())};
        if (call.mode.xfer == -1) call.mode.xfer = xfer_over;
        call.mask = below(3) == 0 || call.mode.xfer == xfer_mask_crossfade ? &record : nullptr;
        call.rect = below(2) == 0 ? &rect : nullptr;
        if (call(src.record(), dst.record()) != 0) return false;
        const bool clears = call.mode.xfer == xfer_alpha_multiply || call.mode.xfer == xfer_alpha_multiply_luma;
        if (call.rect == nullptr || clears) return true;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool inside = x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
                if (!inside && std::memcmp(&dst.at(x, y), &start.at(x, y), sizeof(Pixel)) != 0) return false;
            }
        }
        return true;
    }
    int below(int n) { return static_cast<int>(random_() % static_cast<std::uint64_t>(n)); }

private:
    int size() { return 1 + below(14); }
    int place() { return below(24) - 8; }
    FillKind kind() { return static_cast<FillKind>(below(5)); }

    double element() {
        const double unit = std::uniform_real_distribution<double>(-2, 2)(random_);
        switch (below(24)) {
            case 0:
                return unit * 1e9;
            case 1:
                return unit * 1e-9;
            case 2:
                return 0;
            case 3:
                return unit * 30000;
            case 4:
                return below(8) == 0 ? std::numeric_limits<double>::quiet_NaN() : 1;
            case 5:
                return below(8) == 0 ? std::numeric_limits<double>::infinity() : -1;
            default:
                return unit;
        }
    }
    M_Matrix3 matrix() {
        M_Matrix3 m = placed(8, below(3) == 0 ? 0 : below(360), std::exp2(below(9) - 5), place(), place());
        const int changes = below(4);
        for (int i = 0; i < changes; ++i) m.m[below(3)][below(3)] = element();
        return m;
    }
    std::vector<M_Matrix3> matrices() {
        constexpr int counts[] = {1, 1, 1, 2, 2, 3, 5, 17};
        std::vector<M_Matrix3> list{matrix()};
        for (int more = counts[below(8)] - 1; more > 0; --more) {
            M_Matrix3 next = below(6) == 0 ? matrix() : list.back();
            next.m[2][0] += below(40) / 8.0;
            next.m[2][1] -= below(3);
            list.push_back(next);
        }
        return list;
    }

    std::mt19937_64 random_;
};

bool runs(std::uint64_t seed) {
    Case c(seed);
    switch (c.below(3)) {
        case 0:
            return c.runs<QX_Pixel8>();
        case 1:
            return c.runs<QX_Pixel16>();
        default:
            return c.runs<QX_PixelFloat>();
    }
}

}  // namespace
}  // namespace qx::test

int main(int argc, char** argv) {
    unsigned long long first = 1, count = 100000;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        const unsigned long long value = std::strtoull(argv[i + 1], nullptr, 10);
        if (option == "--count") count = value;
        if (option == "--first" || option == "--seed") first = value;
        if (option == "--seed") count = 1;
    }
    const qx::test::Born born;
    unsigned long long failed = 0;
    for (unsigned long long seed = first; seed < first + count; ++seed) {
        if (qx::test::runs(seed)) continue;
        std::printf("failed: qx_transforms --seed %llu\n", seed);
        ++failed;
    }
    std::printf("%llu of %llu transforms failed (seeds %llu to %llu)\n", failed, count, first, first + count - 1);
    return failed == 0 ? 0 : 1;
}
