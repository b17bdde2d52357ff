// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <string_view>

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

/// Hands the line of the fault that is being handled to `say`. Want of memory takes none to be told; what is neither a
/// fault nor a code passes on.
void tell_fault(const std::function<void(std::string_view)>& say);

}  // namespace qx::tool
