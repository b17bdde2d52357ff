// SPDX-License-Identifier: Apache-2.0
// The nine tables of functions of one pixel against the model, and what the tables hold.
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// The three tables of a depth with their getters, for no opacity, one and two.
template <class Pixel> constexpr auto kTables = 0;
#define QX_TABLES_OF(Pixel, suffix)                                                          \
    template <>                                                                              \
    constexpr auto kTables<Pixel> =                                                          \
        std::tuple{&QXp_G_Xfer1_table##suffix,          &QX_Get_Xfer1_table##suffix,         \
                   &QXp_G_Xfer1_Opacity_table##suffix,  &QX_Get_Xfer1_Opacity_table##suffix, \
                   &QXp_G_Xfer1_Opacity2_table##suffix, &QX_Get_Xfer1_Opacity2_table##suffix};
QX_TABLES_OF(QX_Pixel8, 8)
QX_TABLES_OF(QX_Pixel16, 16)
QX_TABLES_OF(QX_PixelFloat, F)
#undef QX_TABLES_OF

template <class Pixel> class PixelTables : public testing::Test {};
TYPED_TEST_SUITE(PixelTables, AllDepths);

/// What a getter gives is the table's entry, and computes what the model does; the place behind the modes is empty.
TYPED_TEST(PixelTables, FunctionsAreTheModels) {
    using Channel = QX_ChannelOf<TypeParam>;
    const Born born(1);
    const QX_LinearBlendingTables gamma = tables_of_gamma(2.2f);
    constexpr Channel full = kFull<TypeParam>;
    const auto most = static_cast<Channel>(full * 3 / 4), little = static_cast<Channel>(full / 100);
    const auto& [none, get_none, one, get_one, two, get_two] = kTables<TypeParam>;
    EXPECT_TRUE(std::size(*none) == 42 && std::size(*one) == 42 && std::size(*two) == 42);
    EXPECT_TRUE(!get_none(41) && !get_one(41) && !get_two(41) && !(*none)[41] && !(*one)[41] && !(*two)[41]);
    using Opacity = std::optional<Channel>;
    const std::pair<Opacity, Opacity> opacities[] = {
        {},           {full, {}},   {most, {}},   {little, {}}, {Channel{}, {}},
        {full, full}, {most, full}, {full, most}, {most, most}, {most, little}};
    std::vector<TypeParam> src(700), start(src.size());
    for (int xfer = 0; xfer <= kQX_LastMode; ++xfer) {
        const auto plain = get_none(xfer);
        const auto faded = get_one(xfer);
        const auto twice = get_two(xfer);
        EXPECT_TRUE((*none)[xfer] == plain && (*one)[xfer] == faded && (*two)[xfer] == twice) << xfer;
        std::uint64_t seed = 1;
        for (const auto& [linear, by, over, under] : each(std::array{false, true}, opacities, kAllFills, kAllFills)) {
            fill_pixels<TypeParam>(src, over, seed += 2);
            fill_pixels<TypeParam>(start, under, seed + 1);
            const auto& [first, second] = by;
            const auto* tables = linear ? &gamma : nullptr;
            for (std::size_t i = 0; i < src.size(); ++i) {
                const TypeParam expected = model::one_pixel<TypeParam>(
                    {xfer, first.value_or(full), second.value_or(full)}, tables, src[i], start[i]);
                TypeParam got = start[i];
                if (!first) plain(&src[i], tables, &got);
                if (first && !second) faded(&src[i], tables, *first, &got);
                if (second) twice(&src[i], tables, *first, *second, &got);
                ASSERT_TRUE(same_pixel(expected, got))
                    << name_of(xfer) << (linear ? ", linear" : "") << ", opacities " << (first ? +*first : -1) << ' '
                    << (second ? +*second : -1) << ": " << src[i] << " on " << start[i] << " gives " << got << ", not "
                    << expected;
            }
        }
    }
}

}  // namespace
}  // namespace qx::test
