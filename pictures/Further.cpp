// SPDX-License-Identifier: Apache-2.0
// Formats that are only read, through the module that has the libraries for them.
#include <algorithm>

#include "pictures/Format.h"
#include "pictures/Movie.h"
#include "pictures/Pixels.h"
#include "pictures/Profiles.h"

namespace qx::pictures {
namespace {

using Kind = movie::StillKind;
constexpr std::int64_t kMostBytes = INT32_MAX;  // of pixels, as worlds have it

/// A picture that the module has decoded.
class Decoded {
public:
    Decoded(const InputFile& file, Kind kind, const char* what)
        : path_(file.path()), routines_(movie_routines(path_, what)) {
        const std::vector<unsigned char> bytes = file.contents();
        movie::Words words{};
        const auto count = static_cast<std::int64_t>(bytes.size());
        handle_ = routines_->open_still(kind, bytes.data(), count, kMostBytes, &still, &words);
        if (handle_ == nullptr) throw Failure(path_, words.text);
    }
    ~Decoded() { routines_->close_still(handle_); }
    Decoded(const Decoded&) = delete;
    Decoded& operator=(const Decoded&) = delete;

    void read(QX_World& world) {
        movie::Words words{};
        auto* const pixels = static_cast<unsigned char*>(world.data);
        if (!routines_->read_still(handle_, pixels, world.rowbytes, &words)) throw Failure(path_, words.text);
    }
    movie::Still still{};

private:
    const std::string path_;
    const movie::Routines* routines_;
    void* handle_ = nullptr;
};

/// How many pictures a GIF has: a head, a table of colours, and blocks, each of them a chain of parts.
int gif_pictures(const std::vector<unsigned char>& bytes) {
    constexpr unsigned picture = 0x2C, extension = 0x21;
    const auto byte = [&](std::size_t at) { return at < bytes.size() ? unsigned{bytes[at]} : 0u; };
    const auto table = [](unsigned flags) { return (flags & 0x80) != 0 ? std::size_t{3} << ((flags & 7) + 1) : 0; };
    std::size_t at = 13 + table(byte(10));
    int pictures = 0;
    while (byte(at) == picture || byte(at) == extension) {
        if (byte(at) == picture) {
            ++pictures;
            at += 10 + table(byte(at + 9)) + 1;
        } else {
            at += 2;
        }
        while (byte(at) != 0) at += byte(at) + 1;
        ++at;
    }
    return pictures;
}

/// A byte of the head that tells how values stand for light.
constexpr std::size_t kDpxTransfer = 801;
constexpr unsigned kPrintingDensity = 3;

void note_rest(const InputFile& file, Kind kind, Picture& picture) {
    if (kind != Kind::gif && kind != Kind::dpx) return;
    const std::vector<unsigned char> bytes = file.contents();
    if (kind == Kind::gif && gif_pictures(bytes) > 1) picture.notes.emplace_back("only its first frame is used");
    if (kind == Kind::dpx && bytes.size() > kDpxTransfer && bytes[kDpxTransfer] == kPrintingDensity)
        picture.notes.emplace_back("its values are densities of film, they are taken as they are");
}

template <Kind kind> Picture read(InputFile& file, const ReadOptions& options, Watch& watch) {
    Decoded decoded(file, kind, "pictures of this format");
    const movie::Still& still = decoded.still;
    Picture picture;
    picture.has_alpha = still.has_alpha;
    note_rest(file, kind, picture);
    if (still.icc != nullptr) {
        keep_profile(picture, still.icc, static_cast<std::size_t>(still.icc_bytes), IccSpace::rgb);
    }
    if (!make_room(file.path(), still.width, still.height, still.depth, options, watch, picture)) return picture;
    decoded.read(*picture.world);
    return picture;
}

/// Without a mark of its own at its begin: the name has to tell, and the kind of picture to be one of those there are.
bool is_targa(const InputFile& file) {
    constexpr unsigned kinds[] = {1, 2, 3, 9, 10, 11};
    return extension_of(file.opened()) == "tga" && file.byte(1) <= 1 &&
           std::find(std::begin(kinds), std::end(kinds), file.byte(2)) != std::end(kinds);
}

bool is_webp(const InputFile& file) { return file.begins_with("RIFF") && file.holds("WEBP", 8); }

}  // namespace

std::vector<const Format*> further_formats() {
    static const Format formats[] = {
        {"BMP", {"BM"}, {"bmp"}, {}, true, false, 0, read<Kind::bmp>, nullptr},
        {"GIF", {"GIF87a", "GIF89a"}, {"gif"}, {}, true, false, 0, read<Kind::gif>, nullptr},
        {"WebP", {}, {"webp"}, {}, true, false, 0, read<Kind::webp>, nullptr, is_webp},
        {"TGA", {}, {"tga"}, {}, true, false, 0, read<Kind::targa>, nullptr, is_targa},
        {"DPX", {"SDPX", "XPDS"}, {"dpx"}, {}, true, false, 0, read<Kind::dpx>, nullptr},
    };
    std::vector<const Format*> all;
    for (const Format& format : formats) all.push_back(&format);
    return all;
}

}  // namespace qx::pictures
