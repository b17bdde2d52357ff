// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Pixels.h"
#include "opticalflow/src/Texture.h"
#include "tests/opticalflow/FlowSupport.h"
#include "tests/support/Test.h"

/// The engine's textures beside the model's.
namespace qx::test {

namespace of = solvan_of;
namespace scenes = flow_model::scenes;

template <class Pixel> void read_frame(const Frame& frame, of::FnTexture<Pixel>& to) {
    ASSERT_TRUE(to.allocate(frame.w, frame.h));
    to.setAddressing(of::Addressing::clamp, of::Addressing::clamp);
    for (const auto& [x, y] : places(frame.w, frame.h)) {
        const auto& c = frame.read(x, y);
        using Channel = typename Pixel::Channel;
        to.at(x, y) = Pixel{{static_cast<Channel>(c[0]), static_cast<Channel>(c[1]), static_cast<Channel>(c[2]),
                             static_cast<Channel>(c[3])}};
    }
}
template <class From, class Pixel> void read_texture(const From& from, of::FnTexture<Pixel>& to) {
    static_assert(sizeof(Pixel) == sizeof from.px[0]);
    ASSERT_TRUE(to.allocate(from.w, from.h));
    std::memcpy(to.row(0), from.px.data(), from.px.size() * sizeof(Pixel));
}
template <class To, class Pixel> To model_of(const of::FnTexture<Pixel>& from) {
    To to(from.width(), from.height());
    std::memcpy(static_cast<void*>(to.px.data()), from.row(0), to.px.size() * sizeof(Pixel));
    return to;
}

}  // namespace qx::test
