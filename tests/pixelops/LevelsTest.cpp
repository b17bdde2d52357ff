// SPDX-License-Identifier: Apache-2.0
// Rows of every level against the plain ones, and stores past the caches against those that stay in them.
#include "QX/indep/QX_Area.h"
#include "tests/support/Test.h"
#include "tests/support/TestLevels.h"

namespace {

using namespace qx::test;

/// A call on two worlds of the same size, remade from a seed.
struct Case {
    std::uint64_t seed;
    std::mt19937_64 random{seed};
    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
    const int op = below(4), from = kDepths[below(3)], to = op == 0 ? kDepths[below(3)] : from;
    const int width = below(4) != 0 ? 1 + below(67) : below(3000), height = 1 + below(4);
    const int left = below(5), right = below(5);  ///< columns beside those that are worked on
    const std::uint64_t fill = random();
};

template <class Pixel> void fill(QX_LayerDef& record, std::uint64_t seed) {
    for (int y = 0; y < record.height; ++y) {
        const auto kind = static_cast<FillKind>((seed + static_cast<std::uint64_t>(y)) % std::size(kAllFills));
        const std::span pixels(qx::row_of<Pixel>(record, y), static_cast<std::size_t>(record.width));
        fill_pixels<Pixel>(pixels, kind, seed + static_cast<std::uint64_t>(y));
    }
}

/// The bytes of both worlds after the call.
std::vector<std::uint8_t> run(Case c) {
    Canvas src{c.from, c.left + c.width + c.right, c.height, 4 * c.below(5)};
    Canvas dst{c.to, src.width, c.height, 4 * c.below(5)};
    for (Canvas* canvas : {&src, &dst}) {
        const std::uint64_t seed = c.fill + (canvas == &dst);
        if (canvas->depth == 8) fill<QX_Pixel8>(*canvas->world, seed);
        if (canvas->depth == 16) fill<QX_Pixel16>(*canvas->world, seed);
        if (canvas->depth == 32) fill<QX_PixelFloat>(*canvas->world, seed);
    }
    const M_LRect rect{c.left, 0, c.left + c.width, c.height};
    QX_LayerDef from{}, to{};
    src.world->FillOutEffectWorld(&from);
    dst.world->FillOutEffectWorld(&to);
    const QX_PixelFloat colour{1, 0.9f, 0.3f, 0.02f};
    if (c.op == 0) dst.world->CopyRectPossiblyDifferentBitdepth(src.world.get(), rect, false, c.left, 0, nullptr);
    if (c.op == 1) QX_FillFloat(nullptr, &colour, &rect, &to);
    if (c.op > 1) QX_PremulColorRectFloat(nullptr, &from, &colour, c.op == 2, &rect, &to);
    src.memory.insert(src.memory.end(), dst.memory.begin(), dst.memory.end());
    return src.memory;
}

using Made = std::vector<std::vector<std::uint8_t>>;
Made made_at(standalone::ProcessorLevel level, std::size_t cache) {
    const Born born(1, level);
    standalone::SetCacheBytes(cache);
    Made made;
    for (const std::uint64_t seed : seeds(6000)) {
        const Case c{seed};  // GCC's sanitizers would draw in another order in a brace of the call
        made.push_back(run(c));
    }
    standalone::SetCacheBytes(0);
    return made;
}

class PixelRows : public AtLevel {};
QX_AT_LEVELS(PixelRows, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
             standalone::ProcessorLevel::widest);

TEST_P(PixelRows, LevelsAndCachesMakeNoDifference) {
    const Made plain = made_at(standalone::ProcessorLevel::plain, 0);
    const Made vector = made_at(standalone::ProcessorLevel::vector, 0);
    const Made others[] = {made_at(standalone::ProcessorLevel::plain, 1), made_at(GetParam(), 0),
                           made_at(GetParam(), 1)};
    std::size_t i = 0;
    for (const std::uint64_t seed : seeds(6000)) {
        const Case c{seed};
        // Without the vector unit rows of floats round to 8 bits by a rule of their own.
        const bool differs = c.from == 32 && c.to == 8;
        for (const Made& other : others) {
            if (differs && &other == others) continue;
            EXPECT_EQ(other[i], differs ? vector[i] : plain[i])
                << "seed " << seed << ", form " << &other - others << ": " << c.op << ", " << c.from << " to " << c.to
                << " bits, " << c.width << " columns";
        }
        ++i;
    }
}

}  // namespace
