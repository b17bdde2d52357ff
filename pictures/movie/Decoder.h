// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pictures/movie/Colours.h"
#include "pictures/movie/Index.h"

namespace qx::movie {

/// A movie that is read: any frame by its number, as it would come out of decoding all from the first on.
class Decoder {
public:
    Decoder(const char* file, int threads, std::int64_t most_bytes);
    Facts facts() const;
    const std::vector<std::string>& notes() const { return index_.notes; }
    /// @param note  gets what is to be said of the frame
    void read(std::int64_t frame, unsigned char* pixels, std::ptrdiff_t rowbytes, std::string& note);

private:
    void open_codec(int threads);
    void look_at_first_frame();
    void count_frames();

    bool feed();         ///< the next packet to the decoder. @return false behind the last
    bool next_frame();   ///< into `frame_`. @return false at the end
    void begin_again();  ///< at the start of the file
    bool begin_at(const Index::Key& key);
    bool go_on_to(std::int64_t stamp);  ///< @return false if that frame does not come
    void show(std::int64_t frame);      ///< decodes it into `frame_`

    void check_size(std::int64_t frame) const;
    Conversion conversion() const;
    void convert(unsigned char* pixels, std::ptrdiff_t rowbytes);

    std::int64_t most_pixels_;
    std::unique_ptr<Demuxer> movie_;
    std::string time_code_;  ///< empty for none
    Index index_;
    Codec codec_;
    Packet packet_;
    Frame frame_, converted_;
    Scaler scaler_;
    std::optional<Conversion> scaled_;  ///< what the scaler is made for
    std::vector<std::int64_t> stamps_;
    Ratio time_base_{1, 1};  ///< of these

    // Of the first frame, which all others are to be like.
    int width_ = 0, height_ = 0, depth_ = 8;
    bool has_alpha_ = false, has_audio_ = false, rotated_ = false;
    Tags tags_{2, 2, 2, 0};
    Showing showing_{1, {1, 1}};

    // Where the decoder is.
    std::int64_t last_ = AV_NOPTS_VALUE;  ///< stamp, or number, of what is in `frame_`; none after a new beginning
    std::int64_t given_ = 0;              ///< frames since then
    std::size_t fed_ = 0;                 ///< order of the next packet, where stamps tell it
    bool draining_ = false;
};

}  // namespace qx::movie
