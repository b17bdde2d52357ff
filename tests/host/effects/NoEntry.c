// SPDX-License-Identifier: Apache-2.0
// A module that is no effect.
int nothing_of_use(void);
int nothing_of_use(void) { return 0; }
