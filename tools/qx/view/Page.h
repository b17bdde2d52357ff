// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string_view>

namespace qx::tool {

/// The files of page/, which the build puts into the command.
struct PageFile {
    std::string_view name, type, text;
};
std::span<const PageFile> page_files();

}  // namespace qx::tool
