// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "pictures/Movie.h"
#include "pictures/Picture.h"
#include "scene/Scene.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of the files that are written.
struct EncodingOptions {
    std::string compression, jpeg_quality, flatten, output_depth, codec, crf, bitrate, pixel_format;
    bool half = false, real = false;

    /// Takes what a scene says of files of this name, where the command line says nothing: a scene may tell of pictures
    /// and of movies.
    void take(const scene::OutputChoices& choices, const std::string& output);
    /// The same choices, for a scene that is to make such files.
    scene::OutputChoices choices() const;
    void check(const std::string& output) const;  ///< throws WrongUsage
    /// @param output  whose format gives a compression its meaning
    pictures::WriteOptions write_options(const std::string& output) const;
    pictures::MovieEncoding movie_encoding() const;
    /// The opaque colour that results are laid over.
    std::optional<QX_PixelFloat> ground() const;
    /// Of files, where work is done at `depth`.
    int file_depth(int depth) const;
    /// All that is asked for, in one text.
    std::string words() const;
};
void add_encoding_options(CLI::App& command, EncodingOptions& options);
/// Those of movies, for commands that write some.
void add_movie_options(CLI::App& command, EncodingOptions& options);

}  // namespace qx::tool
