// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Result codes of the exported routines; any other non-zero value comes from a host callback.
enum QX_Error : int {
    kQX_NoError = 0,
    kQX_RegistryFailed = 1,      ///< the registry's interfaces could not be bound at start
    kQX_FailedVerification = 3,  ///< bad internal state, wrong depth, missing pixels, index out of range
    kQX_OutOfMemory = 4,         ///< the report has been made before the code is returned
    kQX_UnimplementedMode = 5,   ///< no such transfer mode
    kQX_ParameterOutOfRange = 514,
    kQX_UnknownSelector = 515,  ///< callback selector not known, or a world of an unsupported form
    kQX_BadParameter = 516,     ///< null record, invalid size
    kQX_Interrupted = 517       ///< the user cancelled
};
