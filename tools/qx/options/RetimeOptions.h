// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "scene/retime/Retimer.h"
#include "tools/qx/options/CacheOptions.h"
#include "tools/qx/options/FlowOptions.h"
#include "tools/qx/options/LongWorkOptions.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {

/// The command line of `qx retime`.
struct RetimeCommandOptions {
    CommonOptions common;
    ReadingOptions reading;
    EncodingOptions encoding;
    FlowOptions flow;
    CacheOptions cache;
    LongWorkOptions work;
    std::string input, output, in, in_rate, speed, rate, map, method, depth, cuts, on_cut, frames, start, audio, pairs,
        memory;
    bool gaps = false, lossless = false, json = false;

    /// What can be known without the clip. Throws WrongUsage.
    void check() const;
    bool input_is_pictures() const;
    bool output_is_movie() const;
    int start_number() const;
    std::optional<scene::Rational> speed_number() const, rate_number() const;
    std::uint64_t memory_bytes() const;
    int pairs_number() const;  ///< 0: as many as threads and memory have room for
    bool drops_audio() const;
    /// What a result depends on beside its moment, by which those of this job are known again.
    std::string words() const;

    // These throw pictures::Failure too.
    std::unique_ptr<scene::Clip> open(std::uint64_t most_bytes, int threads, pictures::Watch& watch) const;
    scene::TimeMap time_map(const scene::Clip& clip) const;
    scene::RetimeOptions retime_options(const scene::Clip& clip) const;
    /// Of the results, the part that this machine makes.
    scene::FrameRange range(const scene::TimeMap& map) const;
};
void add_retime_options(CLI::App& command, RetimeCommandOptions& options);

}  // namespace qx::tool
