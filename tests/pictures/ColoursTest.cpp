// SPDX-License-Identifier: Apache-2.0
// What files say of their colours: kept, written back, and told where a file cannot say it.
#include "pictures/Losses.h"
#include "tests/pictures/Embedding.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using Kind = ColourMeaning::Kind;
using PngColour = InFolder;
using Profiles = InFolder;

const std::string kLinear("\0\x01\x86\xA0", 4), kUsual("\0\0\xB1\x8F", 4);  // 100000 and 45455
/// cHRM of a wide space: white, red, green, blue in 1 / 100,000.
const std::string kWide(
    "\0\0\x7A\x26\0\0\x80\x84\0\x01\x09\xA0\0\0\x7D\0\0\0\x67\xC0\0\x01\x0D\x88\0\0\x3A\x98\0\0\x17\x70", 32);
const std::string kUsualPrimaries(
    "\0\0\x7A\x26\0\0\x80\x84\0\0\xFA\0\0\0\x80\xE8\0\0\x75\x30\0\0\xEA\x60\0\0\x3A\x98\0\0\x17\x70", 32);

struct Case {
    std::vector<std::string> chunks;  ///< in the order of a file
    Kind counts;
    const char* note;  ///< of a TIFF, or null
};
constexpr const char* kLost = "what its chunks gAMA and cHRM say is left out, only PNG holds them";

TEST_F(PngColour, ChunksAreWrittenBackAsTheyCame) {
    const std::string icc = iccp_chunk(small_profile());
    const auto srgb = [](char intent) { return png_chunk("sRGB", {intent}); };
    const auto gamma = [](const std::string& v) { return png_chunk("gAMA", v); };
    const auto wide = png_chunk("cHRM", kWide), usual = png_chunk("cHRM", kUsualPrimaries);
    const Case cases[] = {
        {{}, Kind::unknown, nullptr},
        {{srgb(0)}, Kind::srgb, nullptr},
        {{srgb(3)}, Kind::srgb, nullptr},
        {{srgb(1), gamma(kUsual), usual}, Kind::srgb, nullptr},
        {{srgb(1), gamma(kLinear), wide}, Kind::srgb, nullptr},  // which a library calls unlikely
        {{gamma(kUsual)}, Kind::gamma, nullptr},
        {{gamma(kUsual), usual}, Kind::gamma, nullptr},
        {{gamma(kUsual), wide}, Kind::gamma, kLost},
        {{gamma(kLinear)}, Kind::gamma, kLost},
        {{wide}, Kind::unknown, kLost},
        {{icc}, Kind::icc, nullptr},
        {{icc, srgb(2), gamma(kLinear), wide}, Kind::icc, nullptr},
    };
    for (const auto& [chunks, counts, note] : cases) {
        std::string all, names;
        for (const auto& chunk : chunks) {
            all += chunk;
            names += chunk.substr(4, 4) + " ";
        }
        SCOPED_TRACE(names);
        put_png(folder / "a.png", PNG_COLOR_TYPE_RGB, all);
        const auto in = read("a.png");
        EXPECT_EQ(in.notes, Names{});
        EXPECT_EQ(meaning_of(in.colours, in.linear).kind, counts);
        write("b.png", in);
        const std::string file = bytes("b.png");
        std::size_t at = 33;  // behind the header
        for (const auto& chunk : chunks) {
            at = file.find(chunk == icc ? "iCCP" : chunk, at);
            EXPECT_NE(at, std::string::npos);
        }
        std::size_t count = 0;
        for (const char* name : {"iCCP", "sRGB", "gAMA", "cHRM"}) count += file.find(name) != std::string::npos;
        EXPECT_EQ(count, chunks.size());
        EXPECT_EQ(in.colours.icc.bytes, counts == Kind::icc ? small_profile() : Bytes{});
        EXPECT_TRUE(all != icc || profile_in_png(folder / "b.png") == small_profile());
        EXPECT_EQ(left_out("x.png", in, 8), Names{});
        EXPECT_EQ(left_out("x.tif", in, 8), note ? Names{note} : Names{});
    }
}

