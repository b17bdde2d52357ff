// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/CacheOptions.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "platform/standalone/Cache.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

/// A variable that is set to nothing counts as not set.
std::string from_environment(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr ? "" : value;
}

/// Below the folder for caches, by the rules of the XDG base directories: a relative one is not valid. Empty where the
/// environment names no home either.
std::string usual_folder() {
    const std::string caches = from_environment("XDG_CACHE_HOME"), home = from_environment("HOME");
    if (caches.starts_with('/')) return caches + "/qx";
    return home.empty() ? "" : home + "/.cache/qx";
}

}  // namespace

void CacheOptions::apply() const {
    const std::string other_folder = from_environment("QX_CACHE_DIR");
    const std::string chosen = !folder.empty() ? folder : !other_folder.empty() ? other_folder : usual_folder();
    standalone::SetCacheFolder(without ? "" : chosen);
    const std::string other_limit = from_environment("QX_CACHE_LIMIT");
    if (!limit.empty()) {
        standalone::SetCacheDiskLimit(memory_size("--cache-limit", limit));
    } else if (!other_limit.empty()) {
        standalone::SetCacheDiskLimit(memory_size("QX_CACHE_LIMIT", other_limit));
    }
}

void add_cache_options(CLI::App& command, CacheOptions& options) {
    command
        .add_option("--cache-dir", options.folder,
                    "folder of the cache (QX_CACHE_DIR; default: qx in $XDG_CACHE_HOME or ~/.cache)")
        ->type_name("FOLDER");
    command
        .add_option("--cache-limit", options.limit,
                    "size of the cache, beyond which the oldest files go (QX_CACHE_LIMIT; default: 10G)")
        ->type_name("N[K|M|G]");
}

void add_no_cache_option(CLI::App& command, CacheOptions& options) {
    command.add_flag("--no-cache", options.without, "neither read nor write the cache on disk")
        ->disable_flag_override()
        ->excludes("--cache-dir");
}

}  // namespace qx::tool
