// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "tests/support/Test.h"

#include <optional>

namespace {

using namespace qx::test;

/// Exported names that go through a slot, called with nothing.
template <auto Routine>
constexpr auto kWithNothing =
    []<class R, class... Args>(R (*)(Args...)) { return +[] { return int{Routine(Args{}...)}; }; }(Routine);
const Cases<Text, int (*)()> kForwarders = {{"transfer", kWithNothing<&QX_TransferRect>},
                                            {"premultiply", kWithNothing<&QX_PremulRect>},
                                            {"iterate", kWithNothing<&QX_Iterate>},
                                            {"iterate from an origin", kWithNothing<&QX_IterateOrigin>},
                                            {"iterate a table", kWithNothing<&QX_IterateLUT>},
                                            {"iterate anything", kWithNothing<&QX_IterateGeneric>},
                                            {"draft copy", kWithNothing<&QX_CopyBits_Draft>},
                                            {"copy", kWithNothing<&QX_CopyBits_HQ_Straight>},
                                            {"premultiplied copy", kWithNothing<&QX_CopyBits_HQ_Premul>},
                                            {"sample", kWithNothing<&QX_SubpixelSampleNoClip_Straight>},
                                            {"area", kWithNothing<&QX_AreaSample_Straight>},
                                            {"deep area", kWithNothing<&QX_AreaSample_Straight16>},
                                            {"row matte", kWithNothing<&QX_BlackMatte>}};

TEST(EmptySlots, AreToldAndNotCalled) {
    for (const bool born : {false, true}) {  // a table that nobody has filled, and one that a host has emptied
        const std::optional<Born> library = born ? std::optional<Born>(std::in_place, 4) : std::nullopt;
        std::fill_n(QXp_G_OverFuncs, kQX_SlotCount, nullptr);
        for (const auto& [name, call] : kForwarders) {
            Reports reports;
            EXPECT_EQ(call(), 3) << name;
            EXPECT_EQ(reports.all().size(), 1u) << name;
        }
    }
}

}  // namespace
