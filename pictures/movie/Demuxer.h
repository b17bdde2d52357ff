// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "pictures/movie/Libraries.h"

namespace qx::movie {

/// A file whose streams are known. @param most_pixels  of a frame, where the library looks for itself
Input open_movie(const char* file, std::int64_t most_pixels = INT64_MAX / 64);

inline constexpr const char* kNothingLeft = "is cut short, and nothing of it can be read";

/// The packets of a movie's video, in the order of decoding.
class Demuxer {
public:
    /// @param most_pixels  of a frame: more is refused before there is memory for it
    Demuxer(const char* file, std::int64_t most_pixels);
    AVFormatContext& format() const { return *format_; }
    AVStream& video() const { return *video_; }
    bool has_audio() const;
    /// Of the first frame, as hours:minutes:seconds:frames; null where no stream tells one.
    const char* time_code() const;
    const std::string& file() const { return file_; }

    /// Leaves packets of other streams unread.
    void read_video_alone();
    /// The next packet of any stream that is read. @return false at the end, and where damage ends the file
    bool next(AVPacket* packet);
    /// The same of the video.
    bool next_of_video(AVPacket* packet);
    bool is_damaged() const { return damaged_; }
    /// Bytes at the file's end that its container tells of; none where it does not tell.
    const std::optional<std::int64_t>& missing() const { return missing_; }
    bool is_cut() const { return missing_.value_or(0) > 0; }
    /// Throws that nothing of it can be used. @param words  why, where it is not cut off
    [[noreturn]] void refuse(const char* words) const { throw Failure(is_cut() ? kNothingLeft : words); }
    /// Goes to a packet that decoding can begin with, at the stamp or before it, as far as the container can tell.
    bool seek(std::int64_t stamp);

private:
    std::string file_;
    std::optional<std::int64_t> missing_;
    Input format_;
    AVStream* video_ = nullptr;
    bool damaged_ = false;
};

}  // namespace qx::movie
