// SPDX-License-Identifier: Apache-2.0
// What the memory allows: the least that work on whole frames can cost, at the size of each depth's frame.
#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include <cstring>
#include <string>

#include "bench/support/Frame.h"

namespace {

using namespace qx::bench;

/// Bytes of this thread's band in both frames.
struct Bytes {
    std::byte *src, *dst;
    std::size_t count;  ///< a multiple of 64
};

__m128i at(const std::byte* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
__m128i* to(std::byte* p) { return reinterpret_cast<__m128i*>(p); }

void read(const Bytes& b) {
    __m128i sum = _mm_setzero_si128();
    for (std::size_t i = 0; i < b.count; i += 16) sum = _mm_xor_si128(sum, at(b.src + i));
    benchmark::DoNotOptimize(sum);
}
void in_place(const Bytes& b) {
    for (std::size_t i = 0; i < b.count; i += 16) {
        _mm_storeu_si128(to(b.dst + i), _mm_xor_si128(at(b.dst + i), _mm_set1_epi8(1)));
    }
}
/// Two reads and one write, the least of a composite.
void merge(const Bytes& b) {
    for (std::size_t i = 0; i < b.count; i += 16) {
        _mm_storeu_si128(to(b.dst + i), _mm_avg_epu8(at(b.dst + i), at(b.src + i)));
    }
}
void copy(const Bytes& b) { std::memcpy(b.dst, b.src, b.count); }
void copy_past_caches(const Bytes& b) {
    for (std::size_t i = 0; i < b.count; i += 16) _mm_stream_si128(to(b.dst + i), at(b.src + i));
    _mm_sfence();
}
void fill(const Bytes& b) {
    for (std::size_t i = 0; i < b.count; i += 16) _mm_storeu_si128(to(b.dst + i), _mm_set1_epi16(77));
}
void fill_past_caches(const Bytes& b) {
    for (std::size_t i = 0; i < b.count; i += 16) _mm_stream_si128(to(b.dst + i), _mm_set1_epi16(77));
    _mm_sfence();
}

void run(benchmark::State& state, int depth, void (*work)(const Bytes&)) {
    static std::unique_ptr<QX_World> src, dst;
    if (state.thread_index() == 0) {
        src = new_frame(depth);
        dst = new_frame(depth);
        std::memset(src->data, 1, frame_bytes(*src));
        std::memset(dst->data, 2, frame_bytes(*dst));
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    Bytes bytes{};
    for (auto _ : state) {
        if (bytes.count == 0) {  // behind the barrier of the threads' start
            const auto rows = static_cast<std::size_t>(area.bottom - area.top);
            bytes = {row_of(*src, area.top), row_of(*dst, area.top), rows * static_cast<std::size_t>(src->rowbytes)};
        }
        work(bytes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * pixels_of(area));
}

[[maybe_unused]] const bool registered = [] {
    const std::pair<const char*, void (*)(const Bytes&)> works[] = {{"read", read},
                                                                    {"in place", in_place},
                                                                    {"merge", merge},
                                                                    {"copy", copy},
                                                                    {"copy past caches", copy_past_caches},
                                                                    {"fill", fill},
                                                                    {"fill past caches", fill_past_caches}};
    for (const auto& [name, work] : works) {
        for (const int depth : {8, 16, 32}) {
            const std::string full = std::string("table/roofline: ") + name + "/" + std::to_string(depth);
            for (const int threads : {1, 2}) {
                benchmark::RegisterBenchmark(full.c_str(), run, depth, work)->Threads(threads)->UseRealTime();
            }
        }
    }
    return true;
}();

}  // namespace
