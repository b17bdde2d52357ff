// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pictures/movie/Demuxer.h"
#include "pictures/movie/Module.h"

namespace qx::movie {

/// Which frames a movie has, from one pass over its packets; nothing is decoded.
struct Index {
    struct Shown {
        std::int64_t stamp;
        std::size_t order;  ///< of its packet, as they are decoded
    };
    struct Key {
        std::int64_t stamp, decode_stamp;
        std::size_t order;
    };
    std::vector<Shown> frames;  ///< in rising order of stamps
    std::vector<Key> keys;      ///< where decoding can begin, in that order
    std::int64_t end = 0;       ///< of the last frame
    bool numbered = false;      ///< stamps do not tell the frames, which are counted as they come out of the decoder
    bool regular = false;
    /// Of a movie that is cut off, whose last frames have holes between them: the number of each one by the rate.
    std::vector<std::int64_t> places;
    Ratio rate{25, 1};
    bool is_cut = false;
    std::vector<std::string> notes;

    /// The last place from which the frame can be decoded, or null.
    const Key* key_for(const Shown& frame) const;
    const Shown* frame_at(std::int64_t stamp) const;  ///< or null
    /// Leaves out the frames before a stamp.
    void begin_at(std::int64_t stamp);
    /// Tells rate and end from the stamps, and whether they are regular.
    void find_rate(const AVStream& video, std::int64_t last_duration);
    /// Of all frames, and the end. @param unit  gets seconds of a unit of theirs
    std::vector<std::int64_t> stamps(const AVStream& video, Ratio* unit) const;
    /// Makes it one of so many frames that are numbered.
    void number(std::int64_t count, const AVStream& video);
};

/// Reads the file to its end. @param last_duration  gets that of the last frame, in stamps; 0 where it is not told
Index make_index(Demuxer& movie, std::int64_t* last_duration);

}  // namespace qx::movie
