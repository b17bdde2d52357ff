// SPDX-License-Identifier: Apache-2.0
// qx_interp_quality: how near the pictures between frames come to true ones, over a folder of scenes.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "QX/indep/QX_Area.h"
#include "QX/library/QX_Library.h"
#include "bench/interp/Measures.h"
#include "pictures/Carried.h"
#include "scene/retime/Between.h"
#include "scene/retime/Field.h"

namespace qx::bench {
namespace {

namespace fs = std::filesystem;

/// What is measured: a mix, and motion with each quality.
struct Form {
    const char* name;
    scene::BetweenOptions options;
};
std::vector<Form> forms() {
    std::vector<Form> all{{"blend", {scene::BetweenMethod::blend}}};
    for (int i = 0; i < static_cast<int>(std::size(scene::kFlowQualityWords)); ++i) {
        scene::FlowChoices choices;
        choices.quality = static_cast<scene::FlowQuality>(i);
        all.push_back({scene::kFlowQualityWords[i], {scene::BetweenMethod::flow, scene::flow_params(choices)}});
    }
    return all;
}

struct Result {
    double psnr = 0, ssim = 0, milliseconds = 0;
    std::optional<double> end_point_error;
};

scene::SharedPicture read(const fs::path& path) {
    auto picture = std::make_shared<pictures::Picture>(pictures::read_picture(path.string()));
    return picture;
}

/// u and v are 64ths of a pixel around 32768, and known where blue is 1.
scene::FlowField read_field(const std::string& path) {
    const auto values = pictures::pixels_of_file16(path, pictures::read_picture(path));
    scene::FlowField field{values->width, values->height, {}};
    const auto part = [](int value) { return static_cast<float>(value - 32768) / 64; };
    for (int y = 0; y < field.height; ++y) {
        const QX_Pixel16* const row = row_of<QX_Pixel16>(*values, y);
        for (int x = 0; x < field.width; ++x) {
            const bool known = row[x].blue == 1;
            field.vectors.push_back(known ? scene::FlowField::Vector{part(row[x].red), part(row[x].green)}
                                          : scene::FlowField::Vector{scene::kUnknownFlow, scene::kUnknownFlow});
        }
    }
    return field;
}

Result measure(const fs::path& folder, const Form& form) {
    const scene::SharedPicture first = read(folder / "frame10.png"), second = read(folder / "frame11.png");
    const scene::SharedPicture truth = read(folder / "frame10i11.png");
    const auto began = std::chrono::steady_clock::now();
    scene::FramePair between(folder.string(), first, second, form.options);
    const scene::SharedPicture picture = between.at(0.5, pictures::unwatched());
    Result result;
    result.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count();
    result.psnr = psnr(*picture->world, *truth->world);
    result.ssim = ssim(*picture->world, *truth->world);
    const fs::path field = folder / "flow10.png";
    if (form.options.method == scene::BetweenMethod::flow && fs::exists(field)) {
        const auto fields =
            scene::flow_fields(folder.string(), *first, *second, form.options.flow, pictures::unwatched());
        result.end_point_error = end_point_error(fields.forward, read_field(field.string()));
    }
    return result;
}

Result mean(const std::vector<Result>& results) {
    Result sum;
    double error = 0;
    int fields = 0;
    for (const Result& result : results) {
        sum.psnr += result.psnr;
        sum.ssim += result.ssim;
        sum.milliseconds += result.milliseconds;
        error += result.end_point_error.value_or(0);
        fields += result.end_point_error ? 1 : 0;
    }
    const auto count = static_cast<double>(results.size());
    sum = {sum.psnr / count, sum.ssim / count, sum.milliseconds / count, {}};
    if (fields > 0) sum.end_point_error = error / fields;
    return sum;
}

class Table {
public:
    explicit Table(bool json) : json_(json) {
        if (!json_) std::printf("%-16s %-6s %8s %7s %9s %8s\n", "scene", "form", "dB", "SSIM", "error", "ms");
    }
    void add(const std::string& scene, const char* form, const Result& result) {
        if (json_) {
            nlohmann::ordered_json row{{"scene", scene}, {"form", form}, {"psnr", result.psnr}, {"ssim", result.ssim}};
            if (result.end_point_error) row["end-point-error"] = *result.end_point_error;
            row["milliseconds"] = result.milliseconds;
            rows_.push_back(row);
            return;
        }
        char error[32] = "";
        if (result.end_point_error) std::snprintf(error, sizeof error, "%.3f", *result.end_point_error);
        std::printf("%-16s %-6s %8.3f %7.4f %9s %8.1f\n", scene.c_str(), form, result.psnr, result.ssim, error,
                    result.milliseconds);
    }
    void end() const {
        if (json_) std::printf("%s\n", rows_.dump(2).c_str());
    }

private:
    const bool json_;
    nlohmann::ordered_json rows_ = nlohmann::ordered_json::array();
};

int run(const std::string& folder, bool json) {
    std::set<fs::path> scenes;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (fs::exists(entry.path() / "frame10i11.png")) scenes.insert(entry.path());
    }
    if (scenes.empty()) {
        std::fprintf(stderr, "%s: no folder in it has frame10.png, frame11.png and frame10i11.png\n", folder.c_str());
        return 1;
    }
    Table table(json);
    const auto all = forms();
    std::vector<std::vector<Result>> results(all.size());
    for (const fs::path& scene : scenes) {
        for (std::size_t i = 0; i < all.size(); ++i) {
            results[i].push_back(measure(scene, all[i]));
            table.add(scene.filename().string(), all[i].name, results[i].back());
        }
    }
    for (std::size_t i = 0; i < all.size(); ++i) table.add("mean", all[i].name, mean(results[i]));
    table.end();
    return 0;
}

}  // namespace
}  // namespace qx::bench

int main(int argc, char** argv) {
    const bool json = argc == 3 && std::string(argv[2]) == "--json";
    if (argc != 2 && !json) {
        std::fprintf(stderr, "usage: qx_interp_quality FOLDER [--json]\n");
        return 2;
    }
    if (QX_Birth() != 0) return 1;
    int status = 1;
    try {
        status = qx::bench::run(argv[1], json);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
    }
    QX_Death();
    return status;
}
