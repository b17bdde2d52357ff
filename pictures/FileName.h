// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace qx::pictures {

/// What a user names: a file; a part or a layer of an OpenEXR file, "FILE.exr:NAME", where no file has that whole name;
/// or standard input, "-".
struct FileName {
    std::string file;   ///< that is opened
    std::string layer;  ///< empty for the file's own picture
};
FileName named(const std::string& path);

/// The file of a name, be it there or not.
inline std::string file_of(const std::string& path) { return named(path).file; }

/// True where that file is there, as standard input always is.
bool is_there(const std::string& path);

/// When that file was last written, in nanoseconds since 1970; 0 for none, as for standard input.
std::int64_t changed_at(const std::string& path);

/// True for the name of standard input.
inline bool is_standard_input(const std::string& path) { return path == "-"; }

/// True for a name of standard output: "-", or "FORMAT:-" with an ending in place of the format.
bool is_standard_output(const std::string& path);

/// What follows the last dot of a file's name, in small letters; empty without a dot. Standard output has the ending
/// that its name tells, else png.
std::string extension_of(const std::string& path);

}  // namespace qx::pictures
