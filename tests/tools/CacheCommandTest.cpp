// SPDX-License-Identifier: Apache-2.0
// qx cache.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/options/CacheOptions.h"

namespace {

using namespace qx::test;
using nlohmann::json;

class CacheCommand : public QxTest {
protected:
    /// A file by the name of an entry, which is none.
    void put_entry(const std::string& cache, const std::string& first, int count) const {
        const std::string below = cache + "/vectors/1.1.32/" + first;
        std::filesystem::create_directories(folder / below);
        put(below + "/" + std::string(30, '0'), std::string(static_cast<std::size_t>(count), 'x'));
    }
    json told(const std::string& arguments, const std::string& before = "") const {
        const Outcome outcome = qx("cache --json " + arguments, before);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return json::parse(outcome.output);
    }
};

TEST_F(CacheCommand, TellsVerifiesAndClears) {
    EXPECT_EQ(told("--cache-dir none"),
              (json{{"folder", "none"}, {"entries", 0}, {"bytes", 0}, {"limit", 10LL << 30}}));
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));  // to look makes nothing
    put_entry("c", "ab", 100), put_entry("c", "cd", 1000);
    EXPECT_EQ(qx("cache --cache-dir c --cache-limit 2M").output,
              "folder   c\nentries  2\nbytes    1100\nlimit    2097152\n");
    EXPECT_EQ(told("--cache-dir c --verify"),
              (json{{"folder", "c"}, {"entries", 0}, {"bytes", 0}, {"limit", 10LL << 30}, {"removed", 2}}));
    put_entry("c", "ef", 7);
    EXPECT_EQ(told("--cache-dir c --clear")["removed"], 1);
    EXPECT_EQ(told("--cache-dir c")["entries"], 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "c"));
}

TEST_F(CacheCommand, TheOptionGoesBeforeTheEnvironmentBeforeWhatIsUsual) {
    const std::string no_home = "unset HOME XDG_CACHE_HOME QX_CACHE_DIR QX_CACHE_LIMIT;";
    const Cases<Text, Text, Text> rows{
        // environment, options, folder
        {"export HOME=/h", "", "/h/.cache/qx"},
        {"export HOME=/h XDG_CACHE_HOME=/x", "", "/x/qx"},
        {"export HOME=/h XDG_CACHE_HOME=x", "", "/h/.cache/qx"},
        {"export HOME=/h XDG_CACHE_HOME= QX_CACHE_DIR=", "", "/h/.cache/qx"},
        {"export HOME=/h XDG_CACHE_HOME=/x QX_CACHE_DIR=q", "", "q"},
        {"export HOME=/h XDG_CACHE_HOME=/x QX_CACHE_DIR=q", "--cache-dir o", "o"},
    };
    for (const auto& [environment, options, expected] : rows) {
        EXPECT_EQ(told(options, no_home + environment + ";")["folder"], expected) << environment << " " << options;
    }
    EXPECT_EQ(told("", no_home + "QX_CACHE_LIMIT=500K QX_CACHE_DIR=q")["limit"], 500 << 10);
    EXPECT_EQ(told("--cache-limit 3G", no_home + "QX_CACHE_LIMIT=500K QX_CACHE_DIR=q")["limit"], 3LL << 30);
    expect_fault("cache", 1, "no folder", no_home);
}

TEST(CacheOptions, CommandsCanDoWithout) {
    for (const auto& [words, folder] : Cases<std::string, Text>{{"--no-cache", ""}, {"--cache-dir f", "f"}}) {
        CLI::App app;
        qx::tool::CacheOptions options;
        add_cache_options(app, options);
        add_no_cache_option(app, options);
        app.parse(words);
        options.apply();
        EXPECT_EQ(standalone::CacheFolder(), folder);
        EXPECT_THROW(app.parse("--no-cache --cache-dir f"), CLI::ParseError);
        standalone::SetCacheFolder("");
    }
}

TEST_F(CacheCommand, RefusesInOneLine) {
    put("file", "x");
    expect_fault("cache --cache-dir file", 1, "the cache in file cannot be opened: Not a directory");
    expect_fault("cache --cache-dir file/below --clear", 1, "Not a directory");
    expect_faults(2, "cache --cache-dir c ", "",
                  {"--cache-limit 10X => --cache-limit", "--cache-limit 0 => --cache-limit",
                   "--verify --clear => --clear", "--no-cache => --no-cache", "more => more"});
    expect_fault("cache --cache-dir c", 2, "QX_CACHE_LIMIT", "QX_CACHE_LIMIT=much");
}

}  // namespace
