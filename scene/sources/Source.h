// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "scene/SceneFile.h"

// What a layer shows, before its effects.
namespace qx::scene {

struct SceneLayer;

/// A picture at the scene's depth and in its space.
using Shown = std::shared_ptr<const pictures::Picture>;

/// What a source shows; null where that is nothing.
struct Piece {
    Shown picture;
    int x = 0, y = 0;  ///< where its left top corner lies, seen from that of the layer
};

/// What a source may ask for while a frame is made.
struct SourceMoment {
    int frame = 0;
    int width = 0, height = 0;  ///< of what the layer is laid onto
    int depth = 8;
    std::string subject;  ///< what failures are told about
    /// What a file shows at the frame. @param matte  colour that its pixels were mixed with; may be null
    std::function<Shown(const SceneFile& file, const QX_PixelFloat* matte)> file;
    /// Lays layers onto a picture.
    std::function<void(const std::vector<SceneLayer>& layers, pictures::Picture& onto)> composite;
    /// Tells the user what is to be known.
    std::function<void(const std::string& note)> note;
    pictures::Watch& watch;
};

/// Told once, then used by any number of threads.
class Source {
public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// Whether it shows other pictures in other frames.
    virtual bool moves() const = 0;
    /// Throws Stopped, pictures::Failure or WorkFault.
    virtual Piece picture(const SourceMoment& moment) const = 0;
    /// The file that it shows; null for what is made.
    virtual const SceneFile* file() const { return nullptr; }
    /// The layers that it is made of; null for what is no group.
    virtual const std::vector<SceneLayer>* layers() const { return nullptr; }
    virtual const QX_PixelFloat* matte() const { return nullptr; }
};

}  // namespace qx::scene
