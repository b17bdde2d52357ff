// SPDX-License-Identifier: Apache-2.0
// A world's pixels into another one, through a frame and back, beside the plain copy; and that way without the copy.
#include <cstring>

#include "QX/world/QX_VideoFrameFactory.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;
namespace Factory = vn::qx::VideoFrameFactory;

std::unique_ptr<QX_World> through_a_frame(QX_World& world, bool flip) {
    const auto frame = Factory::CreateFromQXWorld(&world, {kQX_BT709_RGB_Full}, flip, nullptr);
    return std::unique_ptr<QX_World>(Factory::CreateFromIVideoFrame(frame));
}

void add(int depth) {
    const auto add_work = [&](const char* name, const auto& work) {
        add_bench("frame", name, depth, ProcessorLevel::widest, [=](benchmark::State& state) {
            be_born(ProcessorLevel::widest);
            const auto src = new_frame(depth), dst = new_frame(depth);
            for (auto _ : state) {
                work(*src, *dst);
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
        });
    };
    add_work("memcpy", [](QX_World& src, QX_World& dst) { std::memcpy(dst.data, src.data, frame_bytes(src)); });
    add_work("copy", [](QX_World& src, QX_World& dst) { dst.CopyWorld(through_a_frame(src, false).get()); });
    add_work("copy-flipped", [](QX_World& src, QX_World& dst) { dst.CopyWorld(through_a_frame(src, true).get()); });
    add_work("there-and-back", [](QX_World& src, QX_World&) { through_a_frame(src, false); });
}

[[maybe_unused]] const bool added = (add(8), add(16), add(32), true);

}  // namespace
