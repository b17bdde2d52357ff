// SPDX-License-Identifier: Apache-2.0
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <half.h>

#include <algorithm>
#include <array>
#include <new>

#include "pictures/Carried.h"
#include "pictures/Exr.h"
#include "pictures/ExrChannels.h"
#include "pictures/ExrTasks.h"
#include "pictures/Format.h"
#include "pictures/Pixels.h"

namespace qx::pictures {
namespace {

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

Imath::Box2i display_window(const Picture& picture) {
    return picture.window ? picture.window->display
                          : Imath::Box2i({0, 0}, {picture.world->width - 1, picture.world->height - 1});
}

/// True when `is(pixel, whether it lies in the data window of the file that it came from)` holds for some pixel.
template <class Is> bool any_placed(const Picture& picture, const Is& is) {
    const Imath::V2i origin = picture.window->display.min;
    return any_pixel<QX_PixelFloat>(*picture.world, [&](const QX_PixelFloat& p, int x, int y) {
        return is(p, picture.window->data.intersects(origin + Imath::V2i(x, y)));
    });
}

/// That of the file that the picture came from if all of the display window that lies outside of it is still clear,
/// else one around both.
Imath::Box2i data_window(const Picture& picture) {
    Imath::Box2i window = display_window(picture);
    if (!picture.window) return window;
    const auto is_new = [](const QX_PixelFloat& p, bool in_data) { return !in_data && p.alpha != 0; };
    if (!any_placed(picture, is_new)) return picture.window->data;
    window.extendBy(picture.window->data);
    return window;
}

/// Outside of a file's data window nothing is opaque, but that takes no alpha as long as the window is kept.
bool needs_alpha(const Picture& picture, const Imath::Box2i& window) {
    if (!picture.window || picture.window->has_alpha || window != picture.window->data) return true;
    return any_placed(picture, [](const QX_PixelFloat& p, bool in_data) { return in_data && p.alpha != 1; });
}

Imf::Header header_for(const Picture& picture, Imf::PixelType type, bool& with_alpha) {
    Imf::Header header(display_window(picture), data_window(picture));
    with_alpha = with_alpha && needs_alpha(picture, header.dataWindow());
    header.compression() = Imf::ZIP_COMPRESSION;
    for (const char* name : {"R", "G", "B"}) header.channels().insert(name, Imf::Channel(type));
    if (with_alpha) header.channels().insert("A", Imf::Channel(type));
    const Resolution& own = picture.resolution;
    const Resolution inches = own.in(Resolution::Unit::inch);
    if (inches.x > 0) Imf::addXDensity(header, static_cast<float>(inches.x));
    if (own.x > 0) header.pixelAspectRatio() = static_cast<float>(std::clamp(own.y / own.x, 1e-5, 1e5));
    if (const auto& p = picture.colours.primaries) {
        const auto point = [&](std::size_t i) { return Imath::V2f((*p)[2 * i], (*p)[2 * i + 1]); };
        Imf::addChromaticities(header, {point(0), point(1), point(2), point(3)});
    }
    if (picture.attributes) {
        const Imf::Header& kept = picture.attributes->header;
        for (auto i = kept.begin(); i != kept.end(); ++i) {
            if (!is_own_attribute(i.name())) header.insert(i.name(), i.attribute());
        }
    }
    return header;
}

/// The pixels of a file, asked for in their order.
class FilePixels {
public:
    explicit FilePixels(const Picture& picture) : picture_(picture), display_(display_window(picture)) {}
    QX_PixelFloat operator()(int x, int y) {
        const Imath::V2i place(x, y);
        if (display_.intersects(place)) return associated_pixel(picture_, x - display_.min.x, y - display_.min.y);
        return picture_.window->data.intersects(place) ? picture_.window->outside[outside_++] : QX_PixelFloat{};
    }

private:
    const Picture& picture_;
    const Imath::Box2i display_;
    std::size_t outside_ = 0;
};

template <class Channel>
void write_rows(Imf::OutputFile& exr, const Picture& picture, Imf::PixelType type, bool with_alpha, Watch& watch) {
    const Imath::Box2i window = exr.header().dataWindow();
    FilePixels pixel(picture);
    Lines<std::array<Channel, 4>> lines(window);
    for (int first = window.min.y; first <= window.max.y; first += lines.rows()) {
        lines.begin_at(first);
        const int end = std::min(first + lines.rows(), window.max.y + 1);
        for (int y = first; y < end; ++y) {
            watch.must_next_row(y - window.min.y, window.max.y + 1 - window.min.y);
            auto* to = lines.row(y);
            for (int x = window.min.x; x <= window.max.x; ++x) {
                const QX_PixelFloat p = pixel(x, y);
                *to++ = {Channel(p.red), Channel(p.green), Channel(p.blue), Channel(p.alpha)};
            }
        }
        Imf::FrameBuffer buffer;
        const char* const names[] = {"R", "G", "B", "A"};
        for (std::size_t i = 0; i < (with_alpha ? 4 : 3); ++i) {
            buffer.insert(names[i], lines.slice(type, &(*lines.first())[i], 0));
        }
        exr.setFrameBuffer(buffer);
        errno = 0;
        exr.writePixels(end - first);
        // A block that could not be packed the library leaves half full, and would then fill beyond its end.
        if (work_ran_out_of_memory() || exr.currentScanLine() != end) throw std::bad_alloc();
    }
}

void write_blocks(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options,
                  Watch& watch) {
    const Imf::PixelType type = options.half.value_or(picture.half) ? Imf::HALF : Imf::FLOAT;
    Stream stream(file);
    Imf::Header header = header_for(picture, type, with_alpha);
    if (options.packing) header.compression() = static_cast<Imf::Compression>(*options.packing);
    if (!options.mark.empty()) header.insert(kMarkKey, Imf::StringAttribute(options.mark));
    Imf::OutputFile exr(stream, header, exr_threads());
    with_idle_threads(
        [&] { (type == Imf::HALF ? write_rows<half> : write_rows<float>)(exr, picture, type, with_alpha, watch); });
}

/// What fails is a fault of the file, or want of memory.
template <class Write> void write_whole(OutputFile& file, const Write& write) {
    try {
        start_library();
        write();
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

void write_exr(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch) {
    write_whole(file, [&] { write_blocks(file, picture, with_alpha, options, watch); });
}

void write_exr_channels(OutputFile& file, int width, int height, const std::vector<FloatChannel>& channels,
                        Watch& watch) {
    write_whole(file, [&] {
        Imf::Header header(width, height);
        header.compression() = Imf::ZIP_COMPRESSION;
        Imf::FrameBuffer buffer;
        for (const FloatChannel& channel : channels) {
            header.channels().insert(channel.name, Imf::Channel(Imf::FLOAT));
            auto* const values = reinterpret_cast<char*>(const_cast<float*>(channel.values));  // which it only reads
            const std::size_t step = channel.step * sizeof(float);
            buffer.insert(channel.name, Imf::Slice(Imf::FLOAT, values, step, step * static_cast<std::size_t>(width)));
        }
        Stream stream(file);
        Imf::OutputFile exr(stream, header, exr_threads());
        exr.setFrameBuffer(buffer);
        with_idle_threads([&] {
            for (int y = 0; y < height; ++y) {
                watch.must_next_row(y, height);
                errno = 0;
                exr.writePixels(1);
                if (work_ran_out_of_memory() || exr.currentScanLine() != y + 1) throw std::bad_alloc();
            }
        });
    });
}

const Format& exr_format() {
    static const Format format{
        "OpenEXR",    {"\x76\x2f\x31\x01"},  {"exr"}, {32}, true, true, 0, read_exr, write_exr, nullptr,
        kExrPackings, Imf::PXR24_COMPRESSION};
    return format;
}

}  // namespace qx::pictures
