// SPDX-License-Identifier: Apache-2.0
// Effects from outside that keep no rule, and wrong use of them: one line, a status, and no file.
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class PlugInFaults : public QxTest {
protected:
    PlugInFaults() {
        write("a.png", 24, 16, [](int x, int y) { return argb(255 - x, 9 * x, 7 * y, x * y); });
        std::filesystem::create_directory(folder / "effects");
        for (const std::string name : {"Faulty", "NoEntry"}) {
            std::filesystem::copy(QX_TEST_EFFECTS "/" + name + ".so", folder / ("effects/" + name + ".so"));
        }
        scene("'plugin': 'Faulty'");
    }
    void scene(const std::string& keys) const {
        put_quoted("s.json",
                   "{'size': [24, 16], 'frames': [3, 4], 'rate': 24, 'layers': [{'file': 'a.png'}, {'file': 'a.png', "
                   "'effects': [{" +
                       keys + "}]}]}");
    }
    static std::string told(const std::string& fault) { return "FAULT=" + fault; }
};

TEST_F(PlugInFaults, OfWhatIsNoEffectAreToldWhenItIsLoaded) {
    put("text.so", "no module\n");
    const std::string comp = "comp a.png a.png -o o.png --effect ";
    expect_fault(comp + "./text.so", 1, "./text.so: cannot be loaded as an effect: ");
    expect_fault(comp + "./gone.so", 1, "./gone.so: no such file");
    expect_fault(comp + "./effects", 1, "./effects: no such file");
    expect_fault(comp + "effects/NoEntry.so", 1, "effects/NoEntry.so: is no effect: it exports no QXE_DescribeEffect");
    const Names rows = {
        "version-2.0 => is made for version 2.0 of effects; this is 1.0",
        "version-1.1 => is made for version 1.1 of effects; this is 1.0",
        "no-version => is made for version 0.0 of effects; this is 1.0",
        "describe-4 => does not describe itself: out of memory (code 4)",
        "describe-99 => does not describe itself: failed (code 99)",
        "describe-int => does not describe itself: threw a number (code 7)",
        "describe-exception => does not describe itself: threw bad luck (code 3)",
        "describe-other => does not describe itself: threw something unknown (code 3)",
        "no-render => its description: has no function render",
        "no-name => its description: has no name of letters",
        "odd-name => its description: has no name of letters",
        "no-depth => its description: takes no depth",
        "no-parameters => its description: counts parameters and has none",
        "nameless => its description: has a parameter without a name",
        "small => its description: has a parameter of another size",
        "twice => parameter number: is there twice",
        "kind => parameter switch: is of an unknown kind",
        "default => parameter number: has a default outside its range",
        "default-nan => parameter point: has a default outside its range",
        "default-whole => parameter whole: has a default outside its range",
        "default-switch => parameter switch: has a default outside its range",
        "default-choice => parameter choice: has a default outside its range",
        "default-colour => parameter colour: has a default outside its range",
        "no-range => parameter number: has no range",
        "no-choice => parameter choice: has nothing to choose from",
    };
    for (const std::string& row : rows) {
        const auto [fault, words] = halves(row);
        expect_fault(comp + "./effects/Faulty.so", 1, "./effects/Faulty.so: " + words, told(fault));
        expect_fault("effects ./effects/Faulty.so --json", 1, "./effects/Faulty.so: " + words, told(fault));
    }
}

TEST_F(PlugInFaults, OfTheirWorkNameLayerAndFrame) {
    const Names rows = {"begin-4 => out of memory (code 4)",
                        "begin-3 => failed (code 3)",
                        "begin-517 => stopped as if it had been asked to (code 517)",
                        "begin-99 => failed (code 99)",
                        "begin-int => threw a number (code 7)",
                        "begin-exception => threw bad luck (code 3)",
                        "begin-other => threw something unknown (code 3)",
                        "room-3 => failed (code 3)",
                        "room-int => threw a number (code 7)",
                        "room-less => asks for less room than it has",
                        "room-much => asks for room for 2147483671 x 16 pixels; at most 30000 a side",
                        "render-4 => out of memory (code 4)",
                        "render-3 => failed (code 3)",
                        "render-517 => stopped as if it had been asked to (code 517)",
                        "render-99 => failed (code 99)",
                        "render-int => threw a number (code 7)",
                        "render-exception => threw bad luck (code 3)",
                        "render-other => threw something unknown (code 3)",
                        "pixel-4 => out of memory (code 4)",
                        "pixel-99 => failed (code 99)",
                        "pixel-int => failed (code 7)",
                        "pixel-exception => failed (code 3): bad luck",
                        "pixel-other => threw something unknown (code 3)",
                        "report => failed (code 3): bad parameter passed to effect callback",
                        "nothing => wrote nothing",
                        "behind => wrote behind the last pixel of its result"};
    for (const std::string& row : rows) {
        const auto [fault, words] = halves(row);
        for (const std::string depth : {"8", "16", "32"}) {
            expect_fault("comp a.png a.png --effect ./effects/Faulty.so -o o.tif --depth " + depth, 1,
                         "./effects/Faulty.so: layer 1: frame 0: " + words + "\n", told(fault));
        }
        expect_fault("comp a.png a.png a.png --effect Faulty --effects effects -o o.png", 1,
                     "effects/Faulty.so: layer 2: frame 0: " + words + "\n", told(fault));
        expect_fault("render s.json --effects effects -o o.##.png -j 2", 1,
                     "effects/Faulty.so: layer 2: frame 3: " + words + "\n", told(fault));
    }
    expect_fault("comp a.png a.png --effect ./effects/Faulty.so -o o.png --depth 16", 1,
                 "./effects/Faulty.so: layer 1: frame 0: does not take 16 bits", told("8-bits"));
    expect_fault("comp a.png a.png --effect ./effects/Faulty.so -o o.tif --depth 32", 1,
                 "./effects/Faulty.so: layer 1: frame 0: does not take floats", told("8-bits"));
}

