// SPDX-License-Identifier: Apache-2.0
// How files are read and written: streams, orientation, layers, packing, movies, and what scenes say of it.
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;

class FileOptions : public QxTest {
protected:
    FileOptions() {
        write("a.png", 20, 16, [](int x, int y) { return argb(x * 12, 9 * x, 7 * y, 11 * (x + y)); });
        gradient("o.png", 20, 16, 255, 30);
    }
    /// A line whose streams the line itself tells.
    void pass(const std::string& line) const {
        const auto outcome = qx(line + " && echo fine");
        EXPECT_EQ(outcome.output, "fine\n") << line;
    }
    std::string said(const std::string& arguments) const { return qx(arguments).output; }
};

TEST_F(FileOptions, StandardStreamsHoldWhatFilesDo) {
    pass("convert - -o - <a.png >b.png");
    EXPECT_TRUE(same("a.png", "b.png"));
    EXPECT_EQ(bytes("b.png").substr(1, 3), "PNG");
    pass("comp - - --at 2,3 -o tif:- <a.png >c.tif");  // read twice
    run("comp a.png a.png --at 2,3 -o c.png");
    EXPECT_TRUE(same("c.tif", "c.png"));
    pass("convert o.png -o raw:- >o.raw");
    const auto picture = read("o.png");
    std::string raw;
    each_pixel<QX_Pixel8>(*picture.world, [&](const QX_Pixel8& p, int, int) {
        for (const std::uint8_t value : {p.red, p.green, p.blue, p.alpha}) raw += static_cast<char>(value);
    });
    EXPECT_EQ(bytes("o.raw"), raw);
    pass("convert - --raw 20x16:rgba -o d.png <o.raw");
    EXPECT_TRUE(same("d.png", "o.png"));
    std::string sixteen;  // B, G, R of 16 bits
    for (int i = 0; i < 320 * 3; ++i) sixteen += {static_cast<char>(i), static_cast<char>(i / 7)};
    put("grey.raw", std::string(20 * 16, '\x47'));  // as packets of a stream begin
    pass("comp - o.png --raw 20x16:gray -o e.png <grey.raw");
    EXPECT_EQ(read("e.png").world->width, 20);
    put("deep.raw", sixteen);
    pass("convert - --raw 20x16:bgr48le -o deep.tif <deep.raw");
    pass("convert - --raw 20x16:bgr48le -o raw:- <deep.raw >back.raw");
    std::string expected;
    for (std::size_t i = 0; i < sixteen.size(); i += 6) {
        for (const std::size_t channel : {4, 2, 0}) expected += sixteen.substr(i + channel, 2);
        expected += "\xFF\xFF";
    }
    EXPECT_EQ(bytes("back.raw"), expected) << "every value of 16 bits passes";
}

TEST_F(FileOptions, FramesFollowOneAnotherThroughPipes) {
    put_quoted(
        "s.json",
        "{'size': [20, 16], 'frames': [1, 3], 'background': [0, 0, 0, 1], 'layers': [{'file': 'o.png', "
        "'transform': {'translate': {'keys': [{'frame': 1, 'value': [0, 0]}, {'frame': 3, 'value': [8, 0]}]}}}]}");
    run("render s.json -o f.#.png");
    pass("render s.json -o - >all");
    EXPECT_EQ(bytes("all"), bytes("f.1.png") + bytes("f.2.png") + bytes("f.3.png"));
    pass("render s.json -o nut:- >s.nut");
    pass("retime - --speed 1 -o g.#.png <s.nut");
    pass("retime - --speed 1 -o - <s.nut >again");
    EXPECT_EQ(bytes("again"), bytes("g.1.png") + bytes("g.2.png") + bytes("g.3.png"));
    for (const std::string i : {"1", "2", "3"}) EXPECT_TRUE(same("f." + i + ".png", "g." + i + ".png")) << i;
    EXPECT_HOLDS(said("identify s.nut"), "movie, 20 x 16 pixels, 8 bits, 3 frames, 25 a second");
    pass("identify - <s.nut >said");
    EXPECT_HOLDS(bytes("said"), "-: movie, 20 x 16 pixels, 8 bits, 3 frames");
    pass("comp - o.png --opacity 0.5 -o h.#.png <s.nut");
    pass("comp f.2.png o.png --opacity 0.5 -o h.png");
    EXPECT_TRUE(same("h.1.png", "h.png"));
    pass("render s.json -o nut:- | ffmpeg -v error -i - -timecode 01:02:03:04 t.mov");
    const auto movie = nlohmann::json::parse(said("identify --json t.mov"))[0];
    EXPECT_EQ(movie["time_code"], "01:02:03:04");
    EXPECT_EQ(movie["codec"], "h264");
}

