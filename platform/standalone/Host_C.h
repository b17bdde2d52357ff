// SPDX-License-Identifier: Apache-2.0
#ifndef QX_HOST_C_H
#define QX_HOST_C_H

/// The settings of the stand-alone host (platform/standalone/Host.h) for languages that call C. To be set while nothing
/// runs, bands before the library starts. C99, C11 and C++17; link with QXHost.
#ifdef __cplusplus
extern "C" {
#endif

#ifndef QXHOST_EXPORT
#define QXHOST_EXPORT __attribute__((visibility("default")))
#endif

/// Threads that work is done on, 0 for as many as there are cores: no bit of a result depends on them.
QXHOST_EXPORT void QXHost_SetThreads(int threads);
/// Bands that work is cut into, 32 at first: results that depend on their number agree where it does.
QXHOST_EXPORT void QXHost_SetBands(int bands);
/// Receives what routines say of their faults and of the argument at fault, in UTF-8, on the thread that made them, one
/// at a time. Null: standard error.
QXHOST_EXPORT void QXHost_SetReports(void (*report)(void* refcon, const char* text), void* refcon);

#ifdef __cplusplus
}
#endif

#endif
