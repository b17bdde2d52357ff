// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "platform/standalone/Standalone.h"
#include "tests/pictures/Support.h"
#include "tests/pictures/Ties.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/Commands.h"
#include "tools/qx/terminal/Messages.h"

namespace {

using namespace qx::tool;
using qx::test::Folder;
using qx::test::run_qx;

void write_gradient(const std::string& path, int width, int height, int alpha) {
    auto picture = qx::test::picture<QX_Pixel8>(width, height, alpha < 255,
                                                [=](int x, int y) { return qx::test::argb(alpha, x, y, x + y); });
    picture.icc = qx::test::small_profile();
    qx::pictures::write_picture(path, picture, 8);
}

/// Status, and words of the one line on standard error. `A` and `B` stand for two pictures, `OUT` for the output.
struct Case {
    const char* arguments;
    int status;
    const char* words;
};
const Case kFaults[] = {
    {"", 2, "subcommand"},
    {"compose A B -o OUT", 2, "compose"},
    {"comp -o OUT", 2, "files"},
    {"comp A -o OUT", 2, "at least one layer"},
    {"comp A B", 2, "--output"},
    {"comp A B --wrong -o OUT", 2, "--wrong (see"},
    {"comp A B --opacty 1 -o OUT", 2, "--opacty; the nearest is --opacity"},
    {"come A B -o OUT", 2, "come: no such subcommand; the nearest is comp"},
    {"comp A B --mask= -o OUT", 2, "--mask=: its value is empty"},
    {"comp A '' -o OUT", 2, "an argument is empty"},
    {"comp A /dev/null -o OUT", 1, "/dev/null: is not a regular file"},
    {"comp A B --mode scren -o OUT", 2, "--mode scren: no such mode; the nearest is screen"},
    {"comp A B --mode -1 -o OUT", 2, "--mode -1"},
    {"comp A B --opacity abc -o OUT", 2, "--opacity abc"},
    {"comp A B --opacity 2 -o OUT", 2, "--opacity 2: not a number from 0 to 1"},
    {"comp A B --at 5 -o OUT", 2, "--at 5"},
    {"comp A B --translate 5 -o OUT", 2, "--translate 5: not a position X,Y"},
    {"comp A B --scale 1,2,3 -o OUT", 2, "--scale 1,2,3: not a scale S or S,SY"},
    {"comp A B --rotate inf -o OUT", 2, "--rotate inf: not a number"},
    {"comp A B --matrix 1,0,0,0,1,0,0,0 -o OUT", 2, "not nine numbers"},
    {"comp A B --scale 2 --matrix 1,0,0,0,1,0,0,0,1 -o OUT", 2, "--matrix and --scale exclude each other"},
    {"comp A B --depth 12 -o OUT", 2, "--depth 12"},
    {"comp A B --linear 0 -o OUT", 2, "--linear 0"},
    {"comp A B --field both -o OUT", 2, "--field both: not one of all, even, odd"},
    {"comp A B --mode -2 -o OUT", 2, "needs --mask"},
    {"comp A --mode mask-crossfade B B --mask A -o OUT", 2, "needs --mask"},
    {"comp A B --mask-kind luma -o OUT", 2, "--mask-kind needs --mask"},
    {"comp A B -j 0 -o OUT", 2, "--threads 0"},
    {"comp A B -q -v -o OUT", 2, "--quiet"},
    {"comp A B -o OUT.xyz", 2, "none of png"},
    {"comp A B --half -o OUT.tif", 2, "--half is for OpenEXR"},
    {"comp A B -o /no/such/folder/x.png", 1, "/no/such/folder/x.png: its folder is missing"},
    {"comp A B --mask /no/such/mask.png -o OUT", 1, "/no/such/mask.png: No such file"},
    {"comp A /no/such/layer.png -o OUT", 1, "/no/such/layer.png: No such file"},
    {"comp / B -o OUT", 1, "/: is a folder"},
    {"modes A -o OUT", 2, "B is required"},
    {"info --xml", 2, "--xml"},
};

TEST(Command, FaultsGiveOneLineAStatusAndNoFile) {
    const Folder folder;
    write_gradient(folder / "a.png", 32, 20, 255);
    write_gradient(folder / "b.png", 16, 16, 128);
    for (const Case& c : kFaults) {
        SCOPED_TRACE(c.arguments);
        std::string arguments;
        std::string word;
        for (const char* p = c.arguments;; ++p) {
            if (*p != ' ' && *p != '\0') {
                word += *p;
                continue;
            }
            if (word == "A") word = folder / "a.png";
            if (word == "B") word = folder / "b.png";
            if (word.rfind("OUT", 0) == 0) word = folder / ("out" + (word == "OUT" ? ".png" : word.substr(3)));
            arguments += word + " ";
            word.clear();
            if (*p == '\0') break;
        }
        const auto outcome = run_qx(arguments);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(outcome.errors.rfind("qx: ", 0), 0u) << outcome.errors;
        EXPECT_NE(outcome.errors.find(c.words), std::string::npos) << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.png", "b.png"}));
    }
}

TEST(Command, SettingsComeFromFlagThenEnvironmentThenDefault) {
    const auto info = [](const std::string& flags, const std::string& environment) {
        const auto outcome = run_qx("info --json " + flags, environment);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    };
    const std::string none = "env -u QX_THREADS -u QX_BANDS", both = "QX_THREADS=3 QX_BANDS=5";
    EXPECT_EQ(info("", none)["bands"], 32);
    EXPECT_EQ(info("", none)["slots"], 118);
    EXPECT_EQ(info("", both)["bands"], 5);
    EXPECT_EQ(info("", both)["threads"], 3);
    EXPECT_EQ(info("--bands 7 -j 2", both)["bands"], 7);
    EXPECT_EQ(info("--bands 7 --threads 2", both)["threads"], 2);
    const auto wrong = run_qx("info", "QX_THREADS=many");
    EXPECT_EQ(wrong.status, 2);
    EXPECT_NE(wrong.errors.find("QX_THREADS many"), std::string::npos);
}

TEST(Command, ClearLayerLeavesTheBackgroundWithItsProfile) {
    const Folder folder;
    write_gradient(folder / "a.png", 200, 150, 77);
    write_gradient(folder / "clear.png", 200, 150, 0);
    const auto before = qx::pictures::read_picture(folder / "a.png");
    for (const char* out : {"o.png", "o.tif"}) {
        const auto outcome =
            run_qx("comp " + (folder / "a.png") + " " + (folder / "clear.png") + " -o " + (folder / out));
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.errors + outcome.output, "");
        const auto after = qx::pictures::read_picture(folder / out);
        EXPECT_TRUE(qx::test::same_pixels(*before.world, *after.world)) << out;
        EXPECT_EQ(after.icc, before.icc);
    }
}

