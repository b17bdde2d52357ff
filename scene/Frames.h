// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qx::scene {

inline constexpr int kMostFrame = 9'999'999;

/// Frames by number, `step` apart, which is below 0 where they fall; `last` itself may be left out by the step.
struct FrameRange {
    int first = 0, last = 0, step = 1;
    int count() const { return (last - first) / step + 1; }
    int frame(int index) const { return first + index * step; }
};

/// "A", "A-B" or "A-BxSTEP". Throws BadText.
FrameRange frame_range(const std::string& text);

/// Frames in an order: ranges one behind the other. A frame may stand in several.
class FrameList {
public:
    /// @param ranges  at least one
    explicit FrameList(std::vector<FrameRange> ranges);
    FrameList(const FrameRange& range) : FrameList(std::vector<FrameRange>{range}) {}  // NOLINT: a range is a list
    int count() const { return ends_.back(); }
    int frame(int index) const;
    const std::vector<FrameRange>& ranges() const { return ranges_; }
    FrameList once() const;  ///< each where it first stands

private:
    std::vector<FrameRange> ranges_;
    std::vector<int> ends_;  ///< index behind each range
};

inline constexpr int kMostListed = 100'000'000;

/// "1,3,5-9x2", "-5--1", "9-1x2". Throws BadText.
FrameList frame_list(const std::string& text);

/// A file's name with a place for the number of a frame: #### with as many digits at least as signs, in front of which
/// a number below 0 has its sign, or %04d as printf takes it, where the sign counts.
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
    bool sign_counts_ = false;  ///< among the digits
};

}  // namespace qx::scene
