// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>

namespace qx::scene {

/// What is the same in every frame of a size: made by the first that needs it, while others wait, and kept.
template <class Thing> class Kept {
public:
    /// What `make` throws is thrown, and nothing is kept.
    template <class Make> std::shared_ptr<const Thing> get(int width, int height, const Make& make) {
        const std::lock_guard lock(mutex_);
        if (!thing_ || width != width_ || height != height_) {
            thing_ = make();
            width_ = width;
            height_ = height;
        }
        return thing_;
    }

private:
    std::mutex mutex_;
    std::shared_ptr<const Thing> thing_;
    int width_ = 0, height_ = 0;
};

}  // namespace qx::scene
