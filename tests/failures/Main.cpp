// SPDX-License-Identifier: Apache-2.0
// Lets every single allocation of some command lines fail, one a run, and looks at what is left:
//   qx_failures QX PRELOAD [WORD]
// A run must end with status 1, one line on standard error and no file that is not whole, or with status 0 and the very
// files of a run without failure. WORD keeps to the command lines whose name contains it.
#include <array>
#include <map>
#include <mutex>
#include <sstream>

#include "tests/failures/Failures.h"
#include "tests/pictures/Support.h"

namespace failures {
namespace {

/// A picture of 24 times 16 pixels with a profile and a resolution.
void make_picture(const std::string& path, bool has_alpha) {
    auto picture = qx::test::picture<QX_Pixel8>(24, 16, has_alpha, [=](int x, int y) {
        const auto value = [&](int i) { return (y + i) * i / 7; };
        return qx::test::argb(has_alpha ? value(4 * x + 3) : 255, value(4 * x), value(4 * x + 1), value(4 * x + 2));
    });
    picture.icc = qx::test::small_profile();
    picture.resolution = {3000, 3000, qx::pictures::Resolution::Unit::metre};
    qx::pictures::write_picture(path, picture, 8);
}

constexpr const char* kScene =
    R"({"size": [24, 16], "rate": 24, "frames": [1, 2], "background": "opaque.png", "layers": [
  {"file": "p16.tif", "mode": "screen", "linear": 2.2, "opacity": 0.9},
  {"file": "p8.png", "mask": {"file": "p8.jpg", "kind": "luma"}, "shutter": {"angle": 180, "phase": -90, "matrices": 5},
   "transform": {"anchor": [12, 8], "rotate": 20,
    "translate": {"keys": [{"frame": 1, "value": [3, 4]}, {"frame": 2, "value": [12, 8]}]}}}]})";

/// Pictures that the command lines read, made by the command itself from two.
constexpr const char* kInputs[] = {
    "comp opaque.png p8.png -o p8.jpg",
    "comp p8.png p8.png --at 3,2 -o p8.tif",
    "comp p8.png p8.png --at 3,2 --depth 16 -o p16.png",
    "comp p8.png p8.png --at 3,2 --depth 16 -o p16.tif",
    "comp p8.png p8.png --at 3,2 --depth 32 -o float.tif",
    "comp p8.png p8.png --at 3,2 --depth 32 -o float.exr",
    "comp p8.png p8.png --at 3,2 --depth 32 --half -o half.exr",
};

/// OUT/ is the folder of a run.
constexpr const char* kLines[] = {
    "comp p8.png p8.png -j 1 -o OUT/png8.png",
    "comp p16.png p8.png --at 5,-3 --mode screen -j 2 -o OUT/png16.png",
    "comp p8.jpg p8.jpg --opacity 0.5 -j 2 -o OUT/jpg.jpg",
    "comp p8.tif p8.tif --mode multiply -j 2 -o OUT/tif8.tif",
    "comp p16.tif p16.tif --linear 2.2 -j 2 -o OUT/tif16.tif",
    "comp float.tif float.tif --mode add -j 2 -o OUT/float.tif",
    "comp float.exr float.exr --mode hue -j 2 -o OUT/float.exr",
    "comp half.exr half.exr --half -j 2 -o OUT/half.exr",
    "comp float.exr p16.tif --mask p8.png --mask-kind luma -j 2 -o OUT/masked.png",
    "comp p8.jpg float.tif --scale 0.4 --rotate 30 --at 4,4 --quality bicubic -j 2 -o OUT/placed.exr",
    "render scene.json -j 2 -o OUT/#.png",
    "render scene.json -j 2 --depth 16 -o OUT/#.tif",
    "render scene.json -j 2 --depth 32 -o OUT/#.exr",
    "render scene.json -j 2 -o OUT/#.jpg",
};

