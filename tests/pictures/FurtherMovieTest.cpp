// SPDX-License-Identifier: Apache-2.0
// Formats that are only read, in files that are laid out here by their definitions.
#include <bit>

#include "tests/pictures/Support.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Further = InFolder;

enum class Order { low_first, high_first };

/// Numbers behind one another.
struct File {
    std::string bytes;
    File& number(std::uint32_t value, int size, Order order = Order::low_first) {
        for (int i = 0; i < size; ++i) {
            const int shift = 8 * (order == Order::low_first ? i : size - 1 - i);
            bytes += static_cast<char>(value >> shift & 0xFF);
        }
        return *this;
    }
    File& text(const std::string& words) {
        bytes += words;
        return *this;
    }
    File& fill(std::size_t size) {
        bytes.resize(size);
        return *this;
    }
};

QX_Pixel8 colour(int x, int y) { return argb(40 + 20 * x, 90 * x, 70 * y, 11 * x + 60 * y); }

/// Rows from the bottom up, in steps of 4 bytes; 32 bits with masks have alpha.
std::string bmp(int width, int height, int bits) {
    const int row = (width * bits / 8 + 3) / 4 * 4, head = bits == 32 ? 14 + 56 : 14 + 40;
    File file;
    file.text("BM").number(std::uint32_t(head + row * height), 4).number(0, 4).number(std::uint32_t(head), 4);
    file.number(std::uint32_t(head - 14), 4).number(std::uint32_t(width), 4).number(std::uint32_t(height), 4);
    file.number(1, 2).number(std::uint32_t(bits), 2).number(bits == 32 ? 3 : 0, 4).fill(14 + 40);
    if (bits == 32) file.number(0xFF0000, 4).number(0xFF00, 4).number(0xFF, 4).number(0xFF000000, 4);
    for (int y = height - 1; y >= 0; --y) {
        for (int x = 0; x < width; ++x) {
            const QX_Pixel8 p = colour(x, y);
            file.number(p.blue, 1).number(p.green, 1).number(p.red, 1);
            if (bits == 32) file.number(p.alpha, 1);
        }
        file.fill(std::size_t(head + row * (height - y)));
    }
    return file.bytes;
}

/// Rows from the top down, one packet of different pixels each where it is packed.
std::string targa(int width, int height, bool packed) {
    File file;
    file.number(0, 2).number(packed ? 10 : 2, 1).fill(12);
    file.number(std::uint32_t(width), 2).number(std::uint32_t(height), 2).number(32, 1).number(0x28, 1);
    for (int y = 0; y < height; ++y) {
        if (packed) file.number(std::uint32_t(width - 1), 1);
        for (int x = 0; x < width; ++x) {
            const QX_Pixel8 p = colour(x, y);
            file.number(p.blue, 1).number(p.green, 1).number(p.red, 1).number(p.alpha, 1);
        }
    }
    return file.bytes;
}

std::uint32_t ten_bits(int x, int y, int channel) { return std::uint32_t(x * 300 + y * 41 + channel * 7) & 1023; }

/// Three values of 10 bits in 32, from the top.
std::string dpx(int width, int height, Order order, unsigned transfer) {
    File file;
    file.text(order == Order::high_first ? "SDPX" : "XPDS").number(2048, 4, order).text("V1.0");
    file.fill(768).number(0, 2, order).number(1, 2, order);
    file.number(std::uint32_t(width), 4, order).number(std::uint32_t(height), 4, order);
    file.fill(800).number(50, 1).number(transfer, 1).number(2, 1).number(10, 1).number(1, 2, order).number(0, 2, order);
    file.number(2048, 4, order).fill(2048);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            file.number(ten_bits(x, y, 0) << 22 | ten_bits(x, y, 1) << 12 | ten_bits(x, y, 2) << 2, 4, order);
    }
    return file.bytes;
}

