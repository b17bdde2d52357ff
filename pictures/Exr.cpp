// SPDX-License-Identifier: Apache-2.0
// OpenEXR, half and float: linear light with associated alpha, which becomes straight here and associated again on
// the way out. Half or float is a matter of the file; a picture of it has float pixels.
#include <ImathBox.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfMultiPartInputFile.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfTestFile.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "pictures/Carried.h"
#include "pictures/ExrHeader.h"
#include "pictures/Format.h"
#include "pictures/Light.h"
#include "pictures/Pixels.h"

namespace qx::pictures {

struct ExrAttributes {
    Imf::Header header;
};

namespace {

constexpr int kMostRead = 1 << 16;  // a side of a file's windows: more than a picture has, for what lies outside it

/// A slice whose rows all lie in one buffer: the picture passes through it line by line.
template <class Channel>
Imf::Slice line_slice(Imf::PixelType type, Channel* first, std::int64_t left, std::size_t channels, double fill) {
    const auto base = reinterpret_cast<char*>(first) - left * static_cast<std::int64_t>(channels * sizeof(Channel));
    return {type, base, channels * sizeof(Channel), 0, 1, 1, fill};
}

/// Slices for what the file has. @return false when it has nothing that makes a picture
bool bind_channels(const Imf::ChannelList& channels, QX_PixelFloat* line, int left, Imf::FrameBuffer& buffer,
                   bool& grey) {
    const auto bind = [&](const char* name, float* first, double fill) {
        buffer.insert(name, line_slice(Imf::FLOAT, first, left, 4, fill));
    };
    const bool rgb = channels.findChannel("R") && channels.findChannel("G") && channels.findChannel("B");
    grey = !rgb && channels.findChannel("Y") && !channels.findChannel("RY");
    if (!rgb && !grey) return false;
    bind("A", &line->alpha, 1.0);
    bind(grey ? "Y" : "R", &line->red, 0.0);
    if (rgb) bind("G", &line->green, 0.0);
    if (rgb) bind("B", &line->blue, 0.0);
    return true;
}

void clear(const QX_World& world, int y, int left, int right) {
    auto* row = row_of<QX_PixelFloat>(world, y);
    std::fill(row + left, row + std::max(left, right), QX_PixelFloat{});
}

/// Rows of the data window go to their place in the display window, which is the picture.
void read_rows(Imf::InputFile& exr, const std::string& path, QX_World& world, Watch& watch) {
    const auto& display = exr.header().displayWindow();
    const auto& window = exr.header().dataWindow();
    const std::int64_t columns = std::int64_t{window.max.x} - window.min.x + 1;
    std::vector<QX_PixelFloat> line(static_cast<std::size_t>(columns));
    Imf::FrameBuffer buffer;
    bool grey = false;
    if (!bind_channels(exr.header().channels(), line.data(), window.min.x, buffer, grey)) {
        throw Failure(path, "has no channels R, G, B, and no Y alone");
    }
    exr.setFrameBuffer(buffer);
    const int left = std::max(window.min.x, display.min.x), right = std::min(window.max.x, display.max.x) + 1;
    const int top = std::max(window.min.y, display.min.y), bottom = std::min(window.max.y, display.max.y) + 1;
    for (int y = top; y < bottom && left < right; ++y) {
        watch.must_next_row(y - top, bottom - top);
        exr.readPixels(y);
        auto* row = row_of<QX_PixelFloat>(world, y - display.min.y) + (left - display.min.x);
        std::copy(line.begin() + (left - window.min.x), line.begin() + (right - window.min.x), row);
        for (int x = 0; grey && x < right - left; ++x) row[x].green = row[x].blue = row[x].red;
        clear(world, y - display.min.y, 0, left - display.min.x);
        clear(world, y - display.min.y, right - display.min.x, world.width);
    }
    for (int y = 0; y < world.height; ++y) {  // last, when there has been something to read
        const bool filled = y >= top - display.min.y && y < bottom - display.min.y && left < right;
        if (!filled) clear(world, y, 0, world.width);
    }
}

/// Attributes that tell of the pixels as they lie in the file, or are written from elsewhere.
bool is_own(const std::string& name) {
    constexpr const char* own[] = {"channels",
                                   "chromaticities",
                                   "chunkCount",
                                   "compression",
                                   "dataWindow",
                                   "displayWindow",
                                   "dwaCompressionLevel",
                                   "lineOrder",
                                   "maxSamplesPerPixel",
                                   "multiView",
                                   "name",
                                   "pixelAspectRatio",
                                   "preview",
                                   "tiles",
                                   "type",
                                   "version",
                                   "view",
                                   "xDensity"};
    return std::find(std::begin(own), std::end(own), name) != std::end(own);
}

void keep_attributes(const Imf::Header& header, Picture& picture) {
    auto kept = std::make_shared<ExrAttributes>();
    bool any = false;
    const Imf::Header usual;
    for (auto i = header.begin(); i != header.end(); ++i) {
        if (is_own(i.name())) continue;
        kept->header.insert(i.name(), i.attribute());
        any = any || usual.find(i.name()) == usual.end();
    }
    if (any) picture.attributes = std::move(kept);
}

/// What a picture has no place for.
void note_rest(const Imf::Header& header, Picture& picture) {
    const auto& channels = header.channels();
    const bool rgb = channels.findChannel("R") != nullptr && channels.findChannel("G") != nullptr &&
                     channels.findChannel("B") != nullptr;
    std::string further;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        const std::string name = i.name();
        const bool used = name == "A" || (rgb ? name == "R" || name == "G" || name == "B" : name == "Y");
        if (!used) further += (further.empty() ? "" : ", ") + name;
    }
    if (!further.empty()) picture.notes.push_back("its further channels are left out: " + further);
    const auto &display = header.displayWindow(), &window = header.dataWindow();
    if (!display.intersects(window.min) || !display.intersects(window.max)) {
        picture.notes.emplace_back("what lies outside its display window is left out");
    }
}

/// True when all channels that make the picture are half floats.
bool is_half(const Imf::Header& header) {
    for (const char* name : {"R", "G", "B", "A", "Y"}) {
        const Imf::Channel* channel = header.channels().findChannel(name);
        if (channel != nullptr && channel->type != Imf::HALF) return false;
    }
    return true;
}

void read_extras(const Imf::Header& header, Picture& picture) {
    const double ratio = header.pixelAspectRatio();
    if (Imf::hasXDensity(header)) {
        const double x = Imf::xDensity(header);
        picture.resolution = {x, x * ratio, Resolution::Unit::inch};
    } else if (ratio != 1) {
        picture.resolution = {1, ratio, Resolution::Unit::none};
    }
    if (!Imf::hasChromaticities(header)) return;
    const Imf::Chromaticities& c = Imf::chromaticities(header);
    picture.primaries = {c.red.x, c.red.y, c.green.x, c.green.y, c.blue.x, c.blue.y, c.white.x, c.white.y};
}

/// Else a header alone could claim gigabytes of tables. The limit is one for all threads, so it is set once.
void limit_sizes() {
    static const bool limited = (Imf::Header::setMaxImageSize(kMostRead, kMostRead), true);
    static_cast<void>(limited);
}

Picture read_exr(const std::string& path, Watch& watch) {
    limit_sizes();
    Imf::InputFile exr(path.c_str());
    const Imf::Header& header = exr.header();
    const auto& display = header.displayWindow();
    Picture picture;
    picture.has_alpha = header.channels().findChannel("A") != nullptr || header.dataWindow() != display;
    picture.world = new_world(path, std::int64_t{display.max.x} - display.min.x + 1,
                              std::int64_t{display.max.y} - display.min.y + 1, 32, false);
    read_rows(exr, path, *picture.world, watch);
    settle(path, picture, true);
    mark_light(picture);
    picture.half = is_half(header);
    read_extras(header, picture);
    keep_attributes(header, picture);
    note_rest(header, picture);
    if (Imf::MultiPartInputFile(path.c_str()).parts() > 1) picture.notes.emplace_back("only its first part is used");
    return picture;
}

Picture read(InputFile& file, Watch& watch) {
    if (!attributes_fit(file.stream()))
        throw Failure(file.path(), "damaged or cut short OpenEXR: the file ends within its header");
    try {
        return read_exr(file.path(), watch);
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& fault) {  // the library's texts begin with the file's name, and are long
        if (memory_ran_out()) throw std::bad_alloc();
        throw Failure(file.path(), std::string("damaged or cut short OpenEXR: ") + fault.what());
    }
}

/// The library's way to our file. What fails is kept by the file, since the library drops errors at its end.
class Stream : public Imf::OStream {
public:
    explicit Stream(OutputFile& file) : Imf::OStream(file.path().c_str()), file_(file) {}
    void write(const char data[], int bytes) override {
        if (!file_.write(data, static_cast<std::size_t>(bytes))) throw Failure(file_.path(), "write");
    }
    std::uint64_t tellp() override { return file_.tell(); }
    void seekp(std::uint64_t place) override { file_.seek(place); }

private:
    OutputFile& file_;
};

/// Its way back, over what has been written.
class ReadBack : public Imf::IStream {
public:
    explicit ReadBack(OutputFile& file) : Imf::IStream(file.path().c_str()), file_(file) {}
    bool read(char data[], int bytes) override {
        if (std::fread(data, 1, static_cast<std::size_t>(bytes), file_.stream()) != static_cast<std::size_t>(bytes)) {
            throw Failure(file_.path(), "the file is incomplete");
        }
        return true;
    }
    std::uint64_t tellg() override { return file_.tell(); }
    void seekg(std::uint64_t place) override { file_.seek(place); }

private:
    OutputFile& file_;
};

/// The library passes over a last block that it could not compress, and over a table that it could not write.
void check_complete(OutputFile& file) {
    ReadBack stream(file);
    stream.seekg(0);
    if (Imf::InputFile(stream).isComplete()) return;
    if (memory_ran_out()) throw std::bad_alloc();
    throw Failure(file.path(), "could not be written: blocks are missing");
}

Imf::Header header_for(const Picture& picture, Imf::PixelType type, bool with_alpha) {
    Imf::Header header(picture.world->width, picture.world->height);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (const char* name : {"R", "G", "B"}) header.channels().insert(name, Imf::Channel(type));
    if (with_alpha) header.channels().insert("A", Imf::Channel(type));
    const Resolution& own = picture.resolution;
    const Resolution inches = own.in(Resolution::Unit::inch);
    if (inches.x > 0) Imf::addXDensity(header, static_cast<float>(inches.x));
    if (own.x > 0) header.pixelAspectRatio() = static_cast<float>(std::clamp(own.y / own.x, 1e-5, 1e5));
    if (const auto& p = picture.primaries) {
        const auto point = [&](std::size_t i) { return Imath::V2f((*p)[2 * i], (*p)[2 * i + 1]); };
        Imf::addChromaticities(header, {point(0), point(1), point(2), point(3)});
    }
    if (picture.attributes) {
        const Imf::Header& kept = picture.attributes->header;
        for (auto i = kept.begin(); i != kept.end(); ++i) {
            if (!is_own(i.name())) header.insert(i.name(), i.attribute());
        }
    }
    return header;
}

template <class Channel>
void write_rows(Imf::OutputFile& exr, const Picture& picture, Imf::PixelType type, bool with_alpha, Watch& watch) {
    const QX_World& world = *picture.world;
    std::vector<Channel> line(static_cast<std::size_t>(world.width) * 4);
    Imf::FrameBuffer buffer;
    const char* const names[] = {"R", "G", "B", "A"};
    for (std::size_t i = 0; i < (with_alpha ? 4 : 3); ++i) {
        buffer.insert(names[i], line_slice(type, line.data() + i, 0, 4, 0));
    }
    exr.setFrameBuffer(buffer);
    for (int y = 0; y < world.height; ++y) {
        watch.must_next_row(y, world.height);
        auto* to = line.data();
        for (int x = 0; x < world.width; ++x) {
            const QX_PixelFloat p = associated_pixel(picture, x, y);
            for (const float value : {p.red, p.green, p.blue, p.alpha}) *to++ = Channel(value);
        }
        exr.writePixels(1);
    }
}

void write_blocks(OutputFile& file, const Picture& picture, bool with_alpha, Imf::PixelType type, Watch& watch) {
    Stream stream(file);
    Imf::OutputFile exr(stream, header_for(picture, type, with_alpha));
    if (type == Imf::HALF) {
        write_rows<half>(exr, picture, type, with_alpha, watch);
    } else {
        write_rows<float>(exr, picture, type, with_alpha, watch);
    }
}

void write(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch) {
    try {
        write_blocks(file, picture, with_alpha, options.half.value_or(picture.half) ? Imf::HALF : Imf::FLOAT, watch);
        check_complete(file);
    } catch (const Failure&) {
        file.check();
        throw;
    } catch (const std::exception& fault) {
        file.check();
        if (memory_ran_out()) throw std::bad_alloc();
        throw Failure(file.path(), std::string("could not be written: ") + fault.what());
    }
    file.check();
}

}  // namespace

const Format& exr_format() {
    static const Format format{"OpenEXR", {"\x76\x2f\x31\x01"}, {"exr"}, {32}, true, true, read, write};
    return format;
}

}  // namespace qx::pictures
