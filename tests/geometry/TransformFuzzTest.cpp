// SPDX-License-Identifier: Apache-2.0
// Random small transforms, for the sanitizers.
// Matrices of any kind, also degenerate, huge and with perspective; rectangles, masks, fields, modes and motions. What
// must hold: no fault, no undefined behaviour, code 0, and nothing changes outside the rectangle or in skipped rows.
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
        const auto all = places(width, height);
        return std::all_of(all.begin(), all.end(), [&](const M_LPoint& p) {
            const bool drawn = holds(rect, p.x, p.y) && (call.field == 0 || p.y % 2 != call.field % 2);
            return drawn || dst.at(p.x, p.y) == start.at(p.x, p.y);
        });
    }
    int below(int n) { return static_cast<int>(random_() % static_cast<std::uint64_t>(n)); }

private:
    int size() { return 1 + below(14); }
    int place() { return below(24) - 8; }
    FillKind kind() { return static_cast<FillKind>(below(5)); }

    double element() {
        const double unit = std::uniform_real_distribution<double>(-2, 2)(random_);
        const auto kind = static_cast<std::size_t>(below(24));
        const bool odd = below(8) == 0;
        const double special[] = {unit * 1e9, unit * 1e-9, 0, unit * 30000, odd ? NAN : 1.0, odd ? INFINITY : -1.0};
        return kind < std::size(special) ? special[kind] : unit;
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
    const int depth = c.below(3);
    if (depth == 0) return c.runs<QX_Pixel8>();
    return depth == 1 ? c.runs<QX_Pixel16>() : c.runs<QX_PixelFloat>();
}

TEST(RandomTransforms, StayWithinTheirRectangle) {
    const Born born;
    for (const std::uint64_t seed : seeds(30000)) EXPECT_TRUE(runs(seed)) << "seed " << seed;
}

}  // namespace
}  // namespace qx::test
