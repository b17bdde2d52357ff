// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "QX/world/QX_UnoBuffer.h"
#include "scene/effects/Effect.h"

// Masks of one channel, made from pictures.
namespace qx::scene {

/// As commands and scenes describe one.
struct Mask {
    std::optional<SceneFile> file;
    static constexpr int kKindOfFile = -1;
    int kind = kKindOfFile;  ///< in kMaskKinds; of the file: alpha, or luma where that has none
    Track<2> at{Track<2>::Value{0, 0}};
    bool invert = false;
    Track<1> opacity{Track<1>::Value{1}}, feather{Track<1>::Value{0}};
    int passes = 1;  ///< an index: one, or three
    int how = 0;     ///< in kMaskOperators

    Keys keys();
};

using UnoBuffer = std::unique_ptr<QX_UnoBuffer, int (*)(QX_UnoBuffer*)>;

/// A buffer for a canvas of this size, all 0: of 8 bits for depth 8, else of 16.
UnoBuffer new_mask_buffer(int width, int height, int depth, const Moment& moment);

/// Draws a mask, feathers, inverts and fades it, and combines it with what there is.
/// @param first  it takes the place of what there is
void add_mask(const Mask& mask, bool first, const Canvas& canvas, QX_UnoBuffer& total, const Moment& moment,
              pictures::Watch& watch);

}  // namespace qx::scene