/// Each layer takes the options behind its name, and those in front of the first layer. Seen through the result:
/// copy at an opacity of 0 keeps colour and clears alpha, so that a pixel tells which layer had which option.
TEST(Command, OptionsBelongToTheLayerBeforeThem) {
    const Folder folder;
    const auto grey = [&](const char* name, int width, int v) {
        qx::test::write_bytes(folder / name, width, 1, [=](int, int) { return qx::test::argb(255, v, v, v); });
    };
    grey("bg.png", 3, 9);
    grey("x.png", 1, 50);
    grey("y.png", 1, 200);
    const auto result = [&](const std::string& layers) {
        const auto outcome = run_qx("comp " + (folder / "bg.png") + " " + layers + " -o " + (folder / "out.png"));
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        const auto picture = qx::pictures::read_picture(folder / "out.png");
        std::vector<double> reds;
        for (int x = 0; x < 3; ++x) reds.push_back(qx::test::channels(*picture.world, x, 0)[1]);
        return reds;
    };
    const std::string x = folder / "x.png", y = folder / "y.png";
    using List = std::vector<double>;
    EXPECT_EQ(result(x + " " + y + " --at 1,0"), (List{50, 200, 9}));
    EXPECT_EQ(result(x + " --at 2,0 " + y), (List{200, 9, 50}));
    EXPECT_EQ(result("--at 1,0 " + x + " " + y), (List{9, 200, 9}));
    EXPECT_EQ(result("--at 1,0 " + x + " " + y + " --at 0,0"), (List{200, 50, 9}));
    EXPECT_EQ(result("--mode=add " + x + " " + y + " --mode 2 --at 2,0"), (List{59, 9, 200}));
    EXPECT_EQ(result(x + " --opacity 0 " + y + " --opacity 1 --at 1,0"), (List{9, 200, 9}));
}

TEST(Command, NamesOfFilesAreTakenAsTheyAre) {
    const Folder folder;
    write_gradient(folder / "a.png", 8, 8, 255);
    const std::string longest = std::string(251, 'n') + ".png";
    for (const std::string name : {"[x,y]", "modes", longest.c_str()}) {
        std::filesystem::copy_file(folder / "a.png", folder / name, std::filesystem::copy_options::overwrite_existing);
        const auto outcome =
            run_qx("comp a.png '" + name + "' --at 1,1 a.png -o " + longest, "cd " + (folder / "") + ";");
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        std::filesystem::remove(folder / name);
    }
}