TEST_F(PngColour, TheExponentAndPrimariesAreTold) {
    put_png(folder / "a.png", PNG_COLOR_TYPE_RGB, png_chunk("gAMA", kUsual) + png_chunk("cHRM", kWide));
    const auto wide = meaning_of(read("a.png").colours, false);
    EXPECT_DOUBLE_EQ(wide.exponent, 100000 / 45455.0);
    EXPECT_EQ(wide.primaries, (Primaries{0.68f, 0.32f, 0.2656f, 0.69f, 0.15f, 0.06f, 0.3127f, 0.329f}));
    put_png(folder / "a.png", PNG_COLOR_TYPE_GRAY, png_chunk("gAMA", kLinear));
    EXPECT_EQ(meaning_of(read("a.png").colours, false).exponent, 1);
    EXPECT_EQ(meaning_of(read("a.png").colours, false).primaries, kRec709Primaries);
    ColourTags light;
    EXPECT_EQ(meaning_of(light, true).kind, Kind::light);
    EXPECT_EQ(meaning_of(light, true).primaries, kRec709Primaries);
    light.primaries = wide.primaries;
    EXPECT_EQ(meaning_of(light, true).primaries, wide.primaries);
    EXPECT_EQ(meaning_of(light, false).kind, Kind::unknown);
}

TEST_F(PngColour, DamagedChunksAreTold) {
    std::string false_sum = png_chunk("gAMA", kUsual);
    false_sum.back() = static_cast<char>(false_sum.back() ^ 1);
    std::string torn = iccp_chunk(small_profile());
    torn.back() = static_cast<char>(torn.back() ^ 1);
    const std::string gamma = "its chunk gAMA is damaged and is left out", profile = "its colour profile is damaged (";
    const std::pair<std::string, std::string> cases[] = {
        {png_chunk("sRGB", "\x04"), "its chunk sRGB is damaged and is left out"},
        {png_chunk("sRGB", "\x01\x01"), "its chunk sRGB is damaged and is left out"},
        {png_chunk("gAMA", std::string(4, '\0')), gamma},
        {png_chunk("gAMA", std::string("\x80\0\0\x01", 4)), gamma},
        {png_chunk("gAMA", kUsual.substr(1)), gamma},
        {false_sum, gamma},
        {png_chunk("cHRM", kWide.substr(1)), "its chunk cHRM is damaged and is left out"},
        {png_chunk("cHRM", std::string(32, '\x80')), "its chunk cHRM is damaged and is left out"},
        {torn, profile + "its checksum is wrong) and is left out"},
        {png_chunk("iCCP", ""), profile + "it cannot be read) and is left out"},
        {png_chunk("iCCP", std::string("name\0", 5)), profile + "it cannot be read) and is left out"},
        {png_chunk("iCCP", std::string("name\0\0", 6)), profile + "it cannot be read) and is left out"},
        {png_chunk("iCCP", std::string("name\0\0nothing packed", 20)), profile + "it cannot be read) and is left out"},
        {iccp_chunk(Bytes((std::size_t{64} << 20) + 5)), profile + "it is above 64 MB) and is left out"},
    };
    for (const auto& [chunk, note] : cases) {
        put_png(folder / "a.png", PNG_COLOR_TYPE_RGB, chunk);
        const auto in = read("a.png");
        EXPECT_EQ(in.notes, Names{note});
        EXPECT_EQ(meaning_of(in.colours, false).kind, Kind::unknown) << note;
    }
}

const char* const kNames[] = {"a.png", "a.jpg", "a.tif"};

TEST_F(Profiles, AreKeptWhereTheyFitThePixels) {
    const struct {
        const char* space;
        bool grey;
        const char* note;
    } cases[] = {
        {"RGB ", false, nullptr},
        {"RGB ", true, nullptr},
        {"GRAY", true, nullptr},
        {"GRAY", false, "its colour profile is not for RGB and is left out"},
        {"CMYK", false, "its colour profile is not for RGB and is left out"},
        {"CMYK", true, "its colour profile is not for grey and is left out"},
        {"Lab ", false, "its colour profile is of no use here (it is for neither RGB, grey nor CMYK) and is left out"}};
    for (const auto& [space, grey, note] : cases) {
        Bytes block = profile_of(space);
        const Bytes profile = block;
        block.push_back(0);  // behind its end
        for (const char* name : kNames) {
            SCOPED_TRACE(std::string(space) + (grey ? " in grey, " : " in RGB, ") + name);
            put_embedding(folder / name, grey ? IccSpace::grey : IccSpace::rgb, block);
            const auto in = read(name);
            EXPECT_EQ(in.notes, note ? Names{note} : Names{});
            EXPECT_EQ(in.colours.icc.bytes, note ? Bytes{} : profile);
            if (note) continue;
            const bool is_grey = space[0] == 'G';
            EXPECT_EQ(in.colours.icc.space, is_grey ? IccSpace::grey : IccSpace::rgb);
            const Names lost{"its grey colour profile is left out, the result is RGB"};
            for (const char* out : {"o.png", "o.jpg", "o.tif"}) {
                EXPECT_EQ(left_out(out, in, 8), is_grey ? lost : Names{}) << out;
                write(out, in);
                EXPECT_EQ(read(out).colours.icc.bytes, is_grey ? Bytes{} : profile) << out;
                EXPECT_EQ(read(out).notes, Names{}) << out;
            }
        }
    }
}

