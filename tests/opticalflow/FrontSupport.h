// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/opticalflow/FlowSupport.h"
#include "tests/support/Test.h"

namespace qx::test {

namespace scenes = flow_model::scenes;

/// A pair of painted frames that nobody else has, and renders of it.
struct Shot {
    flow_model::Params params{.detail = 0.5f, .iterations = 2};
    Frame frames[2];
    OwnedWorld first, second, out;
    QX_Solvan_OtherParams other{};

    explicit Shot(int depth = 8, int w = 41, int h = 29, double dx = 3, double dy = -2) {
        static std::atomic<std::uint32_t> number{1000000};
        const scenes::Texture cloth = scenes::cloth(3, 20);
        frames[0] = scenes::painted(cloth, w, h, depth);
        frames[1] = scenes::painted(scenes::moved(cloth, dx, dy), w, h, depth);
        for (Frame& frame : frames)  // alpha of its own
            for (const auto& [x, y] : places(w, h)) frame.at(x, y)[0] = frame.stored(frame.read(x, y)[2] * 0.9f);
        first = world_of(frames[0]), second = world_of(frames[1]), out = world_of(Frame(w, h, depth));
        other.firstFrameId = id_of(number++);
        other.secondFrameId = id_of(number++);
        other.position = 0.3;
    }

    int render(const QX_Solvan_InterruptFuncs& interrupt = {}) {
        return QX_AdvancedFrameBlending(percentages_of(params), other, interrupt)
            .Render(first.get(), second.get(), out.get());
    }
    Frame result() const { return frame_of(*out); }
    /// What a render gives; the output is empty before.
    Frame rendered() {
        copy_frame(Frame(out->width, out->height, out->Depth()));
        EXPECT_EQ(render(), 0);
        return result();
    }
    void copy_frame(const Frame& frame) { out = world_of(frame); }
    Guid identity() const {
        return identity_of(QX_AdvancedFrameBlending(percentages_of(params), other, {}).algo(), other.firstFrameId,
                           other.secondFrameId);
    }
    bool is_cached() const { return cached_vectors(identity()).has_value(); }
    /// By the model, which has no cache.
    Frame expected(int bands) const {
        flow_model::Params p = params;
        take_fractions(QX_AdvancedFrameBlending(percentages_of(params), other, {}).algo(), p);
        const auto made =
            flow_model::render(frames[0], frames[1], out->width, out->height, other.position, p, {bands, false});
        EXPECT_EQ(made.code, 0);
        return made.frame;
    }
};

}  // namespace qx::test
