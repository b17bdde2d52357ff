// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of commands that keep what was costly to make. Texts, since an empty one lets the environment speak.
struct CacheOptions {
    std::string folder, limit;
    bool without = false;

    /// Sets the host's folder and limit: the option before QX_CACHE_DIR or QX_CACHE_LIMIT before what is usual. Throws
    /// WrongUsage.
    void apply() const;
};
void add_cache_options(CLI::App& command, CacheOptions& options);
/// --no-cache, for commands that can do without.
void add_no_cache_option(CLI::App& command, CacheOptions& options);

}  // namespace qx::tool