TEST_F(FileOptions, FilesAreWrittenAsAsked) {
    qx("convert a.png -o e.exr");
    for (const std::string packing : {"none", "rle", "zips", "zip", "piz"}) {
        qx("convert a.png -o o.exr --compression " + packing);
        EXPECT_TRUE(same("o.exr", "e.exr")) << packing;
        EXPECT_HOLDS(said("identify o.exr"), "compression    " + packing + "\n");
    }
    EXPECT_HOLDS(qx("convert a.png -o o.exr --compression dwaa").errors,
                 "values are changed a little by the compression dwaa");
    for (const std::string packing : {"none", "lzw", "zip", "packbits"}) {
        run("convert a.png -o o.tif --compression " + packing);
        EXPECT_TRUE(same("o.tif", "a.png")) << packing;
        EXPECT_HOLDS(said("identify o.tif"), "compression    " + packing + "\n");
    }
    run("convert o.png -o small.jpg --jpeg-quality 10");
    run("convert o.png -o large.jpg --jpeg-quality 100");
    EXPECT_LT(bytes("small.jpg").size(), bytes("large.jpg").size());
    run("convert a.png --output-depth 16 -o deep.png");
    EXPECT_HOLDS(said("identify deep.png"), "16 bits");
    run("convert a.png --flatten '#ff8000' -o flat.png");
    run("comp flat.png a.png -o copy.png");
    const auto a = read("a.png"), flat = read("flat.png");
    EXPECT_FALSE(flat.has_alpha);
    each_pixel<QX_Pixel8>(*flat.world, [&](const QX_Pixel8& p, int x, int y) {
        const auto s = row_of<QX_Pixel8>(*a.world, y)[x];
        const auto mixed = [&](int colour, int ground) {
            return (colour * s.alpha + ground * (255 - s.alpha)) / 255.0;
        };
        EXPECT_EQ(p.alpha, 255);
        EXPECT_NEAR(p.red, mixed(s.red, 255), 1);
        EXPECT_NEAR(p.green, mixed(s.green, 128), 1);
        EXPECT_NEAR(p.blue, mixed(s.blue, 0), 1);
    });
}

TEST_F(FileOptions, ScenesTellHowTheyAreWritten) {
    put_quoted("s.json",
               "{'size': [20, 16], 'frames': [1, 1], 'layers': [{'file': 'a.png'}], "
               "'output': {'flatten': 'white', 'depth': 16, 'compression': 1}}");
    run("render s.json -o f.png");
    run("convert a.png --flatten white --output-depth 16 -o e.png");
    EXPECT_TRUE(same("f.png", "e.png"));
    run("render s.json -o g.png --flatten black --output-depth 8");
    EXPECT_HOLDS(said("identify g.png"), "8 bits");
    EXPECT_EQ(channels(read("g.png"), 0, 0), (List{255, 0, 0, 0}));
    put_quoted("m.json",
               "{'size': [20, 16], 'frames': [1, 2], 'layers': [{'file': 'a.png'}], "
               "'output': {'codec': 'ffv1', 'pixel-format': 'bgr0', 'compression': 1, 'half': true}}");
    run("render m.json -o m.mkv -q");
    EXPECT_HOLDS(said("identify m.mkv"), "2 frames");
    run("render m.json -o m.#.png");  // what is told of other files is not for these
}