TEST(Command, DissolveAtDepth32SaysThatItDoesNothing) {
    const Folder folder;
    write_gradient(folder / "a.png", 8, 8, 255);
    const std::string line =
        "comp " + (folder / "a.png") + " " + (folder / "a.png") + " --mode dissolve -o " + (folder / "o.png");
    EXPECT_EQ(run_qx(line).errors, "");
    EXPECT_NE(run_qx(line + " --depth 32").errors.find("changes nothing at depth 32"), std::string::npos);
    EXPECT_EQ(run_qx(line + " --depth 32 -q").errors, "");
}

/// Float pictures go to 8 bits in one way, wherever a layer lies and however wide the picture is.
TEST(Command, HalvesBecomeEvenWhereverALayerLies) {
    const Folder folder;
    const auto put = [&](const char* name, int width, int height) {
        const auto ties = [=](int x, int y) { return qx::test::tie_at(x + y * width); };
        qx::pictures::write_picture(folder / name, qx::test::picture<QX_PixelFloat>(width, height, false, ties), 32);
    };
    put("b.exr", 33, 9);
    put("l.tif", 5, 4);
    qx::test::put_contents(folder / "s.json", R"({"depth": 8, "background": "b.exr", "layers": [
        {"file": "l.tif", "transform": {"translate": [7, 2]}}]})");
    const std::string there = "cd " + (folder / "") + ";";
    for (const std::string line : {"comp -q --depth 8 b.exr l.tif --at 7,2",
                                   "comp -q --depth 8 --bands 3 b.exr l.tif --at 7,2", "render -q s.json --frames 1"}) {
        SCOPED_TRACE(line);
        ASSERT_EQ(run_qx(line + " -o o.png", there).status, 0);
        const auto result = qx::pictures::read_picture(folder / "o.png");
        ASSERT_EQ(result.world->Depth(), 8);
        for (int i = 0; i < 33 * 9; ++i) {
            const int x = i % 33, y = i / 33;
            const bool layer = x >= 7 && x < 12 && y >= 2 && y < 6;
            ASSERT_EQ(qx::test::channels(*result.world, x, y), qx::test::even_tie(layer ? x - 7 + 5 * (y - 2) : i))
                << x << "," << y;
        }
    }
}

TEST(Command, SheetOfModesIsDrawn) {
    const Folder folder;
    write_gradient(folder / "a.png", 120, 80, 255);
    EXPECT_EQ(run_qx("modes " + (folder / "a.png") + " " + (folder / "a.png") + " -o " + (folder / "sheet.png")).status,
              0);
    const auto sheet = qx::pictures::read_picture(folder / "sheet.png");
    EXPECT_GT(sheet.world->width, 7 * 300);
    EXPECT_GT(sheet.world->height, 7 * 200);
}

/// The signal comes while bands run: the file that was there stays, nothing is left, and the status tells. A second
/// one, or the alarm that comes when nobody has heard of the first, ends the process where it is.
TEST(CommandDeathTest, InterruptLeavesNoFile) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    const Folder folder;
    write_gradient(folder / "a.png", 64, 64, 255);
    qx::test::put_contents(folder / "o.png", "old");
    const std::string a = folder / "a.png", out = folder / "o.png";
    const auto interrupted_run = [&](const std::vector<int>& signals) {
        standalone::SetExecutor([signals](const boost::function<void(int)>& task, int count) {
            for (int i = 0; i < count; ++i) {
                for (const int signal : signals) {
                    if (i == 2) std::raise(signal);
                }
                task(i);
            }
        });
        const char* const arguments[] = {"qx", "comp", a.c_str(), a.c_str(), "-o", out.c_str()};
        std::exit(run_command(6, arguments));
    };
    const std::pair<std::vector<int>, const char*> cases[] = {{{SIGINT}, "^qx: interrupted\n$"},
                                                              {{SIGTERM}, "^qx: interrupted\n$"},
                                                              {{SIGHUP}, "^qx: interrupted\n$"},
                                                              {{SIGINT, SIGTERM}, "^$"},
                                                              {{SIGTERM, SIGALRM}, "^$"}};
    for (const auto& [signals, words] : cases) {
        EXPECT_EXIT(interrupted_run(signals), testing::ExitedWithCode(130), words);
        EXPECT_EQ(qx::test::contents(out), "old");
        EXPECT_EQ(folder.names().size(), 2u);
    }
}

}  // namespace
