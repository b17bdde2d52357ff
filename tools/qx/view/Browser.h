// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

namespace qx::tool {

/// The program that opens addresses in the user's browser, started apart from this one's terminal: an interruption is
/// not for it.
class Browser {
public:
    /// A note tells where there is no such program or no display.
    explicit Browser(const std::string& address);
    /// Notes that the program has failed, once.
    void look();

private:
    pid_t process_ = 0;  ///< 0: none runs
};

}  // namespace qx::tool
