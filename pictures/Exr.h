// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ImathBox.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pictures/ExrTasks.h"
#include "pictures/Format.h"

// OpenEXR, half and float: linear light with associated alpha, which becomes straight here and associated again on
// the way out. Half or float is a matter of the file; a picture of it has float pixels.
namespace qx::pictures {

struct ExrAttributes {
    Imf::Header header;
};

struct ExrWindow {
    Imath::Box2i display, data;          ///< the picture is what the first shows
    bool has_alpha;                      ///< the file has a channel for it
    std::vector<QX_PixelFloat> outside;  ///< pixels of the second outside of the first, as in the file and in its order
};

/// What of a row of the data window lies in the display window: columns from the data window's left side on.
struct Columns {
    std::size_t begin, end;
};
inline Columns shown(const Imath::Box2i& data, const Imath::Box2i& display, int y) {
    const std::int64_t columns = std::int64_t{data.max.x} - data.min.x + 1;
    const auto column = [&](std::int64_t x) {
        return static_cast<std::size_t>(std::clamp<std::int64_t>(x - data.min.x, 0, columns));
    };
    if (y < display.min.y || y > display.max.y)
        return {static_cast<std::size_t>(columns), static_cast<std::size_t>(columns)};
    return {column(display.min.x), column(display.max.x + std::int64_t{1})};
}

/// What the library needs once, for all threads: its types, which it registers one by one, so that there is no second
/// try after a want of memory, and a limit without which a header alone could claim gigabytes of tables.
void start_library();

/// Of the library's numbers, from 0 on.
inline constexpr const char* kExrPackings[] = {"none",  "rle", "zips", "zip",  "piz",
                                               "pxr24", "b44", "b44a", "dwaa", "dwab"};

/// Attributes that tell of the pixels as they lie in the file, or are written from elsewhere.
bool is_own_attribute(const std::string& name);

/// Rows of a data window on their way, as many as the library has blocks for all threads, within some megabytes. Not
/// cleared, so that a false claim costs no memory.
template <class Pixel> class Lines {
public:
    explicit Lines(const Imath::Box2i& window)
        : left_(window.min.x),
          columns_(static_cast<std::size_t>(std::int64_t{window.max.x} - window.min.x + 1)),
          rows_(std::clamp(static_cast<int>(kMostBytes / (columns_ * sizeof(Pixel))), kBlock,
                           2 * kBlock * std::max(exr_threads(), 1))),
          pixels_(std::make_unique_for_overwrite<Pixel[]>(columns_ * static_cast<std::size_t>(rows_))) {}
    int rows() const { return rows_; }
    int top() const { return top_; }
    void begin_at(int top) { top_ = top; }
    Pixel* first() const { return pixels_.get(); }
    std::size_t columns() const { return columns_; }
    Pixel* row(int y) const { return first() + static_cast<std::size_t>(y - top_) * columns_; }
    /// The channel of all pixels that `channel` is of the first.
    template <class Channel> Imf::Slice slice(Imf::PixelType type, Channel* channel, double fill) const {
        return Imf::Slice::Make(type, channel, Imath::V2i(left_, top_), static_cast<std::int64_t>(columns_), rows_,
                                sizeof(Pixel), columns_ * sizeof(Pixel), 1, 1, fill);
    }

private:
    static constexpr int kBlock = 16;  // rows of the usual packing
    static constexpr std::size_t kMostBytes = std::size_t{1} << 26;
    const int left_;
    const std::size_t columns_;
    const int rows_;
    const std::unique_ptr<Pixel[]> pixels_;
    int top_ = 0;
};

Picture read_exr(InputFile& file, const ReadOptions& options, Watch& watch);
void write_exr(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch);

}  // namespace qx::pictures
