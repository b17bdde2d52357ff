// SPDX-License-Identifier: Apache-2.0
// Effects through the command: on layers of comp and of scenes, built-in ones and those of examples/, and their list.
#include <nlohmann/json.hpp>

#include "scene/colour/Convert.h"
#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class PlugIns : public QxTest {
protected:
    PlugIns() {
        write("a.png", 30, 20, [](int x, int y) { return argb(y < 3 ? 0 : 255 - 5 * x, 97 * x, 31 * y, x * y); });
        write("b.png", 30, 20, [](int x, int y) { return argb(255 - 9 * y, 11 * y, 57 * x, 200 - x); });
        write(
            "ground.png", 60, 50, [](int x, int y) { return argb(255, 4 * x, 5 * y, x * y); }, false);
        write("clear.png", 60, 50, [](int, int) { return argb(0, 0, 0, 0); });
    }
    /// Command lines, the last of which writes o.tif, make the same pixels.
    void expect_same_results(const Names& one, const Names& other) const {
        SCOPED_TRACE(one.back() + " and " + other.back());
        for (const auto& line : one) run(line);
        put("first.tif", bytes("o.tif"));
        for (const auto& line : other) run(line);
        EXPECT_TRUE(same("first.tif", "o.tif"));
    }
    /// The JSON that a run prints.
    nlohmann::json told(const std::string& arguments, const std::string& before = "") const {
        const auto outcome = qx(arguments + " --json", before);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }
};

TEST_F(PlugIns, AShadowIsAFillInTheShapeOfItsLayer) {
    write("fill.tif",
          picture<QX_PixelFloat>(30, 20, true,
                                 [](int, int) {
                                     return QX_PixelFloat{1, 0.2f, 0.4f, 0.6f};
                                 }),
          32);
    for (const std::string depth : {"8", "16", "32"}) {
        const std::string to = " --depth " + depth + " -o ";
        for (const auto& [offset, at] :
             Cases<std::string, std::string>{{"5,7", "15,17"}, {"-6.4,3", "4,13"}, {"0,-9", "10,1"}}) {
            const std::string effect = " --effect shadow:opacity=0.75:colour=0.2,0.4,0.6:offset=" + offset;
            expect_same_results(
                {"comp fill.tif a.png --mode alpha-multiply -q" + to + "shape.tif",
                 "comp clear.png shape.tif --at " + at + " --opacity 0.75 a.png --at 10,10" + to + "o.tif"},
                {"comp clear.png a.png --at 10,10" + effect + to + "o.tif"});
        }
    }
}

TEST_F(PlugIns, RoomLeavesInPlaceWhatTheLayerShows) {
    // A shadow that cannot be seen only makes room, whatever then places the layer.
    for (const std::string placed : {"--at 9,8", "--at 9,8 --mask b.png", "--at 20,9 --anchor 15,10 --scale 2",
                                     "--matrix 0,1,0,-1,0,0,40,5,1 --at 1,2"}) {
        expect_same_results({"comp ground.png a.png " + placed + " -o o.tif"},
                            {"comp ground.png a.png " + placed + " --effect shadow:opacity=0:offset=-8,-5 -o o.tif"});
    }
}

TEST_F(PlugIns, BuiltInOnesDoOnALayerWhatTheirSubcommandsDo) {
    put("k.txt", "0 1 2\n1 9 1\n-2 1 0\n");
    const Names rows = {"blur --radius 2.5,1 => blur:radius=2.5,1",
                        "blur --kind mean --map b.png => blur:kind=mean:map=b.png",
                        "convolve --kernel k.txt --normalise => convolve:kernel=k.txt:normalise",
                        "adjust --hue 40 --saturation 1.2 => adjust:hue=40:saturation=1.2",
                        "blend b.png --ratio 0.25 => blend:with=b.png:ratio=0.25"};
    for (const std::string& row : rows) {
        const auto [command, effect] = halves(row);
        const auto words = command.find(' ');
        for (const std::string to : {" --depth 8 -o o.tif", " --depth 32 -o o.tif"}) {
            expect_same_results({command.substr(0, words) + " a.png" + command.substr(words) + to},
                                {"comp b.png a.png --mode copy --effect " + effect + to});
        }
    }
    expect_same_results({"adjust a.png --hue 40 -o 1.tif", "blur 1.tif --radius 3 -o o.tif"},
                        {"comp b.png a.png --mode copy --effect adjust:hue=40 --effect blur:radius=3 -o o.tif"});
}

