// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <type_traits>
#include <utility>

#include "platform/TK_Report.h"

namespace qx {

/// The tail of every exported routine that can receive an exception: a thrown code becomes the result,
/// a standard exception is reported and translated, all others pass through.
template <class Body> int guarded(Body&& body) {
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            std::forward<Body>(body)();
            return 0;
        } else {
            return std::forward<Body>(body)();
        }
    } catch (int code) {
        return code;
    } catch (const std::exception& fault) {
        return TK_TranslateAndReportException(fault);
    }
}

/// The tail of those that throw their codes: of a standard exception the code is thrown, after its report.
template <class Body> decltype(auto) translated(Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& fault) {
        throw TK_TranslateAndReportException(fault);
    }
}

/// Throws a routine's non-zero result as a code.
inline void throw_if(int code) {
    if (code != 0) throw code;
}

}  // namespace qx
