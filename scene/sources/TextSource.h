// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "scene/Kept.h"
#include "scene/Keyframes.h"
#include "scene/LayerRead.h"
#include "scene/sources/SetText.h"
#include "scene/sources/Source.h"

namespace qx::scene {

/// Lines of text of one colour, as large as they are.
class TextSource final : public Source {
public:
    /// Throws pictures::Failure.
    TextSource(const TextChoice& choice, Track<4> colour) : text_(choice), colour_(std::move(colour)) {}

    bool moves() const override { return colour_.moves(); }
    Piece picture(const SourceMoment& moment) const override;

private:
    const SetText text_;
    const Track<4> colour_;  ///< alpha first
    mutable Kept<std::vector<unsigned char>> coverage_;
};

/// Throws SceneFault, or pictures::Failure.
std::shared_ptr<const Source> read_text(const SceneNode& layer, const ReadContext& context);

}  // namespace qx::scene