/// Mantissas and exponents, in rows of planes or pixel by pixel.
std::string radiance(int width, int height, bool planes) {
    const auto value = [](int x, int y, int channel) {
        return std::uint32_t(channel == 3 ? 120 + x + y : (37 * x + 59 * y + 80 * channel) % 256);
    };
    File file;
    file.text("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(height) + " +X " + std::to_string(width) +
              "\n");
    for (int y = 0; y < height; ++y) {
        if (planes) file.number(2, 1).number(2, 1).number(std::uint32_t(width), 2, Order::high_first);
        for (int channel = 0; channel < 4 && planes; ++channel) {
            file.number(std::uint32_t(width), 1);  // so many bytes as they are
            for (int x = 0; x < width; ++x) file.number(value(x, y, channel), 1);
        }
        for (int x = 0; x < width && !planes; ++x) {
            for (int channel = 0; channel < 4; ++channel) file.number(value(x, y, channel), 1);
        }
    }
    return file.bytes;
}

/// Codes of 8 bits of which every pixel is one: tables are begun anew before codes would grow.
std::string gif(int width, int height, bool clear, int pictures = 1) {
    File file;
    file.text("GIF89a").number(std::uint32_t(width), 2).number(std::uint32_t(height), 2).number(0xF6, 1).number(0, 2);
    for (int i = 0; i < 128; ++i)
        file.number(std::uint32_t(i), 1).number(std::uint32_t(2 * i), 1).number(255 - std::uint32_t(i), 1);
    for (int picture = 0; picture < pictures; ++picture) {
        if (clear) file.text(std::string("\x21\xF9\x04\x01\0\0\x05\0", 8));  // colour 5 is none
        file.number(0x2C, 1).number(0, 4).number(std::uint32_t(width), 2).number(std::uint32_t(height), 2).number(0, 1);
        file.number(7, 1);
        for (int y = 0; y < height; ++y) {
            file.number(std::uint32_t(width + 1), 1).number(0x80, 1);
            for (int x = 0; x < width; ++x) file.number(std::uint32_t(x + 5 * y) % 128, 1);
        }
        file.number(1, 1).number(0x81, 1).number(0, 1);
    }
    return file.number(0x3B, 1).bytes;
}

/// By the encoder of the library, without losses.
std::string webp(int width, int height) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libwebp");
    if (codec == nullptr) return "";
    AVCodecContext* encoder = avcodec_alloc_context3(codec);
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = AV_PIX_FMT_BGRA;
    encoder->time_base = {1, 25};
    AVDictionary* options = nullptr;
    av_dict_set(&options, "lossless", "1", 0);
    avcodec_open2(encoder, codec, &options);
    av_dict_free(&options);
    AVFrame* frame = av_frame_alloc();
    frame->width = width;
    frame->height = height;
    frame->format = AV_PIX_FMT_BGRA;
    av_frame_get_buffer(frame, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QX_Pixel8 p = colour(x, y);
            const std::uint8_t bytes[] = {p.blue, p.green, p.red, p.alpha};
            std::memcpy(frame->data[0] + y * frame->linesize[0] + 4 * x, bytes, 4);
        }
    }
    AVPacket* packet = av_packet_alloc();
    avcodec_send_frame(encoder, frame);
    avcodec_send_frame(encoder, nullptr);
    std::string bytes;
    if (avcodec_receive_packet(encoder, packet) >= 0)
        bytes.assign(reinterpret_cast<char*>(packet->data), std::size_t(packet->size));
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&encoder);
    return bytes;
}

std::vector<std::pair<std::string, std::string>> all_kinds() {
    return {{"a.bmp", bmp(5, 3, 32)},        {"b.tga", targa(5, 3, true)}, {"c.dpx", dpx(5, 3, Order::high_first, 2)},
            {"d.hdr", radiance(9, 3, true)}, {"e.gif", gif(6, 4, true)},   {"f.webp", webp(5, 3)}};
}

TEST_F(Further, EightBitsAreThoseOfTheFile) {
    for (const bool alpha : {false, true}) {
        put("a.bmp", bmp(5, 3, alpha ? 32 : 24));
        put("b.tga", targa(5, 3, alpha));
        put("c.webp", webp(5, 3));
        for (const std::string name : {"a.bmp", "b.tga", "c.webp"}) {
            const Picture found = read(name);
            ASSERT_EQ(found.world->width, 5);
            const bool has_alpha = alpha || name != "a.bmp";
            EXPECT_EQ(found.has_alpha, has_alpha) << name;
            each_pixel<QX_Pixel8>(*found.world, [&](const QX_Pixel8& p, int x, int y) {
                const QX_Pixel8 e = colour(x, y);
                EXPECT_EQ((List{double(p.alpha), double(p.red), double(p.green), double(p.blue)}),
                          (List{has_alpha ? double(e.alpha) : 255.0, double(e.red), double(e.green), double(e.blue)}))
                    << name << " " << x << ", " << y;
            });
        }
    }
}

