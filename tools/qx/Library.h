// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qx::tool {

/// The library, born for a scope, whose reports are kept for the message of a failure and from standard error. Throws
/// WorkFailed when it does not start, std::bad_alloc when that is for want of memory.
class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/// Why a routine failed with a code: its report, where there is one.
std::string reason_of(int code);

}  // namespace qx::tool
