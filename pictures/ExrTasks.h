// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

namespace qx::pictures {

/// How many threads OpenEXR is to be told of, 0 where there is one: it makes twice as many blocks at once.
int exr_threads();

/// Runs `work`, whose blocks of OpenEXR files are packed and unpacked by threads of the pool that are idle, beside the
/// one at work itself. So one picture alone takes all threads, pictures on all threads take no further ones, and what
/// the pool is limited to holds. The blocks of a file do not depend on that. `errno` is ENOMEM behind it when any of
/// the threads was short of memory.
void with_idle_threads(const std::function<void()>& work);

/// Within such work: whether any of the threads was short of memory so far.
bool work_ran_out_of_memory();

}  // namespace qx::pictures
