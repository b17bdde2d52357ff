// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/pictures/Support.h"
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
    Outcome qx(const std::string& arguments, const std::string& before = "") const;
    /// A run that succeeds and has nothing to say.
    void run(const std::string& arguments, const std::string& before = "") const;
    /// A run that fails with this status and one line that holds these words, and leaves no file.
    void expect_fault(const std::string& arguments, int status, const std::string& words,
                      const std::string& before = "") const;
    /// The same of rows "arguments => words", within other arguments.
    void expect_faults(int status, const std::string& before, const std::string& after, const Names& rows) const;
    /// A picture whose colours are its positions.
    void gradient(const std::string& name, int width, int height, int alpha, int blue = 0) const;
    bool same(const std::string& a, const std::string& b) const { return same_pixels(read(a), read(b)); }

    /// Ends this process with the status of a run in it, as a death test does in a child. The signals come while bands
    /// run, as soon as the file `sign` is there.
    [[noreturn]] static void run_interrupted(const std::vector<int>& signals, const std::string& sign,
                                             const Names& words);
};

}  // namespace qx::test