Words words_of(const std::string& command, const std::string& line) {
    Words words{command};
    std::istringstream stream(line + " -q");
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

using Counts = std::array<int, 5>;  ///< by verdict
int& of(Counts& counts, Verdict verdict) { return counts[static_cast<std::size_t>(verdict)]; }
void print(Counts counts, const char* name) {
    const int ok = of(counts, Verdict::ok), refused = of(counts, Verdict::refused);
    const int foreign = of(counts, Verdict::foreign), ours = of(counts, Verdict::ours);
    std::printf("%6d %6d %8d %8d %5d  %s\n", ok + refused + foreign + ours, ok, refused, foreign, ours, name);
    std::fflush(stdout);
}

class Run {
public:
    Run(std::string command, std::string preload) : command_(std::move(command)), preload_(std::move(preload)) {
        std::filesystem::create_directory(folder_ / "in");
        make_picture(folder_ / "in/p8.png", true);
        make_picture(folder_ / "in/opaque.png", false);
        qx::test::put_contents(folder_ / "in/scene.json", kScene);
    }
    bool makes_inputs() const {
        return std::all_of(std::begin(kInputs), std::end(kInputs), [&](const char* line) {
            const Outcome made = room(0).run(words_of(command_, line), "");
            if (made.status != 0) std::fprintf(stderr, "%s: %s\n", line, made.said.c_str());
            return made.status == 0;
        });
    }

    /// Adds every failure of one kind in one command line.
    void line(Counts& counts, const std::string& text, const std::string& variable) {
        const Words words = words_of(command_, text);
        const Outcome clean = room(0).run(words, "");
        if (clean.status != 0 || clean.files.empty()) {
            std::printf("%s: fails without failure: %s\n", text.c_str(), clean.said.c_str());
            ++of(counts, Verdict::ours);
            return;
        }
        std::atomic<int> next{1};
        std::atomic<bool> over{false};
        std::mutex mutex;
        const auto work = [&](int index) {
            while (!over) {
                const std::string failure = variable + "=" + std::to_string(next++);
                const Judgement judgement = judge(room(index).run(words, failure), clean);
                const std::lock_guard lock(mutex);
                if (judgement.verdict == Verdict::untouched) {
                    over = true;
                    return;
                }
                ++of(counts, judgement.verdict);
                if (judgement.reason.empty()) continue;
                auto& [runs, example] =
                    faults_[(judgement.verdict == Verdict::ours ? "OURS: " : "foreign: ") + judgement.reason];
                ++runs;
                example = failure + " qx " + text;
            }
        };
        std::thread other(work, 1);
        work(0);
        other.join();
    }

    /// Each way in which a run went wrong, in how many runs, and one of them.
    void print_faults() const {
        for (const auto& [reason, fault] : faults_) {
            std::printf("%d runs, such as %s: %s\n", fault.first, fault.second.c_str(), reason.c_str());
        }
    }

private:
    Room room(int index) const { return {folder_ / std::to_string(index), folder_ / "in", preload_}; }

    const std::string command_, preload_;
    const qx::test::Folder folder_;
    std::map<std::string, std::pair<int, std::string>> faults_;
};

int all(const std::string& command, const std::string& preload, const std::string& wanted) {
    Run run(command, preload);
    if (!run.makes_inputs()) return 1;
    std::printf("  runs     ok  refused  foreign  OURS\n");
    Counts sum{};
    for (const char* text : kLines) {
        if (std::string(text).find(wanted) == std::string::npos) continue;
        Counts counts{};
        for (const char* variable : {"QX_FAIL_ALLOCATION", "QX_FAIL_THREAD"}) run.line(counts, text, variable);
        print(counts, text);
        std::transform(sum.begin(), sum.end(), counts.begin(), sum.begin(), std::plus());
    }
    print(sum, "all");
    run.print_faults();
    return of(sum, Verdict::ours) == 0 ? 0 : 1;
}

}  // namespace
}  // namespace failures

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fputs("usage: qx_failures QX PRELOAD [WORD]\n", stderr);
        return 2;
    }
    const auto absolute = [](const char* path) { return std::filesystem::absolute(path).string(); };
    return failures::all(absolute(argv[1]), absolute(argv[2]), argc == 4 ? argv[3] : "");
}
