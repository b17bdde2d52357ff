// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "platform/standalone/Colour.h"
#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/Commands.h"

namespace {

using namespace qx::test;

class Command : public QxTest {
protected:
    Command() {
        write("a.png", with_profile(255));
        gradient("b.png", 16, 16, 128);
    }
    static qx::pictures::Picture with_profile(int alpha) {
        auto made = picture<QX_Pixel8>(32, 20, alpha < 255, [=](int x, int y) { return argb(alpha, x, y, x + y); });
        made.colours.icc.bytes = standalone::ICCOf(*standalone::NamedProfile("display-p3", nullptr));
        return made;
    }
};
using CommandDeathTest = Command;  // runs before threads are there

TEST_F(Command, FaultsGiveOneLineAStatusAndNoFile) {
    expect_faults(
        2, "", "",
        {" => subcommand",
         "--foo => --foo: a subcommand stands before its options",
         "compose a.png b.png -o out.png => compose",
         "come a.png b.png -o out.png => come: no such subcommand; the nearest is comp",
         "comp -o out.png => BACKGROUND LAYER is required",
         "comp a.png -o out.png => at least one layer",
         "comp a.png b.png => --output",
         "comp a.png '' -o out.png => an argument is empty",
         "comp a.png --mode mask-crossfade b.png b.png --mask a.png -o out.png => needs --mask",
         "comp a.png b.png -o out.xyz => none of png",
         "comp a.png b.png --half -o out.tif => --half is for OpenEXR",
         "modes a.png -o out.png => B is required",
         "info --xml => --xml",
         "info --json=3 => --json takes no value",
         "identify --json => FILE is required",
         "comp a.png b.png -o => --output: its value is missing",
         "comp a.png b.png -o o.png -o p.png => --output stands 2 times, once is enough",
         "comp a.png b.png -o o.png --flatten foo => --flatten foo: not a colour: black, white, #RRGGBB or R,G,B",
         "comp a.png b.png -o o.png --compression zip => --compression zip: of PNG it is a whole number from 0 to 9",
         "comp a.png b.png -o o.png --raw 3x3:rgb24 => --raw is for standard input, of which no input is (-)"});
    expect_faults(1, "comp ", "",
                  {"a.png /dev/null -o out.png => /dev/null: is not a regular file",
                   "a.png b.png -o /no/such/folder/x.png => /no/such/folder/x.png: its folder is missing",
                   "a.png b.png --mask /no/such/mask.png -o out.png => /no/such/mask.png: No such file",
                   "a.png /no/such/layer.png -o out.png => /no/such/layer.png: No such file",
                   "/ b.png -o out.png => /: is a folder"});
    expect_faults(
        2, "comp a.png b.png ", " -o out.png",
        {"--opacty 1 => --opacty; the nearest is --opacity",
         "--mode scren => --mode scren: no such mode; the nearest is screen",
         "--opacity 2 => --opacity 2: not a number from 0 to 1", "--translate 5 => --translate 5: not a position X,Y",
         "--scale 1,2,3 => --scale 1,2,3: not a scale S or S,SY", "--matrix 1,0,0,0,1,0,0,0 => not nine numbers",
         "--scale 2 --matrix 1,0,0,0,1,0,0,0,1 => --matrix and --scale exclude each other",
         "--field both => --field both: not one of all, even, odd", "--mask-kind luma => --mask-kind needs --mask"});
    expect_faults(2, "comp a.png b.png ", " -o out.png",
                  {"--wrong => --wrong; see qx comp --help", "--mask= => --mask=: its value is empty",
                   "--mode -1 => --mode -1", "--mode -2 => needs --mask", "--opacity abc => --opacity abc",
                   "--at 5 => --at 5", "--rotate inf => --rotate inf: not a number", "--depth 12 => --depth 12",
                   "--linear 0 => --linear 0", "-j 0 => --threads 0", "-q -v => --quiet"});
}

TEST_F(Command, HelpAndVersionAreWordsToo) {
    for (const auto& [word, flag] : Cases<std::string, std::string>{{"help", "--help"},
                                                                    {"version", "--version"},
                                                                    {"help comp", "comp --help"},
                                                                    {"help version", "--version"}}) {
        const auto told = qx(word);
        EXPECT_EQ(told.status, 0) << told.errors;
        EXPECT_EQ(told.output, qx(flag).output) << word;
    }
    expect_faults(2, "", "",
                  {"help com => com: no such subcommand; the nearest is comp", "help comp x => one subcommand"});
    const auto list = nlohmann::json::parse(qx("modes --list --json").output);
    EXPECT_EQ(list.size(), 43u);
    EXPECT_EQ(list[4]["name"], "over");
    EXPECT_EQ(list[4]["aliases"][0], "normal");
    expect_faults(2, "modes ", "", {"--json => --json needs --list", "a.png b.png --list => takes no pictures"});
}

TEST_F(Command, SettingsComeFromFlagThenEnvironmentThenDefault) {
    const std::string none = "env -u QX_THREADS -u QX_BANDS", both = "QX_THREADS=3 QX_BANDS=5";
    const std::tuple<const char*, std::string, const char*, int> cases[] = {
        {"", none, "bands", 32},
        {"", none, "slots", 118},
        {"", both, "bands", 5},
        {"", both, "threads", 3},
        {"--bands 7 -j 2", both, "bands", 7},
        {"--bands 7 --threads 2", both, "threads", 2}};
    for (const auto& [flags, environment, key, value] : cases) {
        const auto outcome = qx(std::string("info --json ") + flags, environment);
        EXPECT_EQ(nlohmann::json::parse(outcome.output)[key], value) << flags << outcome.errors;
    }
    expect_fault("info", 2, "QX_THREADS many", "QX_THREADS=many");
}

TEST_F(Command, ClearLayerLeavesTheBackgroundWithItsProfile) {
    write("back.png", with_profile(77));
    write("clear.png", with_profile(0));
    for (const std::string out : {"o.png", "o.tif"}) {
        run("comp back.png clear.png -o " + out);
        EXPECT_TRUE(same("back.png", out)) << out;
        EXPECT_EQ(read(out).colours.icc.bytes, read("back.png").colours.icc.bytes);
    }
}

/// Each layer takes the options behind its name, and those in front of the first layer. Seen through the result:
/// copy at an opacity of 0 keeps colour and clears alpha, so that a pixel tells which layer had which option.
TEST_F(Command, OptionsBelongToTheLayerBeforeThem) {
    const auto grey = [&](const char* name, int width, int v) {
        write(name, width, 1, [=](int, int) { return argb(255, v, v, v); });
    };
    grey("bg.png", 3, 9);
    grey("x.png", 1, 50);
    grey("y.png", 1, 200);
    const std::pair<std::string, List> cases[] = {{"x.png y.png --at 1,0", {50, 200, 9}},
                                                  {"x.png --at 2,0 y.png", {200, 9, 50}},
                                                  {"--at 1,0 x.png y.png", {9, 200, 9}},
                                                  {"--at 1,0 x.png y.png --at 0,0", {200, 50, 9}},
                                                  {"--mode=add x.png y.png --mode 2 --at 2,0", {59, 9, 200}},
                                                  {"x.png --opacity 0 y.png --opacity 1 --at 1,0", {9, 200, 9}}};
    for (const auto& [layers, reds] : cases) {
        run("comp bg.png " + layers + " -o out.png");
        for (std::size_t x = 0; x < 3; ++x) EXPECT_EQ(first_row(read("out.png"))[x][1], reds[x]) << layers << " " << x;
    }
}

TEST_F(Command, NamesOfFilesAreTakenAsTheyAre) {
    const std::string longest = std::string(251, 'n') + ".png";
    for (const std::string& name : {std::string("[x,y]"), std::string("modes"), longest}) {
        put(name, bytes("a.png"));
        run("comp a.png '" + name + "' --at 1,1 a.png -o " + longest);
        std::filesystem::remove(folder / name);
    }
}

TEST_F(Command, DissolveAtDepth32SaysThatItDoesNothing) {
    const std::string line = "comp a.png a.png --mode dissolve -o o.png";
    run(line);
    EXPECT_HOLDS(qx(line + " --depth 32").errors, "changes nothing at depth 32");
    run(line + " --depth 32 -q");
}

TEST_F(Command, SheetOfModesIsDrawn) {
    gradient("large.png", 120, 80, 255);
    EXPECT_EQ(qx("modes large.png large.png -o sheet.png").status, 0);
    const auto sheet = read("sheet.png");
    EXPECT_GT(sheet.world->width, 7 * 300);
    EXPECT_GT(sheet.world->height, 7 * 200);
}

/// The signal comes while bands run: the file that was there stays, nothing is left, and the status tells. A second
/// one, or the alarm that comes when nobody has heard of the first, ends the process where it is.
TEST_F(CommandDeathTest, InterruptLeavesNoFile) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    gradient("a.png", 64, 64, 255);
    put("o.png", "old");
    const std::string a = folder / "a.png";
    const std::pair<std::vector<int>, const char*> cases[] = {{{SIGINT}, "^qx: interrupted\n$"},
                                                              {{SIGTERM}, "^qx: interrupted\n$"},
                                                              {{SIGHUP}, "^qx: interrupted\n$"},
                                                              {{SIGINT, SIGTERM}, "^$"},
                                                              {{SIGTERM, SIGALRM}, "^$"}};
    for (const auto& [signals, words] : cases) {
        EXPECT_EXIT(run_interrupted(signals, a, {"comp", a, a, "-o", folder / "o.png"}), testing::ExitedWithCode(130),
                    words);
        EXPECT_EQ(bytes("o.png"), "old");
        EXPECT_EQ(folder.names(), (Names{"a.png", "b.png", "o.png"}));
    }
}

/// What waits for another program stops at once.
TEST_F(CommandDeathTest, InterruptEndsWaitingForStandardInput) {
    GTEST_FLAG_SET(death_test_style, "fast");
    const auto wait = [&] {
        int ends[2];
        if (::pipe(ends) != 0 || ::dup2(ends[0], STDIN_FILENO) < 0) std::exit(1);
        if (::fork() == 0) {
            ::sleep(1);
            ::kill(::getppid(), SIGTERM);
            ::_exit(0);
        }
        const std::string out = folder / "o.png";
        const char* const words[] = {"qx", "convert", "-", "-o", out.c_str()};
        std::exit(qx::tool::run_command(static_cast<int>(std::size(words)), words));
    };
    EXPECT_EXIT(wait(), testing::ExitedWithCode(130), "^qx: interrupted\n$");
}

}  // namespace
