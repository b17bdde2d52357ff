// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

/// What the command asks of the module that reads and writes movies, and reads pictures of further formats. The module
/// links the libraries of FFmpeg, the command does not: it loads the module when such a file is asked for, so that
/// start-up and licence of all else are free of them.
namespace qx::movie {

inline constexpr int kVersion = 6;
inline constexpr const char* kFileName = "libqxmovie.so";
inline constexpr const char* kEntryName = "qx_movie_routines";
inline constexpr std::int64_t kMostFrames = 9'999'999;

/// Exact; `per` is above 0.
struct Ratio {
    std::int64_t number, per;
};

/// Of values, as ITU-T H.273 numbers them; 2 is unknown.
struct Tags {
    int primaries, transfer, matrix;
    int range;  ///< 0 unknown, 1 limited, 2 full
};

/// How the pixels of a movie are shown. They are stored and read as they lie in the file.
struct Showing {
    int orientation;  ///< 1 to 8, as EXIF numbers them
    Ratio aspect;     ///< width of a pixel by its height
};

struct Settings {
    const char* name;  ///< its ending tells the container; no file of that name is touched
    const char* file;  ///< what is written, whatever its name
    int width, height;
    int rate, per;  ///< frames in so many seconds
    Tags tags;      ///< a matrix that cannot be used gives way to one that can
    Showing showing;
    const char *codec, *pixel_format;  ///< null for the usual ones
    int crf;                           ///< below 0 for the usual
    std::int64_t bits_a_second;        ///< 0 for none
    bool lossless;                     ///< every bit of RGB is kept; else alpha is not looked at
    bool alpha;                        ///< lossless movies have it
    int depth;                         ///< 8 or 16: of the channels of a lossless movie, else the most that may come
    const char* audio;                 ///< a movie whose audio packets are copied; null for none
    Ratio audio_start;                 ///< the time, in seconds, of that movie that becomes 0
    const char* time_code;             ///< of the first frame, such as 01:00:00:00; null for none
};

/// What a movie is.
struct Facts {
    int width, height;
    int depth;  ///< of the channels that `read` gives: 8, or 16 where the file has more
    bool has_alpha, has_audio;
    Tags tags;
    Showing showing;
    Ratio rate;       ///< frames a second, on average
    Ratio time_base;  ///< seconds of a unit of stamps
    /// Frame i comes at stamps[i], and the last one ends at stamps[frames]; they rise. Kept by the movie.
    const std::int64_t* stamps;
    std::int64_t frames;
    bool regular;           ///< frame i would be i / rate behind the first, had the stamps no units
    bool rotated;           ///< by an angle that orientation cannot tell
    bool numbered;          ///< its stamps are missing or fall: they are numbers of frames
    const char* codec;      ///< by the name of its decoder's kind
    const char* time_code;  ///< of the first frame, as the file has it; null for none. Kept by the movie
};

/// Formats of pictures, by what they are decoded with.
enum class StillKind : int { bmp, gif, webp, targa, dpx };

/// What a picture is that has been decoded.
struct Still {
    int width, height;
    int depth;  ///< of the channels that `read_still` gives: 8 or 16
    bool has_alpha;
    const unsigned char* icc;  ///< a profile, or null; kept by the picture
    std::int64_t icc_bytes;
};

/// Room for the words of a failure, or of a note where there was none.
struct Words {
    char text[256];
    bool is_choice;  ///< what was chosen cannot be had, by whatever movie of that kind
};

struct Routines {
    int version;

    /// @return null with words for what cannot be made; words beside a movie tell what it will lack
    void* (*open)(const Settings* settings, Words* words);
    /// Of the channels that `add` takes: of a movie that is not lossless 16 where that may come and its pixels have
    /// more than 8 bits.
    int (*depth)(const void* movie);
    /// A frame of A, R, G, B; channels of 16 bits go from 0 to 65535, in the order of bytes of the machine.
    bool (*add)(void* movie, const unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words);
    /// Writes what is pending and the end of the file. Once, after the last frame.
    bool (*finish)(void* movie, Words* words);
    /// Frees all; the file stays as it is.
    void (*drop)(void* movie);

    /// Opens a movie to read and looks through its packets. @param threads  of the decoder; no bit depends on them
    /// @param most_bytes  of a frame at its depth @return null with words for what cannot be read
    void* (*open_reader)(const char* file, int threads, std::int64_t most_bytes, Facts* facts, Words* words);
    /// The notes on a movie: the first, the second and so on; null behind the last.
    const char* (*note)(void* reader, int number);
    /// A frame, 0 to `frames` - 1, as `add` takes it. Frames in order are the fastest. One call at a time.
    bool (*read)(void* reader, std::int64_t frame, unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words);
    void (*close)(void* reader);

    /// Decodes a picture from the bytes of its whole file. @param most_bytes  of its pixels
    /// @return null with words for what cannot be read
    void* (*open_still)(StillKind kind, const unsigned char* bytes, std::int64_t count, std::int64_t most_bytes,
                        Still* still, Words* words);
    /// Its pixels, as `add` takes them.
    bool (*read_still)(void* still, unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words);
    void (*close_still)(void* still);
};

/// Type of the entry, which has C linkage.
using Entry = const Routines* (*)();

}  // namespace qx::movie
