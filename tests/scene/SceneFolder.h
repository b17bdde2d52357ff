// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Scenes of a few layers in a folder of pictures.
#include "scene/SceneRender.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace qx::test {

class SceneFolder : public InFolder {
protected:
    static constexpr int kWidth = 40, kHeight = 30;
    const Born library{8};

    /// A picture of the frame's size, of any colours and alphas.
    void paint(const std::string& name, int seed) const {
        write(name, kWidth, kHeight,
              [=](int x, int y) { return argb(x * y + 90 * seed, 7 * x + seed, 5 * y * seed, 3 * x + y); });
    }
    /// @param layers  with ' for ", commas between them
    scene::Scene scene_of(const std::string& layers, const std::string& more = "") const {
        put_quoted("scene.json", "{'size': [" + std::to_string(kWidth) + ", " + std::to_string(kHeight) +
                                     "], 'background': [0, 0, 0, 0]" + more + ", 'layers': [" + layers + "]}");
        return scene::read_scene(folder / "scene.json");
    }
    static pictures::Picture frame(const scene::Scene& scene, int number = 1) {
        return scene::SceneRender(scene, nullptr).frame(number, pictures::unwatched());
    }
    /// What a scene of these layers shows.
    pictures::Picture shown(const std::string& layers, int number = 1, const std::string& more = "") const {
        return frame(scene_of(layers, more), number);
    }
    /// Rows "layers => words": each has a fault with the words.
    void expect_faults(const Names& rows) const {
        for (const std::string& row : rows) {
            const auto [layers, words] = halves(row);
            EXPECT_HOLDS(fault_of<pictures::Failure>([&, text = layers] { scene_of(text); }), words) << row;
        }
    }
};

}  // namespace qx::test
