// SPDX-License-Identifier: Apache-2.0
// qx cache: what the cache on disk holds, whether it is whole, and its end.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "pictures/Failure.h"
#include "pictures/Watch.h"
#include "platform/standalone/Cache.h"
#include "tools/qx/Commands.h"
#include "tools/qx/options/CacheOptions.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct CacheCommandOptions {
    CommonOptions common;
    CacheOptions cache;
    bool verify = false, clear = false, json = false;
};

standalone::CacheReview review(const CacheCommandOptions& options) {
    if (standalone::CacheFolder().empty()) {
        throw WorkFailed("there is no folder for the cache: QX_CACHE_DIR, XDG_CACHE_HOME and HOME are not set");
    }
    if (options.clear) return standalone::ClearCache();
    return options.verify ? standalone::VerifyCache(interrupted) : standalone::LookAtCache();
}

void run(const CacheCommandOptions& options) {
    apply_common_options(options.common);
    options.cache.apply();
    const standalone::CacheReview found = review(options);
    if (interrupted()) throw pictures::Stopped();
    if (!found.fault.empty()) throw WorkFailed(found.fault);
    nlohmann::ordered_json told = {{"folder", standalone::CacheFolder()},
                                   {"entries", found.entries},
                                   {"bytes", found.bytes},
                                   {"limit", standalone::CacheDiskLimit()}};
    if (options.clear || options.verify) told["removed"] = found.removed;
    if (options.json) {
        print_json(told);
    } else {
        for (const auto& [what, value] : told.items()) {
            const std::string words = value.is_string() ? pictures::one_line(value.get<std::string>()) : value.dump();
            std::printf("%-8s %s\n", what.c_str(), words.c_str());
        }
    }
    finish_output();
}

}  // namespace

void add_cache(CLI::App& app) {
    auto* command = app.add_subcommand("cache", "Tell what the cache on disk holds, verify or clear it");
    const auto options = std::make_shared<CacheCommandOptions>();
    auto* verify = command->add_flag("--verify", options->verify, "read all files and remove what is damaged");
    verify->disable_flag_override();
    command->add_flag("--clear", options->clear, "remove all files")->disable_flag_override()->excludes(verify);
    add_json_option(*command, options->json);
    add_cache_options(*command, options->cache);
    add_common_options(*command, options->common);
    set_usage(*command, "[options]");
    command->footer("Example:\n  qx cache --verify");
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
