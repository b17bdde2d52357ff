// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdint>

#include "QX/suites/QX_General.h"
#include "platform/M_Tables.h"

double QX_Hypot(double x, double y) { return std::sqrt(x * x + y * y); }

int QX_AppCallback(void*, int selector, void** result, ...) {
    const std::uint8_t* colours = nullptr;
    const std::int32_t* angles = nullptr;
    int code = 0;
    switch (selector) {
        case 2:
            code = M_PrepareFCMD(true, false, 0, &colours, nullptr);
            *result = const_cast<std::uint8_t*>(colours);
            return code;
        case 3:
            code = M_PrepareFCMD(true, false, 0, nullptr, &colours);
            *result = const_cast<std::uint8_t*>(colours);
            return code;
        case 4:
        case 5:
            code = M_PrepareFTrig(true, false, 0, &angles);
            *result = const_cast<std::int32_t*>(angles);
            return code;
        case 6:
        case 7:
            return M_UnprepareFCMD();
        case 8:
        case 9:
            return M_UnprepareFTrig();
        default:
            return 0;
    }
}
