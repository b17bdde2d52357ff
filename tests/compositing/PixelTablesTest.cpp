// SPDX-License-Identifier: Apache-2.0
// The nine tables of functions of one pixel against the model, and what the tables hold.
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// The three tables of a depth, and their getters.
template <class Pixel> struct XferTables;
#define QX_TABLES_OF(Pixel, suffix)                                           \
    template <> struct XferTables<Pixel> {                                    \
        static constexpr auto& none = QXp_G_Xfer1_table##suffix;              \
        static constexpr auto& one = QXp_G_Xfer1_Opacity_table##suffix;       \
        static constexpr auto& two = QXp_G_Xfer1_Opacity2_table##suffix;      \
        static constexpr auto get_none = &QX_Get_Xfer1_table##suffix;         \
        static constexpr auto get_one = &QX_Get_Xfer1_Opacity_table##suffix;  \
        static constexpr auto get_two = &QX_Get_Xfer1_Opacity2_table##suffix; \
    };
QX_TABLES_OF(QX_Pixel8, 8)
QX_TABLES_OF(QX_Pixel16, 16)
QX_TABLES_OF(QX_PixelFloat, F)
#undef QX_TABLES_OF

template <class Pixel> class PixelTables : public testing::Test {
protected:
    using Tables = XferTables<Pixel>;
    using Channel = QX_ChannelOf<Pixel>;

    static Pixel called(const model::PixelCall<Pixel>& call, const Pixel& src, Pixel dst) {
        const auto& [xfer, one, two, tables] = call;
        if (!one) Tables::get_none(xfer)(&src, tables, &dst);
        if (one && !two) Tables::get_one(xfer)(&src, tables, *one, &dst);
        if (two) Tables::get_two(xfer)(&src, tables, *one, *two, &dst);
        return dst;
    }

    /// One case of a mode over pixels of these fills.
    static void hold_to_model(const model::PixelCall<Pixel>& call, FillKind src_kind, FillKind dst_kind,
                              std::uint64_t seed) {
        constexpr std::size_t n = 700;
        std::vector<Pixel> src(n), dst(n);
        fill_pixels<Pixel>(src, src_kind, seed);
        fill_pixels<Pixel>(dst, dst_kind, seed + 1);
        for (std::size_t i = 0; i < n; ++i) {
            const Pixel expected = model::one_pixel(call, src[i], dst[i]), got = called(call, src[i], dst[i]);
            ASSERT_TRUE(same_pixel(expected, got))
                << name_of(call.xfer) << (call.tables ? ", linear" : "") << ", opacities "
                << (call.opacity ? +*call.opacity : -1) << ' ' << (call.opacity2 ? +*call.opacity2 : -1) << ", seed "
                << seed << ": " << src[i] << " on " << dst[i] << " gives " << got << ", not " << expected;
        }
    }
};
TYPED_TEST_SUITE(PixelTables, AllDepths);

TYPED_TEST(PixelTables, FunctionsAreTheModels) {
    using Call = model::PixelCall<TypeParam>;
    using Channel = QX_ChannelOf<TypeParam>;
    const Born born(1);
    const QX_LinearBlendingTables gamma = tables_of_gamma(2.2f);
    constexpr Channel full = kFull<TypeParam>;
    const auto most = static_cast<Channel>(full * 3 / 4), little = static_cast<Channel>(full / 100);
    for (int xfer = 0; xfer <= kQX_LastMode; ++xfer) {
        std::uint64_t seed = 1;
        for (const QX_LinearBlendingTables* tables : {decltype(&gamma){}, &gamma}) {
            const Call calls[] = {{xfer, {}, {}, tables},        {xfer, full, {}, tables},
                                  {xfer, most, {}, tables},      {xfer, little, {}, tables},
                                  {xfer, Channel{}, {}, tables}, {xfer, full, full, tables},
                                  {xfer, most, full, tables},    {xfer, full, most, tables},
                                  {xfer, most, most, tables},    {xfer, most, little, tables}};
            for (const auto& [call, src, dst] : each(calls, kAllFills, kAllFills)) {
                this->hold_to_model(call, src, dst, seed += 2);
            }
        }
    }
}

/// What a getter gives is the table's entry; the place behind the modes is empty.
TYPED_TEST(PixelTables, GettersReadTheTables) {
    const auto compare = [](const auto& table, const auto& getter) {
        for (int xfer = 0; xfer <= kQX_LastMode; ++xfer) EXPECT_EQ(table[xfer], getter(xfer)) << xfer;
        EXPECT_TRUE(std::size(table) == 42 && table[41] == nullptr && getter(41) == nullptr);
    };
    using Tables = XferTables<TypeParam>;
    compare(Tables::none, Tables::get_none);
    compare(Tables::one, Tables::get_one);
    compare(Tables::two, Tables::get_two);
}

}  // namespace
}  // namespace qx::test
