// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "pictures/Files.h"
#include "pictures/Picture.h"
#include "pictures/Watch.h"

namespace qx::pictures {

/// One file format: how it is recognised, and what reads and writes it.
struct Format {
    const char* name;
    std::vector<std::string> magics;      ///< first bytes of its files
    std::vector<std::string> extensions;  ///< in lower case
    std::vector<int> depths;              ///< that its files hold, in rising order; none where it is only read
    bool holds_alpha;
    bool linear;               ///< meant for linear light
    std::size_t most_profile;  ///< bytes that its files hold of an ICC profile
    /// Gives pixels as the file has them, neither turned nor made straight, 16 bits from 0 to 65535; `associated` and
    /// `in_file` tell what they are. Without `options.pixels` it gives what else it has to tell.
    Picture (*read)(InputFile& file, const ReadOptions& options, Watch& watch);
    /// `picture` has one of the depths above; 16 bits go from 0 to 65535. `with_alpha` is false when all of it is
    /// opaque and may stay so. Null where it is only read.
    void (*write)(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch);
    bool (*is)(const InputFile& file) = nullptr;  ///< where first bytes alone do not tell
    std::span<const char* const> packings = {};   ///< ways to pack its files, where there is a choice
    int first_lossy_packing = 1 << 30;            ///< from there on they change values
};

/// True once the system has refused memory: how a library's failure is known to come from that, whatever it says.
/// `read_picture` and `write_picture` begin with a clear record.
inline bool memory_ran_out() { return errno == ENOMEM; }

const Format& png_format();
const Format& jpeg_format();
const Format& tiff_format();
const Format& exr_format();
const Format& radiance_format();
/// Formats that are only read, by the module of movies.
std::vector<const Format*> further_formats();

/// Room for the pixels of a file, of a size and depth that its head tells, with these in `in_file`. Throws Failure for
/// what no world can be. @return false when no pixels are asked for: there is no room then
bool make_room(const std::string& path, std::int64_t width, std::int64_t height, int depth, const ReadOptions& options,
               Watch& watch, Picture& picture);

/// The format that a name's ending tells. Throws Failure.
const Format& format_to_write(const std::string& path);

/// What a job's mark is kept by, or begins with where a file has no keys.
inline constexpr const char* kMarkKey = "qx-job";
inline constexpr unsigned kMostMark = 80;  ///< bytes of it with its key

}  // namespace qx::pictures
