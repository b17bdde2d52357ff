// SPDX-License-Identifier: Apache-2.0
// qx info: what this build and this machine have.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "QX/indep/QX_Slots.h"
#include "host/EffectFolders.h"
#include "platform/TK_CPU.h"
#include "platform/standalone/Host.h"
#include "scene/Words.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct InfoOptions {
    CommonOptions common;
    std::vector<std::string> folders;
    bool json = false;
};

const char* processor_level() {
    if (TK_G_CPU_DataP->flags[kTK_CPU_FasterRows] != 0) return "AVX2";
    return TK_G_CPU_DataP->flags[kTK_CPU_Vector] != 0 ? "SSE4.1" : "plain";
}

/// The suites that effects find, with their versions.
std::vector<std::string> suites() {
    std::vector<std::string> names;
    for (const auto& suite : standalone::RegisteredSuites()) {
        names.push_back(suite.name + " " + std::to_string(suite.version));
    }
    return names;
}

/// Those that a layer can name, without a look into modules.
std::vector<std::string> effects(const std::vector<std::string>& folders) {
    std::vector<std::string> names;
    for (const scene::EffectKind& kind : scene::effect_kinds()) names.emplace_back(kind.name);
    for (const std::string& name : host::EffectFolders(folders).names()) names.push_back(name);
    return names;
}

void run(const InfoOptions& options) {
    apply_common_options(options.common);
    const Library library;
    const auto filled = std::count_if(std::begin(QXp_G_OverFuncs), std::end(QXp_G_OverFuncs),
                                      [](const void* routine) { return routine != nullptr; });
    const int slots = static_cast<int>(filled);
    const auto found = effects(options.folders);
    if (options.json) {
        const nlohmann::ordered_json info = {{"version", QX_VERSION},
                                             {"processor", processor_level()},
                                             {"slots_filled", slots},
                                             {"slots", kQX_SlotCount},
                                             {"threads", standalone::PoolThreads()},
                                             {"bands", standalone::BandCount()},
                                             {"suites", suites()},
                                             {"effects", found}};
        print_json(info);
    } else {
        std::printf("version    %s\nprocessor  %s\nslots      %d of %d filled\nthreads    %d\nbands      %d\n",
                    QX_VERSION, processor_level(), slots, kQX_SlotCount, standalone::PoolThreads(),
                    standalone::BandCount());
        std::printf("suites     %zu\neffects    %s\n", suites().size(), scene::joined(found, ", ").c_str());
    }
    finish_output();
}

}  // namespace

void add_info(CLI::App& app) {
    auto* command = app.add_subcommand("info", "Version, processor level, slots, threads, bands, suites and effects");
    const auto options = std::make_shared<InfoOptions>();
    add_json_option(*command, options->json);
    add_effect_folders_option(*command, options->folders);
    add_common_options(*command, options->common);
    set_usage(*command, "[options]");
    command->footer("Example:\n  qx info --json");
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