TEST_F(FileOptions, HeadsAreToldForPrograms) {
    const auto json = said("identify a.png o.png --json");
    EXPECT_HOLDS(json, "\"size\": [\n      20,\n      16\n    ]");
    EXPECT_HOLDS(json, "\"alpha\": \"straight\"");
    EXPECT_HOLDS(json, "\"alpha\": \"none\"");
    const auto outcome = qx("identify none.png a.png");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_HOLDS(outcome.errors, "qx: none.png: No such file");
    EXPECT_HOLDS(outcome.output, "a.png: PNG, 20 x 16 pixels");
}

TEST_F(FileOptions, WrongUsesAreToldInALine) {
    put_quoted("s.json", "{'size': [20, 16], 'frames': [1, 2], 'layers': [{'file': 'a.png'}]}");
    put_quoted("bad.json", "{'size': [20, 16], 'frames': [1, 2], 'layers': [], 'output': {'compresion': 3}}");
    put_quoted("odd.json", "{'size': [20, 16], 'frames': [1, 2], 'layers': [], 'output': {'flatten': 'mauve'}}");
    put("few.raw", "abc");
    expect_faults(
        2, "", "",
        {"convert a.png -o o.png --compression zip => --compression zip: ",
         "convert a.png -o o.png --compression 10 => --compression 10",
         "convert a.png -o o.tif --compression zap => not one of none, lzw, zip, packbits; the nearest is zip",
         "convert a.png -o o.exr --compression 3 => not one of none, rle, zips, zip, piz",
         "convert o.png -o o.jpg --compression 3 => --compression is for PNG, TIFF and OpenEXR",
         "convert o.png -o o.png --jpeg-quality 50 => --jpeg-quality is for JPEG",
         "convert o.png -o o.jpg --jpeg-quality 0 => --jpeg-quality 0",
         "convert o.png -o o.jpg --jpeg-quality 101 => --jpeg-quality 101",
         "convert a.png -o o.png --flatten mauve => --flatten mauve: not a colour",
         "convert a.png -o o.png --flatten '#12345' => --flatten #12345: not a colour: black",
         "convert a.png -o o.png --flatten 1,1 => not a colour: black, white, #RRGGBB or R,G,B",
         "convert a.png -o o.png --flatten 1,1,2 => --flatten 2",
         "convert a.png -o o.png --output-depth 12 => --output-depth 12",
         "convert - -o o.png --raw 20x16 => --raw 20x16: not a size and pixels WxH:FORMAT",
         "convert - -o o.png --raw 0x16:rgba => --raw 0x16:rgba: not a size and pixels",
         "convert - -o o.png --raw 20x16:rgbz => rgbz is none of gray, rgb24",
         "render s.json -o x.#.png --codec libx264 => --codec is for movies",
         "render s.json -o x.#.png --crf 3 => --crf is for movies",
         "render s.json -o x.#.png --bitrate 3M => --bitrate is for movies",
         "render s.json -o x.#.png --pixel-format gray => --pixel-format is for movies",
         "render s.json -o x.mp4 --crf 3 --bitrate 3M => --crf excludes --bitrate",
         "render s.json -o x.mp4 --crf 64 => --crf 64",
         "render s.json -o x.mp4 --bitrate fast => --bitrate fast",
         "render s.json -o x.mp4 --output-depth 16 => --output-depth is for pictures",
         "render s.json -o x.mp4 --compression 3 => --compression is for PNG, TIFF and OpenEXR",
         "render s.json -o - --resume => --resume is for files, not for standard output",
         "render s.json -o bmp:- => bmp:-: its ending is none of png",
         "convert a.png -o x.gif => x.gif: its ending is none of",
         "render odd.json -o x.#.png => --flatten mauve",
         "render s.json -o x.mp4 --codec ffv1 => x.mp4: codec ffv1: is none that mp4 holds"});
    expect_faults(
        1, "", "",
        {"render bad.json -o x.#.png => bad.json: /output/compresion is an unknown key; the nearest is compression",
         "convert a.png:left -o o.png => a.png:left: No such file", "convert - -o o.png => -: is empty",
         "convert - --raw 9x9:gray -o o.png => -: is empty"});
}

}  // namespace
