// SPDX-License-Identifier: Apache-2.0
// qx effects: which effects there are, and what they can be told.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/EffectFolders.h"
#include "pictures/Failure.h"
#include "scene/Words.h"
#include "tools/qx/Commands.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

using Json = nlohmann::ordered_json;
using Module = std::shared_ptr<const host::EffectModule>;

struct EffectsOptions {
    CommonOptions common;
    std::vector<std::string> folders;
    std::string module;
    bool json = false;
};

const char* kind_of(const QXE_ParameterInfo& p) {
    constexpr const char* words[] = {"number", "whole", "switch", "choice", "point", "colour", "text"};
    return words[p.kind];
}

Json standard_of(const QXE_ParameterInfo& p) {
    const double* n = p.standard.numbers;
    switch (p.kind) {
        case QXE_KindNumber:
            return n[0];
        case QXE_KindPoint:
            return Json{n[0], n[1]};
        case QXE_KindColour:
            return Json{n[1], n[2], n[3], n[0]};
        case QXE_KindSwitch:
            return p.standard.whole != 0;
        case QXE_KindChoice:
            return p.choices[p.standard.whole];
        case QXE_KindText:
            return p.standard.text != nullptr ? p.standard.text : "";
        default:
            return p.standard.whole;
    }
}

bool has_range(const QXE_ParameterInfo& p) {
    return p.kind == QXE_KindNumber || p.kind == QXE_KindWhole || p.kind == QXE_KindPoint;
}

Json choices_of(const QXE_ParameterInfo& p) {
    Json words = Json::array();
    for (auto word = p.choices; p.kind == QXE_KindChoice && *word != nullptr; ++word) words.push_back(*word);
    return words;
}

Json told(const QXE_ParameterInfo& p) {
    Json made = {{"name", p.name}, {"kind", kind_of(p)}, {"default", standard_of(p)}};
    if (has_range(p)) made["range"] = {p.least, p.most};
    if (p.kind == QXE_KindChoice) made["choices"] = choices_of(p);
    made["help"] = p.help != nullptr ? p.help : "";
    return made;
}

Json depths_of(const QXE_EffectInfo& info) {
    Json depths = Json::array();
    for (const auto& [bit, depth] : {std::pair{QXE_Depth8, 8}, {QXE_Depth16, 16}, {QXE_Depth32, 32}}) {
        if ((info.depths & static_cast<unsigned>(bit)) != 0) depths.push_back(depth);
    }
    return depths;
}

const char* text_or(const char* text, const char* other) { return text != nullptr ? text : other; }

Json told(const host::EffectModule& module) {
    const QXE_EffectInfo& info = module.info();
    Json parameters = Json::array();
    for (const auto* parameter : module.parameters()) parameters.push_back(told(*parameter));
    return {{"name", info.name},
            {"label", text_or(info.label, info.name)},
            {"about", text_or(info.about, "")},
            {"module", module.path()},
            {"depths", depths_of(info)},
            {"parameters", parameters}};
}

Json told(const scene::EffectKind& kind) {
    const auto effect = kind.make();
    Json parameters = Json::array();
    for (const scene::Key& key : effect->keys()) {
        parameters.push_back({{"name", key.name}, {"value", text_or(key.value, "")}, {"help", key.help}});
    }
    return {{"name", kind.name}, {"parameters", parameters}};
}

/// What stands between a parameter's name and its help.
std::string form_of(const Json& parameter) {
    if (parameter.contains("value")) return parameter["value"];
    if (parameter.contains("choices")) {
        std::string words;
        for (const auto& word : parameter["choices"]) words += (words.empty() ? "" : "|") + word.get<std::string>();
        return words;
    }
    std::string form = parameter["kind"];
    if (!parameter.contains("range")) return form;
    const auto words = [&](int end) {
        return scene::words(parameter["range"][static_cast<std::size_t>(end)].get<double>());
    };
    return form + " " + words(0) + ".." + words(1);
}

/// A value as a command line tells it.
std::string as_typed(const Json& value) {
    if (value.is_string()) return value;
    if (value.is_number()) return scene::words(value.get<double>());
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const auto& one : value) list += (list.empty() ? "" : ",") + as_typed(one);
    return list;
}

void print(const Json& effect) {
    std::printf("%s", effect["name"].get<std::string>().c_str());
    if (effect.contains("module")) {
        std::string depths;
        for (const auto& depth : effect["depths"]) depths += (depths.empty() ? "" : ", ") + depth.dump();
        std::printf(" - %s\n  %s; depths %s", effect["about"].get<std::string>().c_str(),
                    effect["module"].get<std::string>().c_str(), depths.c_str());
    }
    std::printf("\n");
    for (const auto& parameter : effect["parameters"]) {
        std::printf("    %-12s %-22s %s", parameter["name"].get<std::string>().c_str(), form_of(parameter).c_str(),
                    parameter["help"].get<std::string>().c_str());
        if (parameter.contains("default")) {
            std::printf(" (default: %s)", as_typed(parameter["default"]).c_str());
        }
        std::printf("\n");
    }
}

Json all_of(const EffectsOptions& options) {
    host::EffectFolders folders(options.folders);
    Json effects = Json::array();
    if (!options.module.empty()) {
        effects.push_back(value_of("MODULE", [&] { return told(*folders.module_named(options.module)); }));
        return effects;
    }
    for (const scene::EffectKind& kind : scene::effect_kinds()) effects.push_back(told(kind));
    for (const std::string& path : folders.modules()) {
        try {
            effects.push_back(told(*folders.module(path)));
        } catch (const pictures::Failure& failure) {
            say_note(failure.what());
        }
    }
    return effects;
}

void run(const EffectsOptions& options) {
    apply_common_options(options.common);
    const Json effects = all_of(options);
    if (options.json) {
        print_json(effects);
    } else {
        for (const auto& effect : effects) print(effect);
    }
    finish_output();
}

}  // namespace

void add_effects(CLI::App& app) {
    auto* command = app.add_subcommand("effects", "List effects, those of modules too, with their parameters");
    const auto options = std::make_shared<EffectsOptions>();
    command->add_option("MODULE", options->module, "one module alone, by its name in the folders or by its file");
    add_effect_folders_option(*command, options->folders);
    add_json_option(*command, options->json);
    add_common_options(*command, options->common);
    set_usage(*command, "[MODULE.so] [options]");
    command->footer("Example:\n  qx effects\n  qx effects ./shadow.so --json");
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
