// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "QX/world/QX_World.h"
#include "pictures/ColourTag.h"
#include "pictures/Failure.h"
#include "pictures/FileName.h"
#include "pictures/Files.h"
#include "pictures/Pixels.h"
#include "pictures/Raw.h"
#include "pictures/Watch.h"

namespace qx::pictures {

inline constexpr int kMostSide = 30000;  ///< of a picture, in pixels

/// Pixels per unit of length, as the file has it; zeros when it has none.
struct Resolution {
    enum class Unit { none, inch, centimetre, metre };
    double x = 0, y = 0;
    Unit unit = Unit::none;
    Resolution in(Unit other) const;  ///< the same resolution; nothing when either unit is none
    Resolution whole() const;         ///< for files of whole numbers: without a unit, a ratio of such
};

/// What the values of a file are.
enum class Precision { eight, sixteen, half, real };
Precision precision_of(int depth);

struct ExrAttributes;  ///< of the header of an OpenEXR file, besides those that tell of its pixels
struct ExrWindow;      ///< where the pixels of an OpenEXR file lie, with those that lie outside its picture

/// What is known of a picture besides its pixels.
struct About {
    bool has_alpha = false;
    bool associated = false;                 ///< the file says that its colours are multiplied by alpha
    bool linear = false;                     ///< a format whose values are light, not encoded
    Precision precision = Precision::eight;  ///< of the values that came into the pixels
    bool half = false;                       ///< OpenEXR is written in half floats unless it is told otherwise
    ColourTags colours;                      ///< what the file says of them
    Resolution resolution;
    std::shared_ptr<const ExrAttributes> attributes;  ///< null when there are none
};

/// What a file tells beyond straight pixels of a picture's size. A result of that size passes it on from its
/// background.
struct Beside {
    std::shared_ptr<const QX_World> carried;  ///< see Carried.h; null when the world tells all
    std::vector<bool> light;                  ///< see Light.h; empty when there is none
    std::shared_ptr<const ExrWindow>
        window;  ///< null when the pixels of the file are those of the picture, from 0, 0 on
};

struct PictureSize {
    int width, height;
    bool operator==(const PictureSize&) const = default;
};

/// What a file says of something, in words.
struct Fact {
    std::string name, value;
};

/// What a file's head tells of how its pixels lie there.
struct InFile {
    const char* format = "";
    PictureSize size{0, 0};           ///< before it is turned
    int depth = 0;                    ///< of a channel: 8, 16, or 32 for floats of any kind
    int orientation = 1;              ///< 1 to 8, as EXIF numbers them
    std::vector<std::string> layers;  ///< that its name may be followed by, with a colon between
    std::vector<Fact> facts;          ///< beyond what a picture has a place for; only where no pixels are asked for
};
/// The size of a picture that is turned as its file says.
PictureSize turned_size(const InFile& file);

/// A picture in memory: straight alpha, at the depth that its file has (half floats as floats).
struct Picture : About, Beside {
    std::unique_ptr<QX_World> world;
    InFile in_file;                  ///< never passed on
    bool cmyk = false;               ///< the world has inks, see `ReadOptions`
    std::string mark;                ///< of the job that wrote the file, see WriteOptions; never passed on
    std::vector<std::string> notes;  ///< what the file holds and this does not
    About& about() { return *this; }
    const About& about() const { return *this; }
    Beside& beside() { return *this; }
    const Beside& beside() const { return *this; }
};

inline constexpr int kMostCompression = 9;

struct WriteOptions {
    std::optional<bool> half = {};  ///< OpenEXR: half or float; unset, what the picture says
    /// A word that the file keeps, by which a job knows its own results again; none where it is empty.
    std::string mark = {};
    int compression = 4;  ///< PNG: 0 (none) to 9 (smallest); 4 takes two fifths of the time of 6, 4 % more bytes
    std::optional<int> packing = {};  ///< TIFF and OpenEXR: a number in `packings_of`; unset, zip
    int jpeg_quality = 95;            ///< 1 to 100
};

/// How files of this name can be packed, in words; empty where there is no choice. Throws Failure.
std::span<const char* const> packings_of(const std::string& path);

// Any number of pictures may be read and written at once, each on a thread of its own.

/// True for a file whose first bytes are those of a known format. Throws Failure for one that cannot be opened.
bool is_picture(const std::string& path);

struct ReadOptions {
    bool orient = true;      ///< turned as the file says; else as its pixels lie
    bool straighten = true;  ///< straight alpha; else colours as they are stored, whatever the file says of its alpha
    /// Takes CMYK, which is refused else. The pixels of such a file are C, M, Y, K in the order of their memory, where
    /// alpha, red, green, blue lie else, from 0, no ink, to full; and its profile is one for CMYK or none. They are to
    /// become RGB before anything else is done with them.
    bool cmyk = false;
    std::optional<RawLayout> raw = {};  ///< what standard input has, where it has no head
    bool pixels = true;                 ///< else what the file's head tells: `world` is null, `in_file` has the size
};

/// Format by content. Sides above 30000 are refused before anything is decoded. `FILE.exr:NAME` is a part or a layer of
/// an OpenEXR file. Throws Failure or Stopped.
Picture read_picture(const std::string& path, Watch& watch = unwatched(), const ReadOptions& options = {});

/// Seconds that reading pictures has taken since the process began, of all threads together.
double seconds_of_reading();

/// Of what `read_picture` gives, by the file's head alone. Throws as it does.
PictureSize picture_size(const std::string& path, Watch& watch = unwatched(), const ReadOptions& options = {});

/// What is to be said of a CMYK picture that tells no profile.
inline constexpr const char* kCmykIsUnknown = "is CMYK without a usable colour profile, its colours are not known";

/// Format by extension, at the depth nearest to `depth` that it can hold. The file appears whole or not at all. Throws
/// Failure or Stopped.
void write_picture(const std::string& path, const Picture& picture, int depth, const WriteOptions& options = {},
                   Watch& watch = unwatched());
/// The same but for the last step: the file is complete and closed, and `commit` gives it its name.
std::unique_ptr<OutputFile> write_uncommitted(const std::string& path, const Picture& picture, int depth,
                                              const WriteOptions& options, Watch& watch);

/// The bytes of the file that `write_picture` would write.
std::string bytes_of_picture(const std::string& path, const Picture& picture, int depth,
                             const WriteOptions& options = {}, Watch& watch = unwatched());

/// The depth of a file of this name for pixels of that depth.
int file_depth(const std::string& path, int depth);

/// What can be known of an output before the work: its format and its folder. Throws Failure.
void check_output(const std::string& path);

/// The usual ending of each format, with commas between.
std::string known_endings();
/// True for a name that tells a format to write.
bool known_format(const std::string& path);
/// True for a name whose format is meant for linear light.
bool is_linear_format(const std::string& path);

/// A world, or Failure in the name of a file. Its rows begin on 16-byte boundaries, as the library rounds float rows to
/// 8 bits by their address: only those on a boundary to the nearest and halves to the even value. One that is not clear
/// costs memory only where it is written, so that a file's claim of a size takes none.
std::unique_ptr<QX_World> new_world(const std::string& path, std::int64_t width, std::int64_t height, int depth,
                                    bool clear = true);

/// A copy of a world at another depth, without dither. Float alpha is limited to 0..1 on the way to integers, and
/// halves become even wherever the rows of `world` lie.
std::unique_ptr<QX_World> at_depth(const std::string& path, const QX_World& world, int depth);

/// True when some pixel is not opaque.
bool any_transparency(const QX_World& world);

}  // namespace qx::pictures
