// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_UnoBuffer.h"

#include <new>

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_UnoRows.h"

namespace {

using namespace qx;

const char* memory_name() { return text_of(Text::mask_buffer); }

/// Kept: depths of old hosts, of which 1 is 8 bits and 0 is 16.
std::int32_t known_depth(std::int32_t depth) {
    if (depth == 0 || depth == 1) return depth == 1 ? 8 : 16;
    if (depth == 8 || depth == 16 || depth == 32) return depth;
    throw report_bad_parameter(Place::mask_buffer);
}

int make(std::int32_t width, std::int32_t height, std::int32_t depth, QX_UnoBuffer** out) {
    if (out == nullptr) return report_damaged_mask();
    *out = nullptr;
    void* const memory = TK_AllocatePtrClear(site(Place::mask_buffer), memory_name(), sizeof(QX_UnoBuffer));
    if (memory == nullptr) return kQX_OutOfMemory;
    const int code = guarded([&] { *out = new (memory) QX_UnoBuffer(width, height, depth); });
    if (code != 0) TK_FreePtr(memory);
    return code;
}

}  // namespace

int qx::report_damaged_mask() { return report_failed_verification(Place::mask_buffer, text_of(Text::damaged_mask)); }

QX_UnoBuffer::QX_UnoBuffer(std::int32_t columns, std::int32_t rows, std::int32_t bits)
    : magic(kQX_UnoBufferMagic), width(columns), height(rows), handle(nullptr), depth(known_depth(bits)) {
    if (width < 1 || height < 1) throw report_bad_parameter(Place::mask_buffer);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    handle = TK_AllocateHandle(site(Place::mask_buffer), memory_name(), count * static_cast<std::size_t>(depth / 8));
    if (handle == nullptr) throw static_cast<int>(kQX_OutOfMemory);
}

QX_UnoBuffer::~QX_UnoBuffer() {
    TK_FreeHandle(handle);
    handle = nullptr;
    magic = 0;  // who uses it later is told
}

int QX_NewUnoBuffer(std::int32_t width, std::int32_t height, QX_UnoBuffer** out) { return make(width, height, 8, out); }
int QX_NewDeepUnoBuffer(std::int32_t width, std::int32_t height, QX_UnoBuffer** out) {
    return make(width, height, 16, out);
}

int QX_DisposeUnoBuffer(QX_UnoBuffer* buffer) {
    if (buffer == nullptr) return 0;
    if (!is_live(buffer)) return report_damaged_mask();
    buffer->~QX_UnoBuffer();
    TK_FreePtr(buffer);
    return 0;
}
