// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// What the command asks of the module that writes movies. The module links the libraries of FFmpeg, the command does
/// not: it loads the module when a movie is asked for, so that start-up and licence of all else are free of them.
namespace qx::movie {

inline constexpr int kVersion = 2;
inline constexpr const char* kFileName = "libqxmovie.so";
inline constexpr const char* kEntryName = "qx_movie_routines";

struct Settings {
    const char* name;  ///< its ending tells the container
    const char* file;  ///< what is written, whatever its name
    int width, height;
    int rate, per;            ///< frames in so many seconds
    int primaries, transfer;  ///< as ITU-T H.273 numbers them
};

/// Room for the words of a failure.
struct Words {
    char text[256];
};

struct Routines {
    int version;
    /// @return null with words for what cannot be made
    void* (*open)(const Settings* settings, Words* words);
    /// A frame of A, R, G, B bytes; alpha is not looked at.
    bool (*add)(void* movie, const unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words);
    /// Writes what is pending and the end of the file. Once, after the last frame.
    bool (*finish)(void* movie, Words* words);
    /// Frees all; the file stays as it is.
    void (*drop)(void* movie);
};

/// Type of the entry, which has C linkage.
using Entry = const Routines* (*)();

}  // namespace qx::movie
