// SPDX-License-Identifier: Apache-2.0
// Body of the stores past the caches, for one level.
#include "QX/pixelops/QX_PastCaches.h"
#include "lanes/Level.h"
#include "lanes/Streams.h"

namespace qx::QX_ISA {

void copy_lines(std::byte* to, const std::byte* from, std::size_t lines) {
    for (; lines > 0; --lines, to += kLine, from += kLine) stream_line<kRegister>(to, from);
}

void fill_lines(std::byte* to, const std::byte* line, std::size_t lines) {
    for (; lines > 0; --lines, to += kLine) stream_line<kRegister>(to, line);
}

const PastCachesKernels past_caches_kernels{&copy_lines, &fill_lines};

}  // namespace qx::QX_ISA
