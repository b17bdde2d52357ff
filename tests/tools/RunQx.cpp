// SPDX-License-Identifier: Apache-2.0
#include "tests/tools/RunQx.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>

#include "platform/standalone/Standalone.h"
#include "tools/qx/Commands.h"

namespace qx::test {

Outcome QxTest::qx(const std::string& arguments, const std::string& before) const {
    const Folder said;
    const std::string line = "cd " + (folder / "") + ";" + before + " " + QX_COMMAND + " " + arguments + " >" +
                             (said / "out") + " 2>" + (said / "err") + " </dev/null";
    const int status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(said / "out"), contents(said / "err")};
}

void QxTest::run(const std::string& arguments, const std::string& before) const {
    const auto outcome = qx(arguments, before);
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_EQ(outcome.errors + outcome.output, "") << arguments;
}

void QxTest::expect_fault(const std::string& arguments, int status, const std::string& words,
                          const std::string& before) const {
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

void QxTest::expect_faults(int status, const std::string& before, const std::string& after, const Names& rows) const {
    for (const std::string& row : rows) expect_fault(before + halves(row).first + after, status, halves(row).second);
}

void QxTest::gradient(const std::string& name, int width, int height, int alpha, int blue) const {
    write(
        name, width, height, [=](int x, int y) { return argb(alpha, 9 * x, 7 * y, blue); }, alpha < 255);
}

void QxTest::run_interrupted(const std::vector<int>& signals, const std::string& sign, const Names& words) {
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

}  // namespace qx::test