TEST_F(PlugIns, AMapIsNoColour) {
    auto map = read("b.png");
    qx::scene::assign(map, qx::scene::profile_of_text("rec2020"));
    write("tagged.png", map);
    const std::string line = "comp ground.png a.png --space srgb -q -o o.tif --effect blur:kind=mean:radius=5:map=";
    expect_same_results({line + "b.png"}, {line + "tagged.png"});
}

TEST_F(PlugIns, ThreadsAndTheOrderOfFramesDoNotShow) {
    put_quoted("s.json",
               "{'size': [60, 50], 'frames': [1, 6], 'layers': [{'file': 'ground.png'}, {'file': 'a.png', 'mode': "
               "'screen', 'effects': [{'plugin': 'shadow', 'parameters': {'offset': {'keys': [{'frame': 1, 'value': "
               "[-5, 3]}, {'frame': 6, 'value': [8, -9]}]}}}, {'effect': 'blur', 'radius': 2, 'grow': true}, "
               "{'plugin': 'tint', 'parameters': {'amount': 0.6}}]}, {'file': 'b.png', 'effects': [{'plugin': "
               "'shadow'}], 'transform': {'translate': [20, 9], 'rotate': 30}}]}");
    for (const std::string depth : {"8", "16", "32"}) {
        const std::string to = " --depth " + depth + " -o ";
        run("render s.json -j 1" + to + "one.#.tif");
        for (const std::string how : {"-j 2", "-j 16"}) {
            run("render s.json " + how + to + "all.#.tif");
            for (const std::string frame : {"1", "2", "3", "4", "5", "6"}) {
                EXPECT_TRUE(same("one." + frame + ".tif", "all." + frame + ".tif")) << how << " at " << frame;
            }
        }
        for (const std::string frames : {"5-6", "2", "1-4x3"})
            run("render s.json --frames " + frames + to + "part.#.tif");
        for (const std::string frame : {"1", "2", "4", "5", "6"}) {
            EXPECT_TRUE(same("one." + frame + ".tif", "part." + frame + ".tif")) << frame;
        }
    }
}

TEST_F(PlugIns, TheListTellsWhatIsFound) {
    std::filesystem::create_directory(folder / "effects");
    const auto install = [&](const std::string& from, const std::string& name) {
        std::filesystem::copy(from, folder / ("effects/" + name));
    };
    install(QX_TEST_EFFECTS "/Faulty.so", "tint.so");  // hides the installed one
    install(QX_TEST_EFFECTS "/NoEntry.so", "none.so");
    const auto named = [](const nlohmann::json& all, const std::string& module) {
        for (const auto& one : all) {
            if (one.value("module", one.value("name", "")).ends_with(module)) return one;
        }
        return nlohmann::json();
    };
    for (const auto& [arguments, before] :
         Cases<std::string, std::string>{{"effects --effects effects", ""}, {"effects", "QX_EFFECT_PATH=effects"}}) {
        const auto all = told(arguments, before);
        EXPECT_EQ(all.size(), 7u);
        EXPECT_FALSE(named(all, "blur").empty());
        EXPECT_EQ(named(all, "shadow.so")["depths"], nlohmann::json({8, 16, 32}));
        const auto faulty = named(all, "tint.so");
        EXPECT_EQ(faulty["name"], "faulty");
        EXPECT_EQ(faulty["parameters"][0], nlohmann::json({{"name", "number"},
                                                           {"kind", "number"},
                                                           {"default", 0.5},
                                                           {"range", {-1.0, 2.0}},
                                                           {"help", "a number"}}));
        EXPECT_EQ(faulty["parameters"][3]["choices"], nlohmann::json({"one", "two"}));
        EXPECT_EQ(faulty["parameters"][3]["default"], "two");
        EXPECT_EQ(faulty["parameters"][5]["default"], nlohmann::json({0.5, 0.0, 1.0, 1.0}));
        EXPECT_HOLDS(qx(arguments, before).errors, "none.so: is no effect");
        EXPECT_HOLDS(qx(arguments, before).output, "a place (default: 1,2)");
    }
    EXPECT_EQ(told("effects tint --effects effects", "FAULT=odd-text")[0]["label"], "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(told("effects tint.so")[0]["name"], "tint");
    const auto info = told("info --effects effects");
    EXPECT_EQ(info["suites"].size(), 19u);
    EXPECT_EQ(info["effects"],
              nlohmann::json({"blur", "convolve", "matte", "adjust", "blend", "none", "tint", "shadow"}));
}

}  // namespace