TEST_F(Profiles, CmykIsRefusedByWhatItSays) {
    const std::pair<const char*, std::string> cases[] = {
        {"CMYK", "is CMYK; bring it to RGB first: qx convert --to PROFILE"},
        {"RGB ", "is CMYK without a usable colour profile, its colours are not known"},
        {"HSV ", "is CMYK without a usable colour profile, its colours are not known"}};
    for (const auto& [space, words] : cases) {
        const Bytes profile = profile_of(space);
        for (const char* name : {"a.jpg", "a.tif"}) {
            put_embedding(folder / name, IccSpace::cmyk, profile);
            EXPECT_EQ(fault(name), folder / name + ": " + words);
            const auto in = read_inks(folder / name);
            const bool fits = space[0] == 'C';
            EXPECT_EQ(in.colours.icc.bytes, fits ? profile : Bytes{});
            EXPECT_TRUE(!fits || in.colours.icc.space == IccSpace::cmyk);
            EXPECT_EQ(in.notes.size(), fits ? 0u : 1u);
        }
    }
    for (const char* name : kNames) {
        put_embedding(folder / name, IccSpace::rgb, small_profile());
        const auto in = read_inks(folder / name);
        EXPECT_TRUE(!in.cmyk && same_pixels(in, read(name)));
    }
}

TEST_F(Profiles, OnesAboveTheRoomOfAFileAreToldAndLeftOut) {
    auto in = noise(4, 4);
    Bytes& icc = in.colours.icc.bytes = small_profile();
    icc.resize(255 * 65519);
    for (const int shift : {0, 8, 16, 24}) icc[std::size_t(3 - shift / 8)] = std::uint8_t(icc.size() >> shift);
    write("a.jpg", in);
    EXPECT_EQ(read("a.jpg").colours.icc.bytes, icc);
    EXPECT_EQ(left_out("a.jpg", in, 8), Names{});
    icc.push_back(0);
    write("a.jpg", in);
    EXPECT_TRUE(read("a.jpg").colours.icc.bytes.empty());
    EXPECT_EQ(left_out("a.jpg", in, 8), Names{"its colour profile is left out, it is too large for JPEG"});
    EXPECT_EQ(left_out("a.tif", in, 8), Names{});
}

/// Whatever is wrong with a block, it is taken as far as it says or left out with a note.
TEST_F(Profiles, DamagedOnesAreKeptOrTold) {
    int kept = 0, told = 0;
    for (const auto seed : seeds(2000)) {
        std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
        Bytes block = small_profile();
        const auto reach = [&] { return random() % (random() % 2 ? 148 : block.size()); };
        switch (random() % 4) {
            case 0:
                block.resize(1 + random() % block.size());
                break;
            case 1:
                block.resize(block.size() + random() % 100);
                break;
            case 2:
                block[random() % 4] = static_cast<std::uint8_t>(random());
                break;
            default:
                block[reach()] ^= std::uint8_t(1 << random() % 8);
        }
        if (random() % 2) block[reach() % block.size()] ^= std::uint8_t(1 << random() % 8);
        const char* name = kNames[seed % 3];
        put_embedding(folder / name, random() % 2 ? IccSpace::grey : IccSpace::rgb, block);
        const auto in = read(name);
        const Bytes& icc = in.colours.icc.bytes;
        ASSERT_EQ(icc.empty(), in.notes.size() == 1) << seed;
        ASSERT_TRUE(icc.size() <= block.size() && std::equal(icc.begin(), icc.end(), block.begin())) << seed;
        ++(icc.empty() ? told : kept);
    }
    EXPECT_TRUE(kept + told < 2000 || std::min(kept, told) > 300);
}

}  // namespace
