// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "pictures/movie/Colours.h"
#include "pictures/movie/Module.h"

namespace qx::movie {

/// A picture that has been decoded from the bytes of its file.
class DecodedStill {
public:
    /// Throws Failure, std::bad_alloc.
    DecodedStill(StillKind kind, const unsigned char* bytes, std::int64_t count, std::int64_t most_bytes);
    /// A, R, G, B of `facts.depth`.
    void read(unsigned char* pixels, std::ptrdiff_t rowbytes);
    Still facts{};

private:
    void open_decoder(AVCodecID id, std::int64_t most_pixels);
    void decode(const unsigned char* bytes, std::int64_t count);
    bool some_pixel_is_clear() const;
    template <class Value> void read_row(const AVPixFmtDescriptor& kind, int y, unsigned char* to);
    void look_up(unsigned char* to) const;
    void read_converted(unsigned char* pixels, std::ptrdiff_t rowbytes);

    Codec codec_;
    Frame frame_;
    std::vector<std::uint16_t> samples_;
};

}  // namespace qx::movie
