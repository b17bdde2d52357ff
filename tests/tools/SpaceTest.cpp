// SPDX-License-Identifier: Apache-2.0
// Pictures of different profiles in one space: by comp and by render, against converting each of them first.
#include "scene/colour/Convert.h"
#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
namespace scene = qx::scene;

class Space : public QxTest {
protected:
    Space() {
        make("bg", "srgb", 8, [](int x, int y) { return argb(255, 9 * x, 7 * y, 200 - x); });
        make("p3", "display-p3", 8, [](int x, int y) { return argb(13 * x, 97 * x, 31 * y, x * y); });
        make("wide", "rec2020", 16, [](int x, int y) { return argb(255 - 9 * y, 11 * y, 57 * x, 90 + x); });
        make("plain", "", 8, [](int x, int y) { return argb(x * y, 60 * x, 200, 31 * y); });
    }
    /// A file of a profile, and of no tag without one.
    template <class Make>
    void make(const std::string& name, const std::string& profile, int depth, const Make& pixel) const {
        auto made = picture<QX_Pixel8>(20, 16, true, pixel);
        if (!profile.empty()) scene::assign(made, scene::profile_of_text(profile));
        made.world = qx::pictures::at_depth(name, *made.world, depth);
        write(name + ".png", made, depth);
    }
    /// A copy of a picture whose values are those of another profile.
    void bring(const std::string& name, const std::string& from, const std::string& to, int depth) const {
        const Born born;
        auto made = read(name + ".png");
        scene::convert(name, made, scene::profile_of_text(from), scene::profile_of_text(to),
                       std::max<int>(depth, made.world->Depth()));
        write(name + ".tif", made, depth);
    }
    void expect_same(const std::string& one, const std::string& other, const std::string& out = "o.tif") const {
        SCOPED_TRACE(one + " and " + other);
        EXPECT_EQ(qx(one + " -o " + out).status, 0);
        put("first-" + out, bytes(out));
        EXPECT_EQ(qx(other + " -o " + out).status, 0);
        EXPECT_TRUE(same("first-" + out, out));
    }
};

TEST_F(Space, IsThatOfPicturesThatAreConvertedFirst) {
    for (const auto& [space, depth] :
         Cases<std::string, int>{{"srgb", 16}, {"display-p3", 16}, {"linear-rec2020", 32}}) {
        const std::string deep = " --depth " + std::to_string(depth);
        bring("bg", "srgb", space, depth);
        bring("p3", "display-p3", space, depth);
        bring("wide", "rec2020", space, depth);
        bring("plain", "srgb", space, depth);
        expect_same(
            "comp bg.png p3.png --at 3,2 wide.png --mode screen plain.png --opacity 0.5 --space " + space + deep,
            "comp bg.tif p3.tif --at 3,2 wide.tif --mode screen plain.tif --opacity 0.5" + deep);
    }
    expect_same("comp p3.png p3.png --mode multiply --space background", "comp p3.png p3.png --mode multiply");
    expect_same("comp p3.png bg.png --space background", "comp p3.png bg.png --space display-p3");
    expect_same("comp bg.png p3.png --profile srgb --space srgb", "comp bg.png p3.png");
    expect_same("comp p3.png bg.png --background-profile srgb --space srgb", "comp p3.png bg.png");
    expect_same("comp bg.png bg.png --mask p3.png --mask-kind luma --space srgb",
                "comp bg.png bg.png --mask p3.png --mask-kind luma");  // masks are no colours
}

TEST_F(Space, BlendsInItsOwnLight) {
    make("bg", "gamma-2.2", 8, [](int x, int y) { return argb(255, 9 * x, 7 * y, 200 - x); });
    make("p3", "gamma-2.2", 8, [](int x, int y) { return argb(13 * x, 97 * x, 31 * y, x * y); });
    for (const std::string depth : {"8", "16", "32"}) {
        expect_same("comp bg.png p3.png --space gamma-2.2 --linear profile --depth " + depth,
                    "comp bg.png p3.png --linear 2.2 --depth " + depth);
    }
    expect_same("comp bg.png p3.png --space gamma-2.2 --linearize --linear profile --depth 32",
                "comp bg.png p3.png --space linear --depth 32");
    const auto light = read("o.tif");
    EXPECT_EQ(qx("comp bg.png p3.png --space gamma-2.2 --linearize --to gamma-2.2 --depth 32 -o o.tif").status, 0);
    const auto back = read("o.tif");
    const double exponent = std::floor(2.2 * 65536 + 0.5) / 65536;
    for (const auto& [x, y] : places(20, 16)) {
        const float value = qx::row_of<QX_PixelFloat>(*back.world, y)[x].green;
        const double want = std::pow(qx::row_of<QX_PixelFloat>(*light.world, y)[x].green, 1 / exponent);
        ASSERT_NEAR(value, want, 2e-6);
    }
}

