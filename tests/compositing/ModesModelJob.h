// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "tests/compositing/ModesModelScale.h"

/// A mode at an integer depth by itself, without the passes around it.
namespace qx::test::model {

/// What a mode is run with. Source alpha is multiplied by `first`, then by `second`: mask and opacity in rows, the two
/// opacities in functions of one pixel. An absent one is full, which changes nothing.
struct Job {
    int xfer;
    I first, second;
    bool of_rows;
    bool rgb_only = false;
    std::uint32_t* seed = nullptr;
    std::optional<I> covered = {};  ///< the effective alpha, where it is made before the mode

    I effective(const Scale& k, I alpha) const { return covered ? *covered : k.mul(k.mul(alpha, first), second); }
};

/// The mode on a destination that its filter has seen.
Px mode_alone(const Scale& k, const Job& job, const Px& src, const Px& dst);

}  // namespace qx::test::model
