// SPDX-License-Identifier: Apache-2.0
// Beside a report's text the host hears which argument is at fault.
#include <utility>
#include <vector>

#include "QX/QX.h"
#include "platform/standalone/Host.h"
#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

namespace {

using namespace qx::test;

TEST(ReportDetail, TellsTheArgumentAtFaultOnce) {
    const Born library(1);
    std::vector<std::pair<std::string, std::string>> told;
    standalone::SetReportSink(
        [&](const standalone::Report& report) { told.emplace_back(report.text, standalone::ReportDetail()); });
    const std::unique_ptr<QX_World> eight(QX_World::New(4, 4, 8, 1)), sixteen(QX_World::New(4, 4, 16, 1));
    QX_LayerDef a{}, b{};
    eight->FillOutEffectWorld(&a);
    sixteen->FillOutEffectWorld(&b);
    QX_MaskWorld mask{a, 0, 0, 0};
    const QX_CompositeModePlus over(xfer_over, 1, nullptr, false, 0);
    const M_LRect whole{0, 0, 4, 4};
    const auto transfer = [&](QX_LayerDef* from, const QX_MaskWorld* by, QX_LayerDef* to) {
        return QX_TransferRect(nullptr, 0, 0, 0, &whole, from, &over, nullptr, by, 0, 0, to);
    };
    EXPECT_EQ(transfer(&a, nullptr, &b), 3);
    EXPECT_EQ(transfer(&b, &mask, &b), 3);
    EXPECT_EQ(transfer(nullptr, nullptr, &b), 3);
    EXPECT_EQ(QX_Blend_Straight(nullptr, &a, &b, 0, &a), 3);
    EXPECT_EQ(QX_DisposeEffectWorld(nullptr), 516);  // one that tells no argument, and hears of none before it
    standalone::SetReportSink({});
    ASSERT_EQ(told.size(), 5u);
    EXPECT_EQ(told[0].first, "QX_TransferRect requires src and dst worlds to have same bit depth");
    EXPECT_EQ(told[0].second, "source depth 8, destination 16");
    EXPECT_EQ(told[1].second, "mask depth 8, destination 16");
    EXPECT_EQ(told[2].second, "source is missing");
    EXPECT_EQ(told[3].second, "src2 depth 16, destination 8");
    EXPECT_EQ(told[4].second, "");
}

}  // namespace
