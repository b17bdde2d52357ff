// SPDX-License-Identifier: Apache-2.0
// Rows in linear light at every level of processors: what they look up, and which stretches they need not blend.
#include "QX/compositing/QX_LinearLookup.h"
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/TransferSupport.h"
#include "tests/support/TestLevels.h"

namespace qx::test {
namespace {

/// Tables that a caller may bring: entries in no order, so that a lookup at a wrong place shows.
QX_LinearBlendingTables tables_without_order(std::uint64_t seed) {
    auto tables = tables_of_gamma(1.8f);
    std::mt19937_64 random(seed);
    for (auto& entry : tables.to_linear) entry = static_cast<std::uint16_t>(random() % 32769);
    for (auto& entry : tables.from_linear) entry = static_cast<std::uint16_t>(random() % 32769);
    return tables;
}

template <class Pixel>
void linear_row_of(int xfer, float opacity, const QX_LinearBlendingTables& tables, std::span<const Pixel> src,
                   const Pixel* mask, Pixel* dst) {
    QX_RowFunc<Pixel> row = nullptr;
    ASSERT_EQ(lookup_slot<Pixel>(mask != nullptr, true)(xfer, &row), 0);
    const QX_BlendingMode<Pixel> mode(mode_of(xfer, opacity));
    ASSERT_EQ(row(static_cast<std::int32_t>(src.size()), &mode, &tables, src.data(), mask, dst), 0);
}

class LinearForms : public AtLevel {};
QX_AT_LEVELS(LinearForms, standalone::ProcessorLevel::plain, standalone::ProcessorLevel::vector,
             standalone::ProcessorLevel::faster, standalone::ProcessorLevel::widest);

/// A pixel that alone shows goes into linear light and back, whatever the tables make of it: an opaque source, a graded
/// one over nothing, the destination under a clear source. With every value in every colour, against the lookups of
/// one number.
template <class Pixel> void expect_passed(const QX_LinearBlendingTables& tables) {
    using D = DepthOf<Pixel>;
    using Channel = QX_ChannelOf<Pixel>;
    constexpr int full = D::full;
    std::vector<Pixel> codes, expected, clear(full + 1), dst;
    for (int c = 0; c <= full; ++c) {
        codes.push_back({static_cast<Channel>(1 + c % (full - 1)), static_cast<Channel>(c),
                         static_cast<Channel>(full - c), static_cast<Channel>(c * 5 % (full + 1))});
        expected.push_back(from_linear<D>(tables, to_linear<D>(tables, codes.back())));
    }
    fill_pixels<Pixel>(clear, FillKind::clear, 1);
    const auto expect = [&](const char* what) {
        SCOPED_TRACE(what);
        const auto [made, wanted] = std::mismatch(dst.begin(), dst.end(), expected.begin());
        if (made != dst.end()) ADD_FAILURE() << *made << " instead of " << *wanted << " at " << made - dst.begin();
    };
    linear_row_of<Pixel>(xfer_over, 1, tables, codes, nullptr, (dst = clear).data());
    expect("graded over nothing");
    if constexpr (full == 32768) {  // beyond the scale: kept where nothing is drawn
        for (std::size_t i = 0; i < codes.size(); i += 3) codes[i].alpha = expected[i].alpha = 40000;
    }
    for (const int xfer : {xfer_multiply, xfer_over}) {
        linear_row_of<Pixel>(xfer, 1, tables, clear, nullptr, (dst = codes).data());
        expect("under a clear source");
    }
    for (std::size_t i = 0; i < codes.size(); ++i) {
        expected[i].alpha = full;
        codes[i].alpha = full == 32768 && i % 3 == 0 ? 40000 : full;
    }
    linear_row_of<Pixel>(xfer_over, 1, tables, codes, nullptr, dst.data());
    expect("opaque");
}

TEST_P(LinearForms, WhatAloneShowsPassesLinearLight) {
    const Born born(1, GetParam());
    for (const auto& tables : {tables_of_gamma(2.2f), tables_without_order(1)}) {
        expect_passed<QX_Pixel8>(tables);
        expect_passed<QX_Pixel16>(tables);
    }
}

/// One random row in linear light; long ones have an opaque and a clear stretch somewhere.
template <class Pixel> std::vector<Pixel> random_row(std::uint64_t seed, std::string& what) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    const std::vector<int> modes = modes_from(kQX_FirstMode);
    const int xfer = modes[below(modes.size())];
    const bool masked = xfer == xfer_mask_crossfade || below(2) != 0;
    const float opacity = std::array{1.0f, 1.0f, 0.5f, 0.004f, 0.0f, 1.9f}[below(6)];
    const std::size_t count = below(3) != 0 ? 300 + below(500) : below(68);
    std::vector<Pixel> src(count), mask(count), dst(count);
    for (auto* row : {&src, &mask, &dst}) {
        fill_pixels<Pixel>(*row, below(4) != 0 ? FillKind::layer : FillKind::edges, random());
        for (const FillKind kind : {FillKind::opaque, FillKind::clear}) {
            const std::size_t begin = below(count + 1), length = std::min(count - begin, below(300));
            fill_pixels<Pixel>(std::span(*row).subspan(begin, length), kind, random());
        }
    }
    what = name_of(xfer) + (masked ? " masked" : "") + " opacity " + std::to_string(opacity) + " seed " +
           std::to_string(seed);
    const auto tables = below(2) != 0 ? tables_of_gamma(2.2f) : tables_without_order(seed);
    linear_row_of<Pixel>(xfer, opacity, tables, src, masked ? mask.data() : nullptr, dst.data());
    return dst;
}

template <class Pixel> void expect_as_plain(standalone::ProcessorLevel level) {
    std::string what;
    std::map<std::uint64_t, std::vector<Pixel>> expected;
    {
        const Born born(1, standalone::ProcessorLevel::plain);
        for (const std::uint64_t seed : seeds(1500)) expected[seed] = random_row<Pixel>(seed, what);
    }
    const Born born(1, level);
    for (const auto& [seed, wanted] : expected) {
        const std::vector<Pixel> made = random_row<Pixel>(seed, what);
        const auto [at, other] = std::mismatch(made.begin(), made.end(), wanted.begin(), same_pixel<Pixel>);
        if (at != made.end()) {
            ADD_FAILURE() << *at << " instead of " << *other << " at " << at - made.begin() << " in " << what;
        }
    }
}

class LinearLevels : public AtLevel {};
QX_AT_LEVELS(LinearLevels, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
             standalone::ProcessorLevel::widest);

TEST_P(LinearLevels, AgreeWithThePlainOne) {
    expect_as_plain<QX_Pixel8>(GetParam());
    expect_as_plain<QX_Pixel16>(GetParam());
    expect_as_plain<QX_PixelFloat>(GetParam());
}

}  // namespace
}  // namespace qx::test
