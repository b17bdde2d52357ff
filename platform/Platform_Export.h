// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what a host library gives to the module. Everything else in a host library is hidden.
#define PLATFORM_EXPORT [[gnu::visibility("default")]]
