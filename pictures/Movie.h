// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "QX/world/QX_World.h"
#include "pictures/ColourTag.h"
#include "pictures/Files.h"
#include "pictures/Picture.h"
#include "pictures/movie/Module.h"

namespace qx::pictures {

/// Frames: `number` in `per` seconds.
struct Rate {
    int number = 25, per = 1;
    bool operator==(const Rate&) const = default;
};

/// The module's routines, loaded with the first call. @param what  files need it: that is told where it is missing
const movie::Routines* movie_routines(const std::string& path, const char* what);

/// True for a name that tells a movie which can be written.
bool is_movie(const std::string& path);
/// True for a file that is to be read as one: it has such a name, and no picture's head; or another name, and a movie's
/// head.
/// Throws Failure.
bool is_read_as_movie(const std::string& path);
/// The endings of movies, with commas between.
std::string movie_endings();

/// How a movie is packed. What is empty or unset is usual for its name.
struct MovieEncoding {
    std::string codec, pixel_format;  ///< as FFmpeg names them
    std::optional<int> crf;           ///< of encoders that have such a scale, 0 is best
    std::int64_t bits_a_second = 0;   ///< in place of a quality
};

/// What a movie is to be.
struct MovieSettings {
    Rate rate = {};
    MovieEncoding encoding = {};
    MovieColours colours = {};  ///< whose matrix is used where it can be; lossless movies are RGB
    int orientation = 1;        ///< 1 to 8, as EXIF numbers them
    Rate aspect = {1, 1};       ///< width of a pixel by its height
    bool lossless = false;
    bool alpha = false;              ///< of a lossless movie; others have none
    int depth = 8;                   ///< 8 or 16: of a lossless movie, else the most that its pixels take
    std::string audio = {};          ///< a movie whose audio packets are copied; empty for none
    movie::Ratio audio_start{0, 1};  ///< the time, in seconds, of that movie at which the first frame comes
    std::string time_code = {};      ///< of the first frame, as facts of movies have it; empty for none
};

/// A movie that appears whole or not at all. Throws Failure, and BadChoice for an encoding that cannot be had.
class MovieFile {
public:
    MovieFile(const std::string& path, int width, int height, const MovieSettings& settings);
    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;
    /// What of its settings the movie cannot have; empty where it has all.
    const std::string& note() const { return note_; }
    /// 8, or 16 where that was asked for and its pixels have more than 8 bits.
    int depth() const { return depth_; }
    /// A picture of the movie's size, at its depth or another one. Values of a 16-bit file that it carries are kept.
    void add(const Picture& frame);
    void commit();

private:
    void check(bool done, const movie::Words& words) const;
    void add_rows(const QX_World& frame, int depth);
    OutputFile file_;
    const movie::Routines* routines_;
    void* movie_;
    int width_, height_, depth_;
    std::string note_;
};

/// A movie that is read, frame by frame and in any order; in rising order fastest. Throws Failure. For one thread at a
/// time.
class MovieReader {
public:
    /// Looks through all packets of the file. @param threads  of the decoder; no bit depends on them
    explicit MovieReader(const std::string& path, int threads = 1);
    ~MovieReader();
    MovieReader(const MovieReader&) = delete;
    MovieReader& operator=(const MovieReader&) = delete;

    const std::string& path() const { return path_; }
    const movie::Facts& facts() const { return facts_; }
    MovieColours colours() const;
    InFile in_file() const;  ///< size and orientation as they are stored
    int frames() const { return static_cast<int>(facts_.frames); }
    /// Of frame 0 and so on, rising, in units of `facts().time_base` seconds; behind the last its end.
    std::span<const std::int64_t> stamps() const;
    /// What is to be said of the file.
    const std::vector<std::string>& notes() const { return notes_; }

    /// A frame as it is stored, of 8 bits, or of 16 where the file has more; its orientation and pixel aspect are left
    /// to who shows it. Notes tell of damage.
    Picture read(int frame);

private:
    void check_sides() const;
    std::string path_;
    const movie::Routines* routines_;
    void* movie_ = nullptr;
    movie::Facts facts_{};
    std::vector<std::string> notes_;
};

}  // namespace qx::pictures
