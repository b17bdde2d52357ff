// SPDX-License-Identifier: Apache-2.0
// qx profile, and qx convert from profile to profile.
#include <nlohmann/json.hpp>

#include "pictures/Light.h"
#include "scene/colour/Profiles.h"
#include "tests/pictures/Embedding.h"
#include "tests/platform/ColourKit.h"
#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
using qx::pictures::IccSpace;

std::string text_of(const ICC& icc) { return {icc.begin(), icc.end()}; }
std::string note(const std::string& words) { return "qx: note: " + words + "\n"; }
const std::string kUsual = note(qx::scene::kMeaningIsUsual);

class ColourCommands : public QxTest {
protected:
    ColourCommands() {
        write("a.png", 20, 16, [](int x, int y) { return argb(x * 13, 97 * x, 31 * y, x * y); });
    }
    /// Conversions that make the same file, and may have notes.
    void expect_same_files(const Names& lines, const std::string& output) const {
        std::string first;
        for (const std::string& line : lines) {
            SCOPED_TRACE(line);
            EXPECT_EQ(qx("convert " + line + " -q -o " + output).status, 0);
            if (first.empty()) first = bytes(output);
            EXPECT_TRUE(bytes(output) == first);
        }
    }
    List pixel(const std::string& name) const { return channels(read(name), 0, 0); }
    nlohmann::json told(const std::string& what) const {
        return nlohmann::json::parse(qx("profile --json " + what).output);
    }
};

TEST_F(ColourCommands, AProfileIsOneByNameFileAndPicture) {
    for (const std::string name : {"srgb", "rec709-2.4", "linear-rec2020", "gamma-1.9"}) {
        SCOPED_TRACE(name);
        const std::string words = qx("profile " + name + " -o p.icc").output;
        EXPECT_EQ(qx("profile p.icc").output, words);
        expect_same_files({"a.png --to p.icc", "a.png --to " + name}, "o.png");
        EXPECT_EQ(qx("profile o.png").output, words + "told       by the file\n");
        EXPECT_EQ(text_of(profile_in_png(folder / "o.png")), bytes("p.icc"));
        run("convert a.png --assign p.icc -o b.png");
        for (const std::string depth : {"8", "16", "32"}) {
            const std::string after = " --to display-p3 --depth " + depth;
            expect_same_files({"b.png" + after, "a.png --from p.icc" + after, "a.png --from " + name + after}, "o.tif");
        }
    }
}

TEST_F(ColourCommands, TellsWhatAProfileIs) {
    const auto p3 = told("display-p3");
    EXPECT_EQ(p3["name"], "Display P3");
    EXPECT_EQ(p3["class"], "display");
    EXPECT_EQ(p3["space"], "RGB");
    EXPECT_FALSE(p3["over_range"]);
    EXPECT_FALSE(p3.contains("told"));
    const std::pair<const char*, List> points[] = {
        {"red", {0.68, 0.32}}, {"green", {0.265, 0.69}}, {"blue", {0.15, 0.06}}, {"white", {0.3127, 0.329}}};
    for (const auto& [name, point] : points) {
        for (std::size_t i = 0; i < 2; ++i) EXPECT_NEAR(p3[name][i].get<double>(), point[i], 3e-5) << name;
    }
    EXPECT_NEAR(p3["gammas"][1].get<double>(), 2.201783, 1e-5);
    EXPECT_TRUE(told("linear")["over_range"]);
    put("inks.icc", text_of(table_profile(4, 2.1)));
    EXPECT_EQ(told("inks.icc")["space"], "CMYK");
    EXPECT_EQ(told("inks.icc")["made_of"], "tables");
    EXPECT_FALSE(told("inks.icc").contains("gammas"));
    EXPECT_EQ(told("a.png")["id"], told("srgb")["id"]);
    EXPECT_FALSE(told("a.png")["told"]);
    const auto plain = qx("profile gamma-2.2").output;
    EXPECT_HOLDS(plain, "name       Gamma 2.2\nclass      display\nspace      RGB\n");
    EXPECT_HOLDS(plain, "gammas     2.2000 2.2000 2.2000\nover-range no\nid         ");
    EXPECT_HOLDS(plain, told("gamma-2.2")["id"].get<std::string>());
}

