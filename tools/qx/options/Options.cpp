// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/Options.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "QX/iterate/QX_Bands.h"
#include "pictures/Picture.h"
#include "platform/standalone/Host.h"
#include "scene/LayerWords.h"
#include "scene/Placing.h"

namespace qx::tool {
namespace {

constexpr int kMostThreads = 1024;

/// Hands a setting to `set`, from the flag or else from the environment.
template <class Set>
void apply(const char* flag, const std::string& value, const char* variable, int most, const Set& set) {
    const char* from_environment = std::getenv(variable);
    if (!value.empty()) {
        set(whole_number(flag, value, 1, most));
    } else if (from_environment != nullptr && *from_environment != '\0') {
        set(whole_number(variable, from_environment, 1, most));
    }
}

class UsageLine : public CLI::Formatter {
public:
    explicit UsageLine(std::string usage) : usage_(std::move(usage)) {}
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " " + usage_ + "\n";
    }

private:
    const std::string usage_;
};

}  // namespace

void set_usage(CLI::App& command, const std::string& usage) { command.formatter(std::make_shared<UsageLine>(usage)); }

void add_common_options(CLI::App& command, CommonOptions& options) {
    command.add_option("-j,--threads", options.threads, "threads to work with (QX_THREADS; default: all cores)")
        ->type_name("N");
    command
        .add_option("--bands", options.bands,
                    "bands that work is cut into, 1 to 32 (QX_BANDS; default: 32 on every machine)")
        ->type_name("N");
    auto* quiet = command.add_flag("-q,--quiet", options.quiet, "no notes, no progress");
    command.add_flag("-v,--verbose", options.verbose, "say what is done")->excludes(quiet);
}

void apply_common_options(const CommonOptions& options) {
    set_talk(options.quiet ? Talk::quiet : options.verbose ? Talk::verbose : Talk::normal);
    apply("--threads", options.threads, "QX_THREADS", kMostThreads, standalone::SetPoolLimit);
    apply("--bands", options.bands, "QX_BANDS", kMaxBands, standalone::SetBandCount);
}

void add_json_option(CLI::App& command, bool& json) {
    command.add_flag("--json", json, "machine-readable, on standard output")->disable_flag_override();
}

void add_depth_option(CLI::App& command, std::string& depth, const std::string& usual) {
    const std::string help =
        "bits to work with (default: " + usual + "); 16 has 32,769 steps, 32 every value of 16-bit files";
    command.add_option("--depth", depth, help)->type_name("8|16|32");
}

int depth_of(const std::string& text) { return text.empty() ? 0 : 8 << choice("--depth", text, scene::kDepthWords); }

void add_picture_options(CLI::App& command, PictureOptions& options) {
    add_depth_option(command, options.depth, "the inputs' deepest");
    add_reading_options(command, options.reading);
    add_encoding_options(command, options.encoding);
    command.add_option("-o,--output", options.output, "file to write: " + pictures::known_endings())
        ->required()
        ->type_name("FILE");
    add_common_options(command, options.common);
}

std::uint64_t memory_size(const std::string& option, const std::string& text) {
    constexpr std::uint64_t most = std::uint64_t{1} << 62;
    constexpr const char* units = "KMGT";
    const char* const unit = text.empty() ? nullptr : std::strchr(units, text.back());
    const int shift = unit == nullptr ? 0 : 10 * static_cast<int>(unit - units + 1);
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size() - (unit == nullptr ? 0 : 1);
    const auto [behind, fault] = std::from_chars(text.data(), end, number);
    if (fault != std::errc{} || behind != end || number == 0 || number > most >> shift)
        throw WrongUsage(option + " " + text + ": not a size such as 3000000, 500M or 2G");
    return number << shift;
}

std::uint64_t half_the_memory() {
    const long pages = ::sysconf(_SC_PHYS_PAGES), bytes = ::sysconf(_SC_PAGESIZE);
    return pages < 0 || bytes < 0 ? 0 : static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(bytes) / 2;
}

int whole_number(const std::string& option, const std::string& text, int least, int most) {
    return value_of(option, [&] { return scene::whole_number(text, least, most); });
}

double real_number(const std::string& option, const std::string& text, double least, double most) {
    return value_of(option, [&] { return scene::real_number(text, least, most); });
}

int choice(const std::string& option, const std::string& text, std::span<const char* const> known) {
    return value_of(option, [&] { return scene::choice(text, known); });
}

bool flag(const std::string& option, const std::string& text) {
    constexpr const char* words[] = {"false", "true"};
    return choice(option, text, words) == 1;
}

std::vector<double> real_numbers(const std::string& option, const std::string& text, const char* form,
                                 std::size_t fewest, std::size_t most, double least, double highest) {
    std::vector<double> numbers;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(',', begin);
        const std::string number = text.substr(begin, end == std::string::npos ? end : end - begin);
        numbers.push_back(real_number(option, number, least, highest));
    }
    if (numbers.size() >= fewest && numbers.size() <= most) return numbers;
    throw WrongUsage(option + " " + text + ": not " + form);
}

Place place(const std::string& option, const std::string& text) {
    const auto comma = text.find(',');
    if (comma == std::string::npos) throw WrongUsage(option + " " + text + ": not a position X,Y");
    const auto part = [&](const std::string& number) {
        return whole_number(option, number, -scene::kFarthest, scene::kFarthest);
    };
    return {part(text.substr(0, comma)), part(text.substr(comma + 1))};
}

void check_output_option(const std::string& path) {
    if (!pictures::known_format(path)) {
        throw WrongUsage("-o " + path + ": its ending is none of " + pictures::known_endings());
    }
    pictures::check_output(path);
}

}  // namespace qx::tool