TEST_F(PlugInFaults, OfUseNameThePlace) {
    const std::string effect = "--effect ./effects/Faulty.so: ";
    expect_faults(
        2, "comp a.png a.png -o o.png --effects effects --effect ", "",
        {"fault => --effect fault: no such effect; the nearest is Faulty",
         "blr => --effect blr: no such effect; the nearest is blur",
         ":radius=3 => --effect : no such effect; see qx effects",
         "blur:raduis=3 => --effect blur: raduis: no such parameter; the nearest is radius",
         "blur:radius=nan => --effect blur: radius nan: not a number from 0 to 30000",
         "blur:map=a.png => --effect blur: map: is for the kinds mean and disc",
         "./effects/Faulty.so:numbr=1 => " + effect + "numbr: no such parameter; the nearest is number",
         "./effects/Faulty.so:number=3 => " + effect + "number 3: not a number from -1 to 2",
         "./effects/Faulty.so:number=nan => " + effect + "number nan: not a number",
         "./effects/Faulty.so:number=a => " + effect + "number a: not a number",
         "./effects/Faulty.so:number= => " + effect + "number : not a number",
         "./effects/Faulty.so:number => " + effect + "number needs a value: number=N",
         "./effects/Faulty.so:number=1:number=1 => " + effect + "number is told twice",
         "./effects/Faulty.so:whole=1.5 => " + effect + "whole 1.5: not a whole number from -3 to 9",
         "./effects/Faulty.so:switch=2 => " + effect + "switch 2: ",
         "./effects/Faulty.so:choice=tow => " + effect + "choice tow: not one of one, two; the nearest is two",
         "./effects/Faulty.so:point=1 => " + effect + "point 1: not two numbers",
         "./effects/Faulty.so:colour=1,2,0 => " + effect + "colour 2: not a number from 0 to 1",
         "./effects/Faulty.so: => " + effect + ": no such parameter"});
    expect_fault("effects Fault --effects effects", 2, "Fault: no such effect; the nearest is Faulty");
    const Names rows = {
        "'plugin': 'effects/Faulty.so' => /layers/1/effects/0/plugin effects/Faulty.so: is a path",
        "'plugin': 'Faultie' => /layers/1/effects/0/plugin Faultie: no such effect; the nearest is Faulty",
        "'plugin': 'Faulty', 'number': 1 => /layers/1/effects/0/number is an unknown key",
        "'plugin': 'Faulty', 'parameters': {'numbr': 1} => parameters/numbr is an unknown key; the nearest is number",
        "'plugin': 'Faulty', 'parameters': {'number': 3} => parameters/number is not a number from -1 to 2",
        "'plugin': 'Faulty', 'parameters': {'number': 'x'} => parameters/number is not ",
        "'plugin': 'Faulty', 'parameters': {'number': 1, 'number': 1} => number",
        "'plugin': 'Faulty', 'parameters': {'point': [1, 2, 3]} => parameters/point does not have 2 items",
        "'plugin': 'Faulty', 'parameters': {'choice': 'tow'} => parameters/choice tow: not one of one, two; the "
        "nearest is two",
        "'plugin': 'Faulty', 'parameters': {'whole': {'keys': [{'frame': 1, 'value': 1}]}} => parameters/whole is not "
        "a whole number from -3 to 9"};
    for (const std::string& row : rows) {
        scene(halves(row).first);
        expect_fault("render s.json --effects effects -o o.##.png", 1, halves(row).second);
    }
}

