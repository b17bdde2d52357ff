// SPDX-License-Identifier: Apache-2.0
#include <type_traits>
#include <utility>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/world/QX_IteratePixels.h"

namespace {

/// Alpha and blue change places, and red and green do. Floats move as bits, so that a NaN stays as it is.
template <class Pixel> void reverse(const QX_LayerDef& world) {
    using Own = QX_ChannelOf<Pixel>;
    using Channel = std::conditional_t<std::is_same_v<Own, float>, std::uint32_t, Own>;
    qx::for_each_row<Channel>(world, qx::whole_of(world), 4 * sizeof(Channel),
                              [](qx::Loose<Channel>* row, std::size_t columns) {
                                  for (std::size_t i = 0; i < 4 * columns; i += 4) {
                                      std::swap(row[i], row[i + 3]);
                                      std::swap(row[i + 1], row[i + 2]);
                                  }
                              });
}

}  // namespace

void QX_IteratePixels(QX_World* world) {
    qx::must_have_depth(
        world->Depth(), qx::Place::iterate_pixels, [&]<class Pixel>() { reverse<Pixel>(*world); },
        "Unexpected bitdepth in QX_IteratePixels()");
}