TEST_F(ColourCommands, PixelsOf8BitsComeBackFrom16) {
    write("all.png", 64, 64,
          [](int x, int y) { return argb(255 - x, 4 * x + y % 4, 4 * y + x % 4, 255 - 3 * x - y % 7); });
    EXPECT_EQ(qx("convert all.png --to display-p3 --depth 16 -o wide.png").errors, kUsual);
    EXPECT_EQ(qx("convert wide.png --to srgb --depth 8 -o o.png").errors, note("wide.png: its 16 bits become 8 bits"));
    EXPECT_TRUE(same("all.png", "o.png"));
    EXPECT_FALSE(same_pixels(read("all.png"), read("wide.png")));
}

TEST_F(ColourCommands, AssigningAndOneProfileChangeNoPixel) {
    run("convert a.png --assign rec2020 -o b.png");
    EXPECT_TRUE(same("a.png", "b.png"));
    EXPECT_EQ(told("b.png")["id"], told("rec2020")["id"]);
    run("convert b.png --to rec2020 -o c.png");
    EXPECT_EQ(bytes("c.png"), bytes("b.png"));
    put_png(folder / "chunks.png", PNG_COLOR_TYPE_RGB, png_chunk("gAMA", std::string("\0\x01\x86\xA0", 4)));
    run("convert chunks.png --assign srgb -o d.png");
    EXPECT_EQ(bytes("d.png").find("gAMA"), std::string::npos);
    EXPECT_EQ(pixel("d.png"), (List{255, 9, 9, 9}));
}

/// Matte off, conversion, matte on, dither: one run is two that come after one another.
TEST_F(ColourCommands, StepsHaveAnOrder) {
    run("convert a.png --premultiply -o mixed.png");
    run("convert a.png --depth 16 -o deep.tif");
    struct Steps {
        std::string file, first, second, depth;
    };
    for (const auto& [file, first, second, depth] :
         {Steps{"mixed.png", " --unpremultiply", " --to display-p3", " --depth 16"},
          Steps{"deep.tif", " --to rec2020", " --premultiply --matte 0.2,0.4,1", ""},
          Steps{"deep.tif", " --to display-p3", " --dither --depth 8", ""}}) {
        SCOPED_TRACE(file + first + second);
        ASSERT_EQ(qx("convert " + file + first + second + depth + " -q -o one.tif").status, 0);
        ASSERT_EQ(qx("convert " + file + first + depth + " -q -o m.tif").status, 0);
        ASSERT_EQ(qx("convert m.tif" + second + " -q -o two.tif").status, 0);
        EXPECT_TRUE(same("one.tif", "two.tif"));
    }
}

TEST_F(ColourCommands, WhatAFileSaysIsWhatItsColoursAre) {
    const auto icc = curve_profile(cmsBuildGamma(nullptr, 1.5), 4.3);
    const std::string gamma = png_chunk("gAMA", std::string("\0\0\x9C\x40", 4));  // of 1 / 2.5
    struct Case {
        const char* name;
        double exponent;
        std::string errors;
    };
    put_png(folder / "icc.png", PNG_COLOR_TYPE_RGB, iccp_chunk(icc) + gamma);
    put_png(folder / "gama.png", PNG_COLOR_TYPE_RGB, gamma);
    put_png(folder / "broken.png", PNG_COLOR_TYPE_RGB, iccp_chunk(small_profile()) + gamma);
    put_embedding(folder / "grey.png", IccSpace::grey, grey_profile(2));
    for (const auto& [name, exponent, errors] :
         {Case{"icc.png", 1.5, ""}, Case{"gama.png", 2.5, ""},
          Case{"broken.png", 2.5, "its colour profile cannot be used: "}, Case{"grey.png", 2, ""}}) {
        SCOPED_TRACE(name);
        const auto outcome = qx(std::string("convert ") + name + " --to linear --depth 32 -o o.tif");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_HOLDS(outcome.errors, errors);
        EXPECT_TRUE(!errors.empty() || outcome.errors.empty()) << outcome.errors;
        const auto made = pixel("o.tif");
        for (std::size_t c = 1; c < 4; ++c) EXPECT_NEAR(made[c], std::pow(9 / 255.0, exponent), 2e-6);
    }
}

