// SPDX-License-Identifier: Apache-2.0
// The long random run of forms against each other: every form of a compositing kernel against its plain form, on cases
// that a seed remakes.
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/TransferSupport.h"
#include "tests/support/TestLevels.h"

namespace qx::test {
namespace {

/// The kernels as the table of routines has them at one processor level.
template <class Pixel> struct Kernels {
    QX_RowFunc<Pixel> row[44][2];  ///< by mode number + 3 and mask
    QX_FilterFunc<Pixel> filter[6];
    QX_MergeFunc<Pixel> merge;
};
struct LevelKernels {
    std::string name;
    std::tuple<Kernels<QX_Pixel8>, Kernels<QX_Pixel16>, Kernels<QX_PixelFloat>> kernels;
};
using Levels = std::vector<LevelKernels>;  ///< plain first

enum class Kernel { row, filter, merge };

struct Case {
    std::uint64_t seed = 0;
    int depth = 8;
    Kernel kernel = Kernel::row;
    int number = 0;  ///< mode of a row, place of a filter
    bool masked = false, rgb_only = false;
    double opacity = 1;
    FillKind src = FillKind::random, dst = FillKind::random;
    int count = 0, src_offset = 0, dst_offset = 0;  ///< offsets in pixels from a 64-byte boundary
};

constexpr int kGuard = 64;  // pixels before and behind a row; keeps the row's start on a 64-byte boundary

template <class Pixel> Kernels<Pixel> kernels_now() {
    Kernels<Pixel> kernels{};
    for (int i = 0; i < 6; ++i) kernels.filter[i] = filter_slot<Pixel>(i);
    kernels.merge = slot<SlotsOf<Pixel>.merge>();
    for (const auto& [xfer, masked] : each(modes_from(kQX_FirstMode), std::array{0, 1})) {
        lookup_slot<Pixel>(masked != 0, false)(xfer, &kernels.row[xfer + 3][masked]);
    }
    return kernels;
}

template <class Pixel>
void run_kernel(const Case& c, const Kernels<Pixel>& k, const Pixel* src, const Pixel* mask, Pixel* dst) {
    QX_CompositeModePlus record = mode_of(c.number, static_cast<float>(c.opacity), c.rgb_only);
    record.rand_seed = static_cast<std::int32_t>(c.seed & 0xFFFF);
    const QX_BlendingMode<Pixel> mode(record);
    const Pixel* const covers = c.masked ? mask : nullptr;
    if (c.kernel == Kernel::row) k.row[c.number + 3][c.masked](c.count, &mode, nullptr, src, covers, dst);
    if (c.kernel == Kernel::filter) k.filter[c.number](c.count, c.masked ? src : nullptr, dst);
    if (c.kernel == Kernel::merge) k.merge(c.count, src, mode.opacity, covers, dst);
}

std::string describe(const Case& c) {
    std::ostringstream text;
    constexpr const char* kernels[] = {"row", "filter", "merge"};
    constexpr const char* fills[] = {"random", "opaque", "clear", "extremes", "layer", "edges"};
    text << kernels[static_cast<int>(c.kernel)] << " " << c.number << " depth " << c.depth
         << (c.masked ? " masked" : "") << (c.rgb_only ? " rgb-only" : "") << " opacity " << c.opacity << " "
         << fills[static_cast<int>(c.src)] << " on " << fills[static_cast<int>(c.dst)] << " count " << c.count
         << " offsets " << c.src_offset << ", " << c.dst_offset << " seed " << c.seed;
    return text.str();
}

/// @return what differs from the plain form, or what was written outside the row
template <class Pixel> std::string run_at_depth(const Levels& levels, const Case& c) {
    std::vector<Pixel> src(static_cast<std::size_t>(c.count + 2 * kGuard + 16)), mask = src, start = src, expected;
    fill_pixels<Pixel>(src, c.src, c.seed);
    fill_pixels<Pixel>(mask, FillKind::layer, c.seed + 1);
    fill_pixels<Pixel>(start, c.dst, c.seed + 2);
    const int from = kGuard + c.src_offset, begin = kGuard + c.dst_offset;
    for (const LevelKernels& level : levels) {
        std::vector<Pixel> dst = start;
        run_kernel<Pixel>(c, std::get<Kernels<Pixel>>(level.kernels), &src[from], &mask[from ^ 1], &dst[begin]);
        if (expected.empty()) {  // the plain level comes first
            expected = start;
            std::copy_n(dst.begin() + begin, c.count, expected.begin() + begin);
        }
        const auto [made, wanted] = std::mismatch(dst.begin(), dst.end(), expected.begin());
        if (made == dst.end()) continue;
        std::ostringstream text;
        text << level.name << " makes " << *made << " instead of " << *wanted << " at " << made - dst.begin() - begin
             << " in " << describe(c);
        return text.str();
    }
    return "";
}

Case random_case(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::uint64_t n) { return static_cast<int>(random() % n); };
    constexpr double opacities[] = {1, 0, 0.5, 0.999, 0.004, 1.9};
    Case c{.seed = seed, .depth = 8 << below(3)};
    c.kernel = below(4) != 0 ? Kernel::row : below(2) != 0 ? Kernel::filter : Kernel::merge;
    c.masked = below(2) != 0;
    c.number = c.kernel == Kernel::row ? below(42) - 1 : below(6);
    if (c.kernel == Kernel::row && c.number == -1) c.number = c.masked ? -2 : -3;
    c.rgb_only = below(4) == 0;
    c.opacity = opacities[below(6)];
    c.src = kAllFills[below(6)], c.dst = kAllFills[below(6)];
    c.count = below(3) != 0 ? below(68) : below(5000);
    c.src_offset = below(8), c.dst_offset = below(8);
    return c;
}

std::string run_case(const Levels& levels, const Case& c) {
    if (c.depth == 8) return run_at_depth<QX_Pixel8>(levels, c);
    return c.depth == 16 ? run_at_depth<QX_Pixel16>(levels, c) : run_at_depth<QX_PixelFloat>(levels, c);
}

class Differential : public AtLevel {};
QX_AT_LEVELS(Differential, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
             standalone::ProcessorLevel::widest);

TEST_P(Differential, FormsAgreeWithThePlainOnes) {
    Levels levels;
    for (const auto level : {standalone::ProcessorLevel::plain, GetParam()}) {
        const Born born(1, level);
        levels.push_back({name_of_level({level, 0}),
                          {kernels_now<QX_Pixel8>(), kernels_now<QX_Pixel16>(), kernels_now<QX_PixelFloat>()}});
    }
    const Born born(1);  // for the tables that the kernels read
    for (const std::uint64_t seed : seeds(40000)) EXPECT_EQ(run_case(levels, random_case(seed)), "");
}

}  // namespace
}  // namespace qx::test
