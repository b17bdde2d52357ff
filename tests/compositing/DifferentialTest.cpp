// SPDX-License-Identifier: Apache-2.0
// The long random run of forms against each other: every form of a compositing kernel against its plain form, on cases
// that a seed remakes.
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/TransferSupport.h"

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
using Levels = std::vector<LevelKernels>;  ///< all that this processor has, plain first

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

template <class Pixel> struct Rows { std::vector<Pixel> src, mask, dst; };

template <class Pixel> Rows<Pixel> make_rows(const Case& c) {
    const auto size = static_cast<std::size_t>(c.count + 2 * kGuard + 16);
    Rows<Pixel> rows{std::vector<Pixel>(size), std::vector<Pixel>(size), std::vector<Pixel>(size)};
    fill_pixels<Pixel>(rows.src, c.src, c.seed);
    fill_pixels<Pixel>(rows.mask, FillKind::layer, c.seed + 1);
    fill_pixels<Pixel>(rows.dst, c.dst, c.seed + 2);
    return rows;
}

template <class Pixel>
void run_kernel(const Case& c, const Kernels<Pixel>& k, const Rows<Pixel>& rows, std::vector<Pixel>& dst) {
    const QX_BlendingMode<Pixel> mode(QX_CompositeModePlus(c.number, static_cast<float>(c.opacity), nullptr, c.rgb_only,
                                                           static_cast<int>(c.seed & 0xFFFF)));
    const Pixel* src = rows.src.data() + kGuard + c.src_offset;
    const Pixel* mask = rows.mask.data() + kGuard + (c.src_offset ^ 1);
    Pixel* to = dst.data() + kGuard + c.dst_offset;
    if (c.kernel == Kernel::row)
        k.row[c.number + 3][c.masked](c.count, &mode, nullptr, src, c.masked ? mask : nullptr, to);
    if (c.kernel == Kernel::filter) k.filter[c.number](c.count, c.masked ? src : nullptr, to);
    if (c.kernel == Kernel::merge) k.merge(c.count, src, mode.opacity, c.masked ? mask : nullptr, to);
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
    const Rows<Pixel> rows = make_rows<Pixel>(c);
    const std::size_t begin = static_cast<std::size_t>(kGuard + c.dst_offset);
    const std::size_t end = begin + static_cast<std::size_t>(c.count);
    std::vector<Pixel> expected;
    for (const LevelKernels& level : levels) {
        std::vector<Pixel> dst = rows.dst;
        run_kernel<Pixel>(c, std::get<Kernels<Pixel>>(level.kernels), rows, dst);
        if (expected.empty()) expected = dst;  // the plain level comes first
        for (std::size_t i = 0; i < dst.size(); ++i) {
            const bool outside = i < begin || i >= end;
            const Pixel& wanted = outside ? rows.dst[i] : expected[i];
            if (dst[i] == wanted) continue;
            std::ostringstream text;
            text << level.name << (outside ? " wrote outside the row at " : " differs at ")
                 << static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(begin) << ": " << dst[i]
                 << " instead of " << wanted << " in " << describe(c);
            return text.str();
        }
    }
    return "";
}

Case random_case(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::uint64_t n) { return static_cast<int>(random() % n); };
    constexpr double opacities[] = {1, 0, 0.5, 0.999, 0.004};
    Case c{.seed = seed, .depth = 8 << below(3)};
    c.kernel = below(4) != 0 ? Kernel::row : below(2) != 0 ? Kernel::filter : Kernel::merge;
    c.masked = below(2) != 0;
    c.number = c.kernel == Kernel::row ? below(42) - 1 : below(6);
    if (c.kernel == Kernel::row && c.number == -1) c.number = c.masked ? -2 : -3;
    c.rgb_only = below(4) == 0;
    c.opacity = opacities[below(5)];
    c.src = kAllFills[below(6)], c.dst = kAllFills[below(6)];
    c.count = below(3) != 0 ? below(68) : below(5000);
    c.src_offset = below(8), c.dst_offset = below(8);
    return c;
}

std::string run_case(const Levels& levels, const Case& c) {
    if (c.depth == 8) return run_at_depth<QX_Pixel8>(levels, c);
    return c.depth == 16 ? run_at_depth<QX_Pixel16>(levels, c) : run_at_depth<QX_PixelFloat>(levels, c);
}

TEST(Differential, FormsAgreeAtEveryLevel) {
    Levels levels;
    constexpr const char* names[] = {"plain", "SSE4.1", "AVX2"};
    for (int level = 0; level <= static_cast<int>(standalone::DetectedProcessorLevel()); ++level) {
        const Born born(1, static_cast<standalone::ProcessorLevel>(level));
        levels.push_back(
            {names[level], {kernels_now<QX_Pixel8>(), kernels_now<QX_Pixel16>(), kernels_now<QX_PixelFloat>()}});
    }
    const Born born(1);  // for the tables that the kernels read
    for (const std::uint64_t seed : seeds(40000)) EXPECT_EQ(run_case(levels, random_case(seed)), "");
}

}  // namespace
}  // namespace qx::test