TEST_F(ColourCommands, OpenExrHasLightAndItsPrimaries) {
    EXPECT_EQ(qx("convert a.png --to linear-display-p3 -o a.exr").errors, kUsual);
    const auto primaries = read("a.exr").colours.primaries;
    ASSERT_TRUE(primaries);
    const List want{0.68, 0.32, 0.265, 0.69, 0.15, 0.06, 0.3127, 0.329};
    for (std::size_t i = 0; i < want.size(); ++i) EXPECT_NEAR((*primaries)[i], want[i], 3e-5);
    EXPECT_EQ(qx("convert a.exr --to srgb --depth 8 -o b.png").errors, note("a.exr: its floats become 8 bits"));
    const auto own = read("a.png"), back = read("b.png");
    for (int y = 0; y < 16; ++y) {
        for (int x = 1; x < 20; ++x) ASSERT_EQ(channels(back, x, y), channels(own, x, y));  // the first column is clear
    }
    EXPECT_EQ(qx("convert b.png --to display-p3 -o c.exr").errors,
              note("Display P3 is not linear light, which OpenEXR is meant for"));
    EXPECT_EQ(qx("convert a.exr -q -o c.png; " QX_COMMAND " convert a.png -o c.exr").errors,
              note(qx::pictures::kLightIsMixed));
}

/// Two neighbours of 65,536 steps are one of 32,769.
TEST_F(ColourCommands, FloatsGetAllThatA16BitFileTells) {
    write("deep.png",
          picture<QX_PixelFloat>(2, 1, false,
                                 [](int x, int) {
                                     const float v = static_cast<float>(40001 + x) / 65535;
                                     return QX_PixelFloat{1, v, v, v};
                                 }),
          16);
    for (const std::string name : {"o.tif", "o.exr"}) {
        run("convert deep.png --from gamma-2 --to linear --depth 32 -o " + name);
        for (std::size_t x = 0; x < 2; ++x) {
            const double v = (40001 + static_cast<double>(x)) / 65535;
            for (std::size_t c = 1; c < 4; ++c) EXPECT_NEAR(first_row(read(name))[x][c], v * v, 1e-6);
        }
    }
}

TEST_F(ColourCommands, InksBecomeColours) {
    const ICC inks = table_profile(4, 2.1);
    put("inks.icc", text_of(inks));
    const auto srgb = ICCOf(*named("srgb"));
    for (const std::string name : {"a.tif", "a.jpg"}) {
        SCOPED_TRACE(name);
        put_embedding(folder / name, IccSpace::cmyk, inks);
        const List ink = channels(qx::test::read_inks(folder / name), 0, 0);
        std::array<float, 4> percent;
        for (std::size_t i = 0; i < 4; ++i) percent[i] = static_cast<float>(ink[i] / 2.55);
        const Colour want = Exact(inks, srgb, Intent::relative, 0, TYPE_CMYK_FLT)(percent);
        for (const auto& [depth, full] : Cases<std::string, double>{{"8", 255}, {"16", 32768}, {"32", 1}}) {
            run("convert " + name + " --to srgb --depth " + depth + " -o o.tif");
            const List made = pixel("o.tif");
            EXPECT_EQ(made[0], full);
            for (std::size_t c = 0; c < 3; ++c) {
                const double exact = std::clamp<double>(want[c], 0, 1) * full;
                EXPECT_NEAR(made[c + 1], full == 1 ? want[c] : exact, full == 1 ? 1e-6 : 0.51);
            }
        }
        expect_fault("convert " + name + " -o o.png", 1, name + ": is CMYK; bring it to RGB first: qx convert --to");
        expect_fault("convert " + name + " --assign srgb -o o.png", 1, name + ": is CMYK; bring it to RGB first");
        expect_fault("convert " + name + " --from srgb --to srgb -o o.png", 1, name + ": is CMYK, the profile of");
        put("with.tif", bytes("o.tif"));
        put_embedding(folder / name, IccSpace::cmyk, small_profile());
        ASSERT_EQ(qx("convert " + name + " -q --from inks.icc --to srgb --depth 32 -o o.tif").status, 0);
        EXPECT_TRUE(same("o.tif", "with.tif"));
        EXPECT_HOLDS(qx("convert " + name + " --to srgb -o o.png").errors, qx::pictures::kCmykIsUnknown);
    }
    expect_fault("convert a.png --from inks.icc --to srgb -o o.png", 1, "a.png: is RGB, the profile of --from is not");
}

