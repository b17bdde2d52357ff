// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what the module exports; symbols are hidden otherwise.
#define QX_EXPORT [[gnu::visibility("default")]]
