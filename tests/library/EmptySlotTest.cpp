// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "tests/support/Test.h"

#include <optional>

namespace {

using namespace qx::test;

/// Exported names that go through a slot.
const std::pair<const char*, std::function<int()>> kForwarders[] = {
    {"transfer",
     [] { return QX_TransferRect(nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr); }},
    {"premultiply", [] { return QX_PremulRect(nullptr, true, nullptr, nullptr); }},
    {"iterate", [] { return QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"iterate from an origin",
     [] { return QX_IterateOrigin(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"iterate a table",
     [] { return QX_IterateLUT(nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"iterate anything", [] { return QX_IterateGeneric(1, nullptr, nullptr); }},
    {"draft copy", [] { return QX_CopyBits_Draft(nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"copy", [] { return QX_CopyBits_HQ_Straight(nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"premultiplied copy", [] { return QX_CopyBits_HQ_Premul(nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"sample", [] { return QX_SubpixelSampleNoClip_Straight(nullptr, 0, 0, nullptr, nullptr); }},
    {"area", [] { return QX_AreaSample_Straight(nullptr, 0, 0, nullptr, nullptr); }},
    {"deep area", [] { return QX_AreaSample_Straight16(nullptr, 0, 0, nullptr, nullptr); }},
    {"row matte", [] { return QX_BlackMatte(nullptr, 0, nullptr, nullptr); }},
};

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
