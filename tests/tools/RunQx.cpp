// SPDX-License-Identifier: Apache-2.0
#include "tests/tools/RunQx.h"

#include <sys/wait.h>

#include <cstdlib>

#include "tests/pictures/Support.h"

namespace qx::test {

Outcome run_qx(const std::string& arguments, const std::string& before) {
    const Folder folder;
    const std::string command = before + " " + QX_COMMAND + " " + arguments + " >" + (folder / "out") + " 2>" +
                                (folder / "err") + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(folder / "out"), contents(folder / "err")};
}

}  // namespace qx::test
