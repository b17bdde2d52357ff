// SPDX-License-Identifier: Apache-2.0
// qx comp --emit-scene: the scene makes the picture of the line.
#include <nlohmann/json.hpp>

#include "QX/compositing/QX_CompositeMode.h"
#include "scene/Modes.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class EmitScene : public QxTest {
protected:
    EmitScene() {
        gradient("a.png", 40, 30, 255);
        write("b.png", 30, 20, [](int x, int y) { return argb(255 - 9 * y, 11 * y, 57 * x, 200 - x); });
        write("m.png", 30, 20, [](int x, int y) { return argb(8 * x + y, 9 * x, 11 * y, 80); });
        write("deep.tif",
              picture<QX_Pixel16>(33, 22, true,
                                  [](int x, int y) {
                                      return QX_Pixel16{static_cast<std::uint16_t>(900 * x), 30000,
                                                        static_cast<std::uint16_t>(1000 * y), 7};
                                  }),
              16);
        std::filesystem::create_directory(folder / "sub");
        put("kernel.txt", "0 -1 0\n-1 5 -1\n0 -1 0\n");
    }
    void expect_same(const std::string& line, const std::string& more = "") const {
        SCOPED_TRACE(line);
        run("comp " + line + " -q --emit-scene sub/s.json -o c.tif " + more);
        run("render sub/s.json -q -o r.tif " + more);
        EXPECT_TRUE(same("c.tif", "r.tif"));
    }
};

TEST_F(EmitScene, RendersThePictureOfTheLine) {
    for (const std::string line :
         {"a.png b.png",
          "a.png b.png --opacity 0.3 --at -5,7 --seed 9 --field odd",
          "--mode screen a.png b.png --at 3,4 b.png --mode multiply --at 9,9",
          "a.png b.png --mask m.png --at 2,3",
          "a.png b.png --mask m.png --mask-kind inverse-luma --mask-at 7,5 --at 2,3",
          "a.png b.png --mode mask-crossfade --mask m.png --opacity 0.6",
          "a.png b.png --linear 2.2 --rgb-only",
          "a.png b.png --at 5,6 --scale 0.7 --rotate 33 --anchor 8,6.5 --translate 0.3,0.1 --quality bicubic",
          "a.png b.png --at 5,6 --matrix 0.5,0.1,0,-0.2,0.6,0,1,2,1 --quality draft --mask m.png",
          "a.png b.png --gravity south-east --fit 20x20 --at 10%,3",
          "a.png b.png --fit cover --mask m.png",
          "a.png b.png --at 3.5,4",
          "a.png b.png --gravity center --rotate 30 --anchor 3,4",
          "a.png b.png --at 10%,20%",
          "a.png b.png --scale 1,2",
          "a.png deep.tif --mode add",
          "deep.tif a.png --mode hue --opacity 0.123",
          "a.png b.png --depth 32 --mode soft-light",
          "a.png b.png --space display-p3 --profile rec709-2.4 --to srgb",
          "a.png b.png --space background --background-profile rec709-2.4 --linear profile --linearize",
          "a.png b.png --effect blur:radius=4,2:grow --effect adjust:hue=40.5:saturation=0.5 --at 3,3",
          "a.png b.png --effect convolve:kernel=kernel.txt --effect blend:with=m.png:ratio=0.25",
          "a.png b.png --effect convolve:filter=gaussian\\\\:2 --effect blur:kind=disc:radius=3:map=m.png:gain=2",
          "a.png b.png --effect shadow:offset=9,7:opacity=0.6:colour=0.05,0,0.15 --scale 0.8"}) {
        expect_same(line);
    }
}

/// What is chosen of the file is in the scene.
TEST_F(EmitScene, WritesFilesOfTheSameKind) {
    for (const std::string more : {"--flatten 0.2,0.4,0.6 --output-depth 16 --compression lzw -o c.tif",
                                   "--depth 32 --half --compression piz -o c.exr", "--depth 32 --float -o c.exr",
                                   "--flatten black --jpeg-quality 20 -o c.jpg", "--compression 0 -o c.png"}) {
        run("comp a.png b.png -q --emit-scene sub/s.json " + more);
        const std::string name = more.substr(more.size() - 5);
        run("render sub/s.json -q -o r" + name.substr(1));
        EXPECT_TRUE(same(name, "r" + name.substr(1))) << more;
        const auto length = [&](const std::string& file) { return double(std::filesystem::file_size(folder / file)); };
        EXPECT_NEAR(length(name), length("r" + name.substr(1)), 100) << more;  // a frame of a scene has a mark
    }
}

TEST_F(EmitScene, EveryModeAtEveryDepthAndAPlace) {
    for (const auto& mode : qx::scene::all_modes()) {
        const std::string mask = mode.number == xfer_mask_crossfade ? " --mask m.png" : "";
        const std::string depth = mode.number % 3 == 0 ? "8" : mode.number % 3 == 1 ? "16" : "32";
        expect_same("a.png b.png --at 7,-4 --opacity 0.7 --mode " + std::string(mode.name) + mask + " --depth " +
                    depth);
    }
}

TEST_F(EmitScene, TellsItInWordsAndByNamesFromItsFolder) {
    run("comp a.png b.png --mode soft-light --opacity 0.9 --at 5,6 --rotate 90 a.png --at 3,4 --emit-scene sub/s.json "
        "-o c.png");
    const auto scene = nlohmann::json::parse(bytes("sub/s.json"));
    EXPECT_EQ(scene["background"], "../a.png");
    const auto& layer = scene["layers"][0];
    EXPECT_EQ(layer["file"], "../b.png");
    EXPECT_EQ(layer["mode"], "soft_light");
    EXPECT_EQ(layer["opacity"], 0.9);
    EXPECT_EQ(layer["transform"]["rotate"], 90);
    EXPECT_EQ(layer["transform"]["translate"], nlohmann::json({5, 6}));
    EXPECT_EQ(scene["layers"][1], nlohmann::json({{"file", "../a.png"}, {"mode", "over"}, {"at", {3, 4}}}));
}

TEST_F(EmitScene, WrongUses) {
    const std::string shadow =
        (std::filesystem::path(QX_COMMAND).parent_path() / "../lib/qx/effects/shadow.so").string();
    expect_faults(2, "comp a.png b.png ", " -o c.png",
                  {"--effect " + shadow + " --emit-scene s.json => a scene names no effect by its file",
                   "--emit-scene a.png => is a picture of this line", "--emit-scene c.png => is a picture of this line",
                   "--matrix 1e9,0,0,0,1,0,1e9,0,1 --at 1,1 --emit-scene s.json => a number of its matrix is above"});
    expect_faults(1, "comp a.png b.png ", "", {"--emit-scene no/s.json -o c.png => no/s.json: its folder is missing"});
}

}  // namespace
