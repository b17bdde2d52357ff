// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Iterate.h"

namespace {

/// On one thread "once on every processor" is once.
int run_all(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn) {
    if (iterations == -1) return fn(refcon, 0, 0, 1);
    for (std::int32_t i = 0; i < iterations; ++i) {
        if (const int code = fn(refcon, 0, i, iterations)) return code;
    }
    return 0;
}

}  // namespace

int QX_IterateGeneric_Static(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn) {
    if (fn == nullptr) return qx::report_bad_parameter(qx::Place::iterate_generic);
    return qx::guarded([&] { return run_all(iterations, refcon, fn); });
}

int QX_IterateGeneric(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn) {
    return qx::guarded([&] { return qx::slot<qx::Slot::IterateGeneric>()(iterations, refcon, fn); });
}