TEST_F(PlugInFaults, NoPlainNameIsLookedForInTheWorkingFolder) {
    std::filesystem::copy(folder / "effects/Faulty.so", folder / "Faulty.so");
    for (const std::string before : {"", "QX_EFFECT_PATH=", "QX_EFFECT_PATH=::"}) {
        expect_fault("comp a.png a.png -o o.png --effect Faulty", 2, "Faulty: no such effect", before);
        expect_fault("comp a.png a.png -o o.png --effect Faulty.so --effects gone", 2, "Faulty.so: no such effect",
                     before);
        expect_fault("effects Faulty.so", 2, "Faulty.so: no such effect", before);
    }
    expect_fault("comp a.png a.png -o o.png --effect Faulty.so --effects ''", 2, "--effects: its value is empty");
    run("comp a.png a.png -o o.png --effect Faulty.so --effects .");
    run("comp a.png a.png -o o.png --effect Faulty", "QX_EFFECT_PATH=gone:effects");
}

TEST_F(PlugInFaults, ASpoiledSourceTouchesNoOtherLayerOrFrame) {
    const auto expect_same = [&](const std::string& line, const std::string& result) {
        run(line);
        const auto copied = read(result);
        run(line, told("spoil"));
        EXPECT_TRUE(same_pixels(copied, read(result))) << line;
    };
    for (const std::string depth : {"8", "16", "32"}) {
        expect_same("comp a.png a.png --effect ./effects/Faulty.so a.png --at 2,3 --mode add -o o.tif --depth " + depth,
                    "o.tif");
    }
    expect_same("render s.json --effects effects -o o.##.png -j 2", "o.04.png");
}

TEST_F(PlugInFaults, ASignalStopsThoseThatAskAndThoseThatDoNot) {
    for (const std::string fault : {"kill-ask", "kill-never"}) {
        const auto names = folder.names();
        for (const std::string line : {"comp a.png a.png --effect ./effects/Faulty.so -o o.png",
                                       "render s.json --effects effects -o o.##.png"}) {
            const auto outcome = qx(line, told(fault));
            EXPECT_EQ(outcome.status, 130) << line << ": " << outcome.errors;
            EXPECT_EQ(folder.names(), names) << line;
        }
    }
}

TEST_F(PlugInFaults, ValuesComeAsToldOrMovedOrStandard) {
    const std::string standard =
        "0.50 0.00 0.00 0.00 0 -; 0.00 0.00 0.00 0.00 3 -; 0.00 0.00 0.00 0.00 0 -; "
        "0.00 0.00 0.00 0.00 1 -; 1.00 2.00 0.00 0.00 0 -; 1.00 0.50 0.00 1.00 0 -; "
        "0.00 0.00 0.00 0.00 0 a text; ";
    const std::string comp = "comp a.png a.png -o o.png --effect './effects/Faulty.so";
    expect_fault(comp + "'", 1, standard, told("values"));
    expect_fault(comp + ":number=-1:whole=-3:switch:choice=one:point=-9,9:colour=0.25,0.5,0.75:text=a,b\\:c=d'", 1,
                 "-1.0 0.00 0.00 0.00 0 -; 0.00 0.00 0.00 0.00 -3 -; 0.00 0.00 0.00 0.00 1 -; "
                 "0.00 0.00 0.00 0.00 0 -; -9.0 9.00 0.00 0.00 0 -; 1.00 0.25 0.50 0.75 0 -; "
                 "0.00 0.00 0.00 0.00 0 a,b:c=d; ",
                 told("values"));
    expect_fault(comp + ":switch=false:colour=0,0,0,0'", 1, "0.00 0.00 0.00 0.00 0 -; ", told("values"));
    scene(
        "'plugin': 'Faulty.so', 'comment': 'moves', 'parameters': {'comment': 'moves too', 'number': {'keys': "
        "[{'frame': 2, 'value': 0}, {'frame': 4, 'value': 1}]}, 'point': {'keys': [{'frame': 2, 'value': [-4, 0]}, "
        "{'frame': 4, 'value': [4, 8]}]}, 'switch': true, 'text': 'x'}");
    expect_fault("render s.json --effects effects -o o.##.png", 1,
                 "frame 3: threw 0.50 0.00 0.00 0.00 0 -; 0.00 0.00 0.00 0.00 3 -; 0.00 0.00 0.00 0.00 1 -; "
                 "0.00 0.00 0.00 0.00 1 -; 0.00 4.00 0.00 0.00 0 -; 1.00 0.50 0.00 1.00 0 -; "
                 "0.00 0.00 0.00 0.00 0 x; ",
                 told("values"));
}

}  // namespace
