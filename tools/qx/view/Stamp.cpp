// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Stamp.h"

#include <sys/stat.h>

#include <climits>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "tools/qx/work/Fingerprint.h"

namespace qx::tool {
namespace {

/// Hears of the texts of a JSON value.
struct Texts : nlohmann::json_sax<nlohmann::json> {
    std::set<std::string> found;

    bool string(string_t& text) override {
        const bool may_be_name = !text.empty() && text.size() < PATH_MAX && text.find('\0') == std::string::npos;
        if (may_be_name) found.insert(text);
        return true;
    }
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }
};

}  // namespace

std::string stamp_of(const std::vector<std::string>& files) {
    std::string all;
    for (const std::string& file : files) {
        struct stat info {};
        all += file + '\n';
        if (::stat(file.c_str(), &info) != 0) continue;
        for (const auto number : {std::int64_t{info.st_mtim.tv_sec}, std::int64_t{info.st_mtim.tv_nsec},
                                  std::int64_t{info.st_size}, static_cast<std::int64_t>(info.st_ino)}) {
            all += std::to_string(number) + ' ';
        }
    }
    return fingerprint(all);
}

std::vector<std::string> files_named_in(const std::string& json, const std::string& scene) {
    Texts texts;
    nlohmann::json::sax_parse(json, &texts);
    const auto folder = std::filesystem::path(scene).parent_path();
    std::vector<std::string> files;
    for (const std::string& text : texts.found) files.push_back((folder / text).string());
    return files;
}

}  // namespace qx::tool
