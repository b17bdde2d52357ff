// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <half.h>

#include "tests/pictures/Support.h"

namespace qx::test {

/// A half channel of 10 x 5 samples with these windows, all of one value.
class Samples {
public:
    void add(Imf::Header& header, const std::string& name, float value, int first = 0) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        planes_.emplace_back(50, half(value));
        auto* base = reinterpret_cast<char*>(planes_.back().data() - first);
        buffer.insert(name, Imf::Slice(Imf::HALF, base, sizeof(half), 10 * sizeof(half)));
    }
    Imf::FrameBuffer buffer;

private:
    std::vector<std::vector<half>> planes_;
};

}  // namespace qx::test
