// SPDX-License-Identifier: Apache-2.0
// The manual page and the completions, as man and shells read them.
#include <set>
#include <sstream>

#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class Generate : public QxTest {
protected:
    std::string told(const std::string& arguments) const {
        const auto outcome = qx(arguments);
        EXPECT_EQ(outcome.status, 0) << arguments << outcome.errors;
        return outcome.output;
    }
    /// What a program says; one that is not installed is a fault of the machine, not of the text.
    std::string shell(const std::string& program, const std::string& script) const {
        put("script", script);
        const std::string line = "cd " + (folder / "") + "; " + program + " ./script >out 2>&1 </dev/null";
        EXPECT_EQ(std::system(line.c_str()), 0) << bytes("out");
        return bytes("out");
    }
    Names subcommands() const {
        std::istringstream lines(told("--help"));
        Names names;
        bool listed = false;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("Subcommands:")) {
                listed = true;
            } else if (listed && line.empty()) {
                break;
            } else if (listed) {
                names.push_back(line.substr(2, line.find(' ', 2) - 2));
            }
        }
        return names;
    }
    /// The long options of a help text.
    static std::set<std::string> options_of(const std::string& help) {
        std::set<std::string> options;
        for (std::size_t at = help.find("--"); at != std::string::npos; at = help.find("--", at + 2)) {
            std::size_t end = at + 2;
            while (end < help.size() && (std::islower(static_cast<unsigned char>(help[end])) || help[end] == '-'))
                ++end;
            if (end > at + 3) options.insert(help.substr(at, end - at));
        }
        return options;
    }
};

TEST_F(Generate, TheManualHasEveryOptionAndManReadsIt) {
    put("qx.1", told("generate man"));
    const std::string shown = shell("sh", "man --warnings -P cat -l ./qx.1 2>warnings | col -b; cat warnings");
    ASSERT_FALSE(subcommands().empty());
    for (const std::string& command : subcommands()) {
        for (const std::string& option : options_of(told(command + " --help"))) EXPECT_HOLDS(shown, option);
    }
    EXPECT_EQ(bytes("warnings"), "");
    EXPECT_HOLDS(shown, "qx comp BACKGROUND LAYER [options] [LAYER [options]]... -o OUT");
}

TEST_F(Generate, ShellsCompleteCommandsOptionsAndWords) {
    for (const std::string name : {"bash", "zsh", "fish"}) put(name, told("generate " + name));
    put("frame.png", "");
    const Cases<std::string, Names> cases = {{"co", {"comp", "convolve", "convert"}},    {"comp --gra", {"--gravity"}},
                                             {"comp --gravity south-w", {"south-west"}}, {"render --dept", {"--depth"}},
                                             {"comp --mode color-d", {"color-dodge"}},   {"comp --depth 1", {"16"}}};
    for (const auto& [line, words] : cases) {
        std::istringstream parts("qx " + line);
        Names typed(std::istream_iterator<std::string>(parts), {});
        const std::string count = std::to_string(typed.size());
        const std::string by_shell[] = {
            shell("bash", "source ./bash\nCOMP_WORDS=(qx " + line + ")\nCOMP_CWORD=" +
                              std::to_string(typed.size() - 1) + "\n_qx\nprintf '%s\\n' \"${COMPREPLY[@]}\""),
            shell("zsh", "compadd() { shift; print -l -- $@ }\n_files() { }\nsource ./zsh\nwords=(qx " + line +
                             ")\nCURRENT=" + count + "\n_qx"),
            shell("fish", "source ./fish\ncomplete -C 'qx " + line + "'")};
        for (const std::string& said : by_shell) {
            for (const std::string& word : words) EXPECT_HOLDS("\n" + said, "\n" + word) << line;
        }
        EXPECT_EQ(by_shell[0].find("--quiet"), std::string::npos) << "only what begins so";
    }
    EXPECT_HOLDS(shell("bash", "source ./bash\nCOMP_WORDS=(qx comp fra)\nCOMP_CWORD=2\n_qx\necho ${COMPREPLY[@]}"),
                 "frame.png");
}

TEST_F(Generate, WrongUseIsToldInALine) {
    expect_faults(2, "generate", "", {" => TEXT is required", " tcsh => not one of man, bash, zsh, fish"});
}

}  // namespace
