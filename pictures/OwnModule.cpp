// SPDX-License-Identifier: Apache-2.0
#include "pictures/OwnModule.h"

#include <dlfcn.h>

#include <filesystem>

namespace qx::pictures {

void* open_own_module(const char* name) {
    std::error_code ignored;
    const auto command = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const auto root = command.parent_path().parent_path();
    for (const char* folder : {"lib", QX_LIBRARY_FOLDER}) {
        const auto file = root / folder / name;
        if (!std::filesystem::exists(file, ignored)) continue;
        if (void* module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

}  // namespace qx::pictures
