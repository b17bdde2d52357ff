// SPDX-License-Identifier: Apache-2.0
#include "tests/support/TestHost.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "QX/library/QX_Library.h"

namespace {
std::atomic<std::int64_t> new_count{0};
std::atomic<std::int64_t> new_failure{0};

void* counted_new(std::size_t bytes, std::size_t alignment) {
    new_count.fetch_add(1, std::memory_order_relaxed);
    if (new_failure.load(std::memory_order_relaxed) > 0 && new_failure.fetch_sub(1) == 1) throw std::bad_alloc();
    void* block = alignment > alignof(std::max_align_t)
                      ? std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment)
                      : std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
}  // namespace

// They take the runtime's place in the whole program, the shared libraries included; those of arrays call them.
void* operator new(std::size_t bytes) { return counted_new(bytes, 0); }
void* operator new(std::size_t bytes, std::align_val_t a) { return counted_new(bytes, static_cast<std::size_t>(a)); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }

namespace qx::test {

std::int64_t NewCounter::count() { return new_count.load(); }
void NewCounter::fail(std::int64_t nth) { new_failure.store(nth); }

Reports::Reports() {
    standalone::SetReportSink([this](const standalone::Report& report) { reports_.push_back(report); });
}
Reports::~Reports() { standalone::SetReportSink({}); }

Born::Born(int bands, standalone::ProcessorLevel level) {
    standalone::SetBandCount(bands);
    standalone::SetProcessorLevel(level);
    code_ = QX_Birth();
}

Born::~Born() {
    QX_Death();
    standalone::SetBandCount(32);
    standalone::SetProcessorLevel(standalone::DetectedProcessorLevel());
}

}  // namespace qx::test
