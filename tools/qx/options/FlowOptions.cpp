// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/FlowOptions.h"

#include <CLI/CLI.hpp>

#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

// The ranges of the engine.
constexpr double kLeastDetail = 0.05, kMostSmoothness = 1000, kMostConvergence = 0.1;
constexpr int kMostIterations = 50, kLeastBlock = 4, kMostBlock = 40;

}  // namespace

scene::FlowChoices FlowOptions::choices() const {
    scene::FlowChoices choices;
    if (!quality.empty())
        choices.quality = static_cast<scene::FlowQuality>(choice("--quality", quality, scene::kFlowQualityWords));
    const auto real = [](const char* option, const std::string& text, double least, double most, auto& to) {
        if (!text.empty()) to = real_number(option, text, least, most);
    };
    real("--detail", detail, kLeastDetail, 1, choices.detail);
    real("--smoothness", smoothness, -kMostSmoothness, kMostSmoothness, choices.smoothness);
    real("--refine-smoothness", refine_smoothness, -kMostSmoothness, kMostSmoothness, choices.refine_smoothness);
    real("--convergence", convergence, 0, kMostConvergence, choices.convergence);
    if (!iterations.empty()) choices.iterations = whole_number("--iterations", iterations, 1, kMostIterations);
    if (!block.empty()) choices.block = whole_number("--block", block, kLeastBlock, kMostBlock);
    if (!filter.empty()) choices.filter = choice("--filter", filter, scene::kFlowFilterWords);
    return choices;
}

std::string FlowOptions::words() const {
    std::string all;
    for (const auto* text :
         {&quality, &detail, &smoothness, &refine_smoothness, &iterations, &convergence, &block, &filter})
        all += *text + '\n';
    return all;
}

bool FlowOptions::is_any() const { return words() != FlowOptions{}.words(); }

void add_flow_options(CLI::App& command, FlowOptions& options) {
    const auto add = [&](const char* name, std::string& text, const char* help, const char* form) {
        command.add_option(name, text, help)->type_name(form);
    };
    add("--quality", options.quality, "how well motion is followed, and how long it takes (default: good)",
        "draft|good|best");
    add("--detail", options.detail, "over the quality: size of the field of vectors, as a share of the frame's",
        "0.05..1");
    add("--smoothness", options.smoothness, "over the quality: of the field, for blocks; below 0 pixels count more",
        "-1000..1000");
    add("--refine-smoothness", options.refine_smoothness, "over the quality: of the field, for single pixels",
        "-1000..1000");
    add("--iterations", options.iterations, "over the quality: passes over the field", "1..50");
    add("--convergence", options.convergence, "over the quality: mean difference that counts as none", "0..0.1");
    add("--block", options.block, "over the quality: pixels of the field across a block", "4..40");
    add("--filter", options.filter, "over the quality: how frames are sampled", "bilinear|sinc");
}

}  // namespace qx::tool
