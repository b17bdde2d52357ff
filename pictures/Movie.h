// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "QX/world/QX_World.h"
#include "pictures/Files.h"
#include "pictures/movie/Module.h"

namespace qx::pictures {

/// Frames: `number` in `per` seconds.
struct Rate {
    int number = 25, per = 1;
};

/// What a movie says of its values, in the numbers of ITU-T H.273; 1 is BT.709, 2 is unknown.
struct MovieColours {
    int primaries = 1, transfer = 1;
};

/// True for a name that tells a movie.
bool is_movie(const std::string& path);

/// A movie that appears whole or not at all. Throws Failure.
class MovieFile {
public:
    MovieFile(const std::string& path, int width, int height, const Rate& rate, const MovieColours& colours = {});
    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;
    /// A world of 8 bits and of the movie's size; alpha is not looked at.
    void add(const QX_World& frame);
    void commit();

private:
    void check(bool done, const movie::Words& words) const;
    OutputFile file_;
    const movie::Routines* routines_;
    void* movie_;
};

}  // namespace qx::pictures