/// v of 1023 is the nearest of 65535, and that of a world of 16 bits is what such a file has.
TEST_F(Further, TenBitsBecomeTheNearestOfSixteen) {
    for (const Order order : {Order::low_first, Order::high_first}) {
        put("a.dpx", dpx(5, 3, order, 3));
        const Picture found = read("a.dpx");
        EXPECT_EQ(found.notes, Names{"its values are densities of film, they are taken as they are"});
        ASSERT_TRUE(found.carried);
        each_pixel<QX_Pixel16>(*found.carried, [&](const QX_Pixel16& p, int x, int y) {
            const std::uint16_t values[] = {p.red, p.green, p.blue};
            for (int c = 0; c < 3; ++c) EXPECT_EQ(values[c], std::lround(ten_bits(x, y, c) * 65535.0 / 1023)) << c;
        });
    }
}

TEST_F(Further, LightIsExact) {
    for (const bool planes : {false, true}) {
        const int width = planes ? 9 : 5;
        put("a.hdr", radiance(width, 3, planes));
        const Picture found = read("a.hdr");
        ASSERT_EQ(found.world->width, width);
        EXPECT_TRUE(found.linear && !found.has_alpha);
        each_pixel<QX_PixelFloat>(*found.world, [&](const QX_PixelFloat& p, int x, int y) {
            const float values[] = {p.red, p.green, p.blue};
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(values[c], std::ldexp(float((37 * x + 59 * y + 80 * c) % 256), 120 + x + y - 136)) << x << y;
        });
    }
}

TEST_F(Further, PalettesAndClearColours) {
    for (const bool clear : {false, true}) {
        put("a.gif", gif(6, 4, clear, clear ? 2 : 1));
        const Picture found = read("a.gif");
        EXPECT_EQ(found.has_alpha, clear);
        EXPECT_EQ(found.notes, clear ? Names{"only its first frame is used"} : Names{});
        each_pixel<QX_Pixel8>(*found.world, [&](const QX_Pixel8& p, int x, int y) {
            const int i = x + 5 * y;
            if (clear && i == 5) {
                EXPECT_EQ(p.alpha, 0);
            } else {
                EXPECT_EQ((List{double(p.alpha), double(p.red), double(p.green), double(p.blue)}),
                          (List{255, double(i), 2.0 * i, 255.0 - i}));
            }
        });
    }
}

TEST_F(Further, TheyAreReadOnly) {
    EXPECT_EQ(fault_of<Failure>([&] { write("a.bmp", noise(4, 4)); }),
              folder / "a.bmp" + ": BMP is only read; written are png, jpg, tif, exr, raw");
    put("b.png", bmp(5, 3, 24));
    EXPECT_EQ(read("b.png").in_file.format, std::string("BMP")) << "by content";
    put("c.tga", "no picture at all, but long enough");
    EXPECT_HOLDS(fault("c.tga"),
                 "is no picture of a known format (PNG, JPEG, TIFF, OpenEXR, BMP, GIF, WebP, TGA, DPX, HDR)");
}

/// Damage ends in a picture or in a fault of ours; what is cut short is none.
TEST_F(Further, DamagedOnesDoNoWorse) {
    std::mt19937 random(9);
    for (const auto& [name, whole] : all_kinds()) {
        SCOPED_TRACE(name);
        put(name, whole);
        EXPECT_EQ(fault(name), "");
        put(name, whole.substr(0, whole.size() / 2));
        EXPECT_TRUE(fault(name).starts_with(folder / name));
        for (int round = 0; round < 300; ++round) {
            std::string damaged = whole.substr(0, round % 4 ? whole.size() : 1 + random() % whole.size());
            for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
            put(name, damaged);
            const std::string words = fault(name);
            EXPECT_TRUE(words.empty() || words.starts_with(folder / name)) << words;
        }
    }
}

}  // namespace
