// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_World.h"

namespace {

constexpr int kPlace = 60;

/// Alpha and blue change places, and red and green do.
template <class Channel> void reverse(const QX_LayerDef& world) {
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
    switch (world->Depth()) {
        case 8:
            return reverse<std::uint8_t>(*world);
        case 16:
            return reverse<std::uint16_t>(*world);
        case 32:
            return reverse<std::uint32_t>(*world);  // bits, so that a NaN stays as it is
        default:
            throw qx::report_failed_verification(kPlace, "Unexpected bitdepth in QX_IteratePixels()");
    }
}
