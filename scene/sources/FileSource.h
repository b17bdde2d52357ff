// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "scene/sources/Source.h"

namespace qx::scene {

/// A picture, a sequence or a clip.
class FileSource final : public Source {
public:
    /// @param matte  colour that the file's pixels were mixed with, which is undone
    explicit FileSource(SceneFile file, const std::optional<QX_PixelFloat>& matte = {})
        : file_(std::move(file)), matte_(matte) {}

    bool moves() const override { return file_.moves(); }
    Piece picture(const SourceMoment& moment) const override { return {moment.file(file_, matte())}; }
    const SceneFile* file() const override { return &file_; }
    const QX_PixelFloat* matte() const override { return matte_ ? &*matte_ : nullptr; }

private:
    const SceneFile file_;
    const std::optional<QX_PixelFloat> matte_;
};

}  // namespace qx::scene
