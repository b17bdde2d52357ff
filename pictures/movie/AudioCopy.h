// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "pictures/movie/Libraries.h"
#include "pictures/movie/Module.h"

namespace qx::movie {

/// The audio of one movie on its way into another one, packets as they are.
class AudioCopy {
public:
    /// Adds streams to `target`, before its head is written, for those that its container takes.
    AudioCopy(const char* file, const Ratio& start, AVFormatContext& target);
    bool is_empty() const { return taken_ == 0; }
    /// What is to be said of streams that are left out; empty where all are taken.
    std::string note() const;
    /// Writes the packets that begin before this time of the target.
    void write_until(std::int64_t stamp, const AVRational& unit);
    void write_rest();

private:
    bool read();   ///< a packet that is taken, with the stamps of the target. @return false at the end
    void write();  ///< what was read

    AVFormatContext& target_;
    Input source_;
    std::vector<AVStream*> streams_;  ///< of the target for each of the source; null where it is left out
    std::vector<std::string> left_out_;
    Ratio start_;
    int taken_ = 0;
    Packet packet_;
    bool pending_ = false, ended_ = false;
};

}  // namespace qx::movie
