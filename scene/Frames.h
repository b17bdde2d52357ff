// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace qx::scene {

inline constexpr int kMostFrame = 9'999'999;

/// Frames by number, `step` apart; `last` itself may be left out by the step.
struct FrameRange {
    int first = 0, last = 0, step = 1;
    int count() const { return (last - first) / step + 1; }
    int frame(int index) const { return first + index * step; }
};

/// "A", "A-B" or "A-BxSTEP". Throws BadText.
FrameRange frame_range(const std::string& text);

/// A file's name with a place for the number of a frame: #### or %04d, as many digits at least as signs or as told.
class FramePattern {
public:
    FramePattern() = default;
    /// Only the last part of the path is looked at. Throws BadText for two places.
    explicit FramePattern(const std::string& path);
    static FramePattern plain(const std::string& path);  ///< without a place, whatever signs the path has
    bool has_place() const { return digits_ > 0; }
    std::string name(int frame) const;                            ///< without a place the path itself
    std::optional<int> number_in(const std::string& path) const;  ///< of a frame that has this name

private:
    std::string before_, after_;
    int digits_ = 0;
};

}  // namespace qx::scene