TEST_F(Space, OfASceneIsThatOfComp) {
    const Cases<std::string, std::string> cases{
        {"'space': 'rec2020', 'layers': [{'file': 'p3.png', 'linear': 'profile'}]",
         "p3.png --linear profile --space rec2020"},
        {"'space': 'background', 'output-space': 'display-p3', 'layers': [{'file': 'wide.png'}]",
         "wide.png --space background --to display-p3"},
        {"'space': 'srgb', 'linearize': true, 'layers': [{'file': {'name': 'p3.png', 'profile': 'rec2020'}, 'mask': "
         "'wide.png'}]",
         "p3.png --profile rec2020 --mask wide.png --mask-at 0,0 --space srgb --linearize"},
        {"'layers': [{'file': 'p3.png'}], 'space': 'srgb', 'linearize': false", "p3.png --space srgb"},
    };
    for (const auto& [text, options] : cases) {
        put_quoted("s.json", "{'frames': [1, 1], 'depth': 16, 'background': 'bg.png', " + text + "}");
        expect_same("render s.json", "comp bg.png " + options + " --depth 16");
    }
    put_quoted("s.json",
               "{'frames': [1, 1], 'background': 'bg.png', 'layers': [{'file': 'p3.png', 'effects': "
               "[{'effect': 'blend', 'with': {'name': 'wide.png', 'profile': 'srgb'}}]}], 'space': 'srgb'}");
    bring("p3", "display-p3", "srgb", 8);
    bring("wide", "srgb", "srgb", 8);
    EXPECT_EQ(qx("blend p3.tif wide.tif -o b.tif").status, 0);
    expect_same("render s.json", "comp bg.png b.tif --depth 8");
}

TEST_F(Space, SaysWhatItsResultIs) {
    EXPECT_EQ(qx("comp bg.png p3.png --space display-p3 -o o.png").status, 0);
    std::vector<std::string> notes;
    EXPECT_TRUE(scene::are_one(scene::meaning_of(read("o.png"), notes).profile, scene::profile_of_text("display-p3")));
    const auto light = qx("comp bg.png p3.png --space linear-rec2020 --depth 32 -o o.exr");
    EXPECT_EQ(light.errors, "");
    const auto primaries = read("o.exr").colours.primaries;
    ASSERT_TRUE(primaries);
    const double rec2020[] = {0.708, 0.292, 0.17, 0.797, 0.131, 0.046, 0.3127, 0.329};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR((*primaries)[i], rec2020[i], 2e-4);
    EXPECT_HOLDS(qx("comp bg.png p3.png --space srgb -o o.exr").errors,
                 "is not linear light, which OpenEXR is meant for");
    const auto note = "p3.png: its profile (Display P3) is not the background's (sRGB); values are taken as they are";
    EXPECT_HOLDS(qx("comp bg.png p3.png -o o.png").errors, note);
    EXPECT_HOLDS(qx("comp bg.png plain.png --space srgb -o o.png").errors, scene::kMeaningIsUsual);
    EXPECT_EQ(qx("comp bg.png p3.png --space linear-display-p3 --depth 32 -o o.exr").status, 0);
    const auto named = scene::profile_of_text("linear-display-p3");
    EXPECT_TRUE(scene::are_one(scene::meaning_of(read("o.exr"), notes).profile, named));
}

TEST_F(Space, WrongUseIsOneLine) {
    put("broken.icc", std::string(200, 'x'));
    expect_faults(2, "comp bg.png p3.png ", " -o o.png",
                  {"--linear profile => needs --space", "--to srgb => needs --space", "--linearize => needs --space",
                   "--profile srgb => needs --space", "--background-profile srgb => needs --space",
                   "--space sRBG => the nearest is srgb", "--space srgb --to nosuch.icc => no ICC file",
                   "--space broken.icc => --space broken.icc", "--space srgb --linear profil => --linear profil"});
    put_quoted("s.json", "{'frames': [1, 1], 'background': [0, 0, 0], 'size': [4, 4], 'layers': []}");
    expect_faults(2, "render s.json ", " -o o.png", {"--to srgb => needs --space", "--linearize => needs --space"});
    const std::string begin = "{'frames': [1, 1], 'size': [4, 4], 'background': [0, 0, 0], 'layers': [";
    for (const std::string& row : Names{
             "], 'space': 'background'} => /space is that of the background, which is no picture",
             "], 'space': 'sRBG'} => /space sRBG: is no profile's name",
             "], 'linearize': true} => /linearize needs a space", "], 'output-space': 'srgb'} => /output-space needs",
             "{'file': 'p3.png', 'linear': 'profile'}]} => /layers/0/linear needs a space",
             "{'file': {'name': 'p3.png', 'profile': 'srgb'}}]} => /layers/0/file/profile needs a space",
             "{'file': 'p3.png', 'mask': {'file': {'name': 'p3.png', 'profile': 'srgb'}}}]} => masks are no colours"}) {
        put_quoted("bad.json", begin + halves(row).first);
        expect_fault("render bad.json -o o.png", 1, halves(row).second);
    }
}

}  // namespace