TEST_F(ColourCommands, WrongUseIsToldInALine) {
    put("inks.icc", text_of(table_profile(4, 2.1)));
    put("no.icc", "no profile");
    put("lab.icc", text_of(saved(cmsCreateLab4Profile(nullptr))));
    expect_faults(2, "convert a.png ", " -o o.png",
                  {"--to sgrb => --to sgrb: is no profile's name and no ICC file; the nearest is srgb",
                   "--to srgb --from linear-disply-p3 => --from linear-disply-p3: is no profile's name and no",
                   "--assign gama-2.2 => the nearest is gamma-2.2", "--to gamma-0 => --to gamma-0: the exponent",
                   "--to inks.icc => --to inks.icc: is a profile of inks", "--assign inks.icc => of inks",
                   "--to no.icc => --to no.icc: ", "--to lab.icc => --to lab.icc: ", "--to a.png => --to a.png: it is",
                   "--to srgb --assign srgb => excludes", "--from srgb => --from requires --to",
                   "--from srgb --assign srgb => --from requires --to", "--intent relative => --intent requires --to",
                   "--bpc => --bpc requires --to", "--to srgb --intent relativ => the nearest is relative",
                   "--to '' => --to: its value is empty"});
    expect_faults(2, "profile ", "",
                  {"disply-p3 => disply-p3: is no profile's name", "a.png -o p.png => -o p.png: its ending is none of",
                   " => PROFILE is required", "srgb rec709 => "});
    expect_faults(1, "profile ", " -o p.icc", {"no.icc => no.icc: ", "lab.icc => lab.icc: ", ". => .: is a folder"});
    expect_fault("profile srgb -o no/p.icc", 1, "no/p.icc: ");
}

TEST_F(ColourCommands, DamagedProfilesAreRefusedOrTaken) {
    const std::string lines[] = {"profile bad.icc -o p.icc", "convert a.png -q --to bad.icc -o o.png",
                                 "convert a.png -q --from bad.icc --to srgb -o o.png"};
    const ICC whole[] = {ICCOf(*named("srgb")), table_profile(3, 4.3), curve_profile(tabulated(64, 2.2), 2.1),
                         table_profile(4, 2.1)};
    int refused = 0;
    for (unsigned i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        std::mt19937 random(i);
        ICC bad = whole[i % std::size(whole)];
        const bool cut = i % 8 < 4;
        if (cut) bad.resize(random() % bad.size());
        for (unsigned k = 0; k < 1 + i % 5 && !bad.empty(); ++k) {
            bad[random() % std::min<std::size_t>(bad.size(), 700)] = static_cast<std::uint8_t>(random());
        }
        put("bad.icc", text_of(bad));
        const auto outcome = qx(lines[i % std::size(lines)]);
        if (outcome.status == 0 && !cut) continue;
        ++refused;
        EXPECT_TRUE(outcome.status == 1 || outcome.status == 2) << outcome.status;
        EXPECT_TRUE(outcome.errors.starts_with("qx: ")) << outcome.errors;
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
    EXPECT_GT(refused, 150);
}

}  // namespace
