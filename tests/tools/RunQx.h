// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>

#include "platform/standalone/Standalone.h"
#include "tests/pictures/Support.h"
#include "tools/qx/Commands.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::test {

/// A run of the command. Its standard error goes to `errors`.
struct Outcome {
    int status;
    std::string output, errors;
};

/// Runs of the command in a folder of the test's own.
class QxTest : public InFolder {
protected:
    /// @param before  shell text in front of the command, such as a limit
    Outcome qx(const std::string& arguments, const std::string& before = "") const {
        const Folder said;
        const std::string line = "cd " + (folder / "") + ";" + before + " " + QX_COMMAND + " " + arguments + " >" +
                                 (said / "out") + " 2>" + (said / "err") + " </dev/null";
        const int status = std::system(line.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(said / "out"), contents(said / "err")};
    }
    /// A run that succeeds and has nothing to say.
    void run(const std::string& arguments, const std::string& before = "") const {
        const auto outcome = qx(arguments, before);
        EXPECT_EQ(outcome.status, 0) << arguments;
        EXPECT_EQ(outcome.errors + outcome.output, "") << arguments;
    }
    /// A run that fails with this status and one line that holds these words, and leaves no file.
    void expect_fault(const std::string& arguments, int status, const std::string& words,
                      const std::string& before = "") const {
        SCOPED_TRACE(arguments);
        const auto names = folder.names();
        const auto outcome = qx(arguments, before);
        EXPECT_EQ(outcome.status, status);
        EXPECT_TRUE(outcome.errors.starts_with("qx: ")) << outcome.errors;
        EXPECT_HOLDS(outcome.errors, words);
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(folder.names(), names);
    }
    /// The same of rows "arguments => words", within other arguments.
    void expect_faults(int status, const std::string& before, const std::string& after, const Names& rows) const {
        for (const std::string& row : rows)
            expect_fault(before + halves(row).first + after, status, halves(row).second);
    }
    /// A picture whose colours are its positions.
    void gradient(const std::string& name, int width, int height, int alpha, int blue = 0) const {
        write(
            name, width, height, [=](int x, int y) { return argb(alpha, 9 * x, 7 * y, blue); }, alpha < 255);
    }
    bool same(const std::string& a, const std::string& b) const { return same_pixels(read(a), read(b)); }

    /// Ends this process with the status of a run in it, as a death test does in a child. The signals come while bands
    /// run, as soon as the file `sign` is there.
    [[noreturn]] static void run_interrupted(const std::vector<int>& signals, const std::string& sign,
                                             const Names& words) {
        standalone::SetExecutor([&](const boost::function<void(int)>& task, int count) {
            for (int i = 0; i < count; ++i) {
                if (i == 2 && std::filesystem::exists(sign)) std::for_each(signals.begin(), signals.end(), std::raise);
                task(i);
            }
        });
        std::vector<const char*> arguments{"qx"};
        for (const std::string& word : words) arguments.push_back(word.c_str());
        std::exit(tool::run_command(static_cast<int>(arguments.size()), arguments.data()));
    }
};

}  // namespace qx::test
