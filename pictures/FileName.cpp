// SPDX-License-Identifier: Apache-2.0
#include "pictures/FileName.h"

#include <sys/stat.h>

#include <filesystem>

namespace qx::pictures {
namespace {

constexpr const char* kOutput = ":-";  // behind a format

std::string in_small_letters(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text;
}

}  // namespace

FileName named(const std::string& path) {
    const auto colon = path.find_last_of(':');
    if (colon == std::string::npos || path.find('/', colon) != std::string::npos) return {path, ""};
    const std::string file = path.substr(0, colon);
    std::error_code ignored;
    if (extension_of(file) != "exr" || std::filesystem::exists(path, ignored)) return {path, ""};
    return {file, path.substr(colon + 1)};
}

bool is_there(const std::string& path) {
    std::error_code ignored;
    return is_standard_input(path) || std::filesystem::exists(file_of(path), ignored);
}

std::int64_t changed_at(const std::string& path) {
    struct stat info {};
    if (is_standard_input(path) || ::stat(file_of(path).c_str(), &info) != 0) return 0;
    return std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
}

bool is_standard_output(const std::string& path) {
    return path == "-" || (path.ends_with(kOutput) && path.find('/') == std::string::npos);
}

std::string extension_of(const std::string& path) {
    if (is_standard_output(path)) return path == "-" ? "png" : in_small_letters(path.substr(0, path.size() - 2));
    const auto name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos ? "" : in_small_letters(name.substr(dot + 1));
}

}  // namespace qx::pictures
