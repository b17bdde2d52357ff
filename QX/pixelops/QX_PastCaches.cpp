// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_PastCaches.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

#include "lanes/Streams.h"
#include "platform/TK_CPU.h"

namespace qx {
namespace {

const PastCachesKernels* kernels = &plain::past_caches_kernels;

/// Lays out a run of bytes as what lies before its first whole line, the whole lines, and the rest.
template <class Part, class Lines>
void in_lines(std::byte* to, std::size_t bytes, const Part& part, const Lines& lines) {
    const std::size_t head = std::min(bytes, bytes_to_line(to)), whole = (bytes - head) / kLine,
                      end = head + whole * kLine;
    part(to, 0, head);
    lines(to + head, head, whole);
    part(to + end, end, bytes - end);
}

}  // namespace

void choose_past_caches_kernels(Level level) { kernels = &past_caches_kernels_of(level); }

PastCaches::PastCaches(std::size_t bytes) : on_(bytes >= TK_GetCacheBytes()) {}
PastCaches::~PastCaches() {
    if (on_) _mm_sfence();
}

void PastCaches::copy(std::byte* to, const std::byte* from, std::size_t bytes) {
    in_lines(
        to, bytes, [=](std::byte* part, std::size_t at, std::size_t size) { std::memcpy(part, from + at, size); },
        [=](std::byte* first, std::size_t at, std::size_t lines) { kernels->copy(first, from + at, lines); });
}

void PastCaches::fill(std::byte* to, const std::byte* pattern, std::size_t bytes) {
    constexpr std::size_t kPeriod = 16;
    const auto line_at = [=](std::size_t at, std::byte* line) {
        for (std::size_t k = 0; k < kLine; k += kPeriod) std::memcpy(line + k, pattern + at % kPeriod, kPeriod);
    };
    in_lines(
        to, bytes,
        [=](std::byte* part, std::size_t at, std::size_t size) {
            std::byte line[kLine];
            line_at(at, line);
            std::memcpy(part, line, size);
        },
        [=](std::byte* first, std::size_t at, std::size_t lines) {
            std::byte line[kLine];
            line_at(at, line);
            kernels->fill(first, line, lines);
        });
}

}  // namespace qx
