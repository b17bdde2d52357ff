// SPDX-License-Identifier: Apache-2.0
// Lets every single allocation of some command lines fail, one a run, and looks at what is left:
//   qx_failures QX PRELOAD [WORD]
// A run must end with status 1, one line on standard error and no file that is not whole, or with status 0 and the very
// files of a run without failure. WORD keeps to the command lines whose name contains it.
#include <png.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

#include "tests/failures/Judge.h"

namespace failures {
namespace {

constexpr int kRunsAtOnce = 2;

/// The head of a colour profile, which is all that is looked at.
std::string profile() {
    std::string icc(132, '\0');
    icc[3] = static_cast<char>(icc.size());
    icc.replace(8, 16, std::string("\x02\x10\0\0mntrRGB XYZ ", 16));
    icc.replace(36, 4, "acsp");
    icc.replace(68, 12, std::string("\0\0\xF6\xD6\0\x01\0\0\0\0\xD3\x2D", 12));
    return icc;
}

/// A picture of 24 times 16 pixels with a profile and a resolution.
void make_picture(const std::string& path, int channels) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    const std::string icc = profile();
    png_init_io(png, file);
    png_set_IHDR(png, info, 24, 16, 8, channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_iCCP(png, info, "profile", 0, reinterpret_cast<png_const_bytep>(icc.data()), png_uint_32(icc.size()));
    png_set_pHYs(png, info, 3000, 3000, PNG_RESOLUTION_METER);
    png_write_info(png, info);
    for (int y = 0; y < 16; ++y) {
        std::vector<png_byte> row;
        for (int i = 0; i < 24 * channels; ++i) row.push_back(static_cast<png_byte>((y + i) * i / 7));
        png_write_row(png, row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
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

Words words_of(const std::string& command, const char* line) {
    Words words{command};
    std::istringstream stream(line);
    for (std::string word; stream >> word;) words.push_back(word);
    words.push_back("-q");
    return words;
}

struct Counts {
    int runs = 0, ok = 0, refused = 0, foreign = 0, ours = 0;
    void add(const Counts& c) {
        runs += c.runs, ok += c.ok, refused += c.refused, foreign += c.foreign, ours += c.ours;
    }
    void print(const char* name) const {
        std::printf("%6d %6d %8d %8d %5d  %s\n", runs, ok, refused, foreign, ours, name);
    }
};

struct Fault {
    int runs = 0;
    std::string example;
};

class Run {
public:
    Run(std::string command, std::string preload, std::string folder)
        : command_(std::move(command)), preload_(std::move(preload)), folder_(std::move(folder)) {
        std::filesystem::create_directories(folder_ + "/in");
        make_picture(folder_ + "/in/p8.png", 4);
        make_picture(folder_ + "/in/opaque.png", 3);
        std::ofstream(folder_ + "/in/scene.json") << kScene;
    }
    bool makes_inputs() const {
        for (const char* line : kInputs) {
            const Outcome made = room(0).run(words_of(command_, line), "");
            if (made.status != 0) return std::fprintf(stderr, "%s: %s\n", line, made.said.c_str()), false;
        }
        return true;
    }

    /// Every failure of one kind in one command line.
    Counts line(const char* text, const std::string& variable) {
        const Words words = words_of(command_, text);
        const Outcome clean = room(0).run(words, "");
        if (clean.status != 0 || clean.files.empty()) {
            std::printf("%s: fails without failure: %s\n", text, clean.said.c_str());
            return {0, 0, 0, 0, 1};
        }
        std::atomic<int> next{1};
        std::atomic<bool> over{false};
        Counts counts;
        const auto work = [&](int index) {
            const Room own = room(index);
            while (!over) {
                const int n = next++;
                const Judgement judgement = judge(own.run(words, variable + "=" + std::to_string(n)), clean);
                const std::lock_guard lock(mutex_);
                if (judgement.verdict == Verdict::untouched) {
                    over = true;
                } else {
                    count(counts, judgement, text, variable, n);
                }
            }
        };
        std::thread other(work, 1);
        work(0);
        other.join();
        return counts;
    }

    /// Each way in which a run went wrong, in how many runs, and one of them.
    void print_faults() const {
        for (const auto& [reason, fault] : faults_) {
            std::printf("%d runs, such as %s: %s\n", fault.runs, fault.example.c_str(), reason.c_str());
        }
    }

private:
    Room room(int index) const { return {folder_ + "/" + std::to_string(index), folder_ + "/in", preload_}; }

    void count(Counts& counts, const Judgement& judgement, const char* text, const std::string& variable, int n) {
        ++counts.runs;
        counts.ok += judgement.verdict == Verdict::ok;
        counts.refused += judgement.verdict == Verdict::refused;
        counts.foreign += judgement.verdict == Verdict::foreign;
        counts.ours += judgement.verdict == Verdict::ours;
        if (judgement.reason.empty()) return;
        Fault& fault = faults_[(judgement.verdict == Verdict::ours ? "OURS: " : "foreign: ") + judgement.reason];
        ++fault.runs;
        fault.example = variable + "=" + std::to_string(n) + " qx " + text;
    }

    const std::string command_, preload_, folder_;
    std::mutex mutex_;
    std::map<std::string, Fault> faults_;
};

int all(const std::string& command, const std::string& preload, const std::string& wanted) {
    char pattern[] = "/tmp/qx-failures-XXXXXX";
    const std::string folder = ::mkdtemp(pattern);
    Run run(command, preload, folder);
    if (!run.makes_inputs()) return 1;
    std::printf("  runs     ok  refused  foreign  OURS\n");
    Counts sum;
    for (const char* text : kLines) {
        if (std::string(text).find(wanted) == std::string::npos) continue;
        Counts counts = run.line(text, "QX_FAIL_ALLOCATION");
        counts.add(run.line(text, "QX_FAIL_THREAD"));
        counts.print(text);
        std::fflush(stdout);
        sum.add(counts);
    }
    sum.print("all");
    run.print_faults();
    std::filesystem::remove_all(folder);
    return sum.ours == 0 ? 0 : 1;
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
