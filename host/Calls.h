// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "QX/indep/QX_Errors.h"

namespace qx::host {

/// What became of a call into an effect.
struct Outcome {
    std::int32_t code = 0;
    std::string thrown;  ///< empty where nothing was
    /// Plain words for a code that is not 0.
    std::string words() const;
};

/// Calls into an effect. What it throws, against its contract, stays here.
template <class Call> Outcome called(const Call& call) {
    try {
        return {call(), {}};
    } catch (int code) {
        return {code == 0 ? kQX_FailedVerification : code, "a number"};
    } catch (const std::bad_alloc&) {
        return {kQX_OutOfMemory, {}};
    } catch (const std::exception& fault) {
        return {kQX_FailedVerification, fault.what()};
    } catch (...) {
        return {kQX_FailedVerification, "something unknown"};
    }
}

}  // namespace qx::host
