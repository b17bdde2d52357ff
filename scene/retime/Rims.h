// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "QX/world/QX_World.h"

namespace qx::scene {

/// Pixels of a tweened picture that no vector reached, and how far around them it is to be replaced.
class Rims {
public:
    /// @param tweened  of opaque frames, where such pixels show by their alpha
    /// @param reach    pixels beside them that are replaced whole; over as many more this fades
    Rims(const QX_World& tweened, int reach);
    bool any() const { return any_; }
    /// Lays `mix` over the picture there. All have one depth and size.
    void mend(const QX_World& mix, QX_World& tweened) const;

private:
    template <class Pixel> void find(const QX_World& tweened);
    template <class Pixel> void lay(const QX_World& mix, QX_World& tweened) const;
    void spread();

    const int width_, height_, reach_;
    bool any_ = false;
    std::vector<std::uint8_t> distance_;  ///< to the nearest such pixel, along the longer axis; at most farthest()
    int farthest() const { return 2 * reach_ + 1; }
};

}  // namespace qx::scene
