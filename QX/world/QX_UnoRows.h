// SPDX-License-Identifier: Apache-2.0
// What the routines on mask buffers share: the test of a buffer, its samples, its rows on all processors.
#pragma once

#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Progress.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/world/QX_UnoBuffer.h"

namespace qx {

/// "damaged mask buffer". @return 3
int report_damaged_mask();

constexpr bool is_live(const QX_UnoBuffer* buffer) {
    return buffer != nullptr && buffer->magic == kQX_UnoBufferMagic && buffer->handle != nullptr;
}

template <class Sample> Sample* samples_at(const QX_UnoBuffer& buffer, std::int32_t x, std::int32_t y) {
    return static_cast<Sample*>(*buffer.handle) + std::int64_t{y} * buffer.width + x;
}

/// Gives `body.operator()<D>()` for a live buffer of 8 or 16 bits.
template <class Body> int with_samples(const QX_UnoBuffer* buffer, const Body& body) {
    if (is_live(buffer) && buffer->depth == 8) return body.template operator()<Depth8>();
    if (is_live(buffer) && buffer->depth == 16) return body.template operator()<Depth16>();
    return report_damaged_mask();
}

/// The same for a live one of any depth.
template <class Body> int with_any_samples(const QX_UnoBuffer* buffer, const Body& body) {
    if (is_live(buffer) && buffer->depth == 32) return body.template operator()<DepthFloat>();
    return with_samples(buffer, body);
}

/// Limited to 0..1; NaN is 0.
inline float limited_share(float v) { return v > 0 ? lesser(v, 1.0f) : 0.0f; }

/// An opacity as a sample.
template <class D> typename D::Lane sample_of(float opacity) {
    return truncate_to_int(static_cast<double>(limited_share(opacity) * static_cast<float>(D::full)) + 0.5);
}

/// Calls row(y) for all rows, on all processors or as `iterate` does. The calling thread asks every 64 rows. @return
/// the answer that ended it
template <class Row>
int for_uno_rows(const QX_ProgressInfo* progress, std::int32_t rows, const Row& row,
                 decltype(&QX_IterateGeneric) iterate = &QX_IterateGeneric) {
    struct Context {
        const QX_ProgressInfo* progress;
        const Row& row;
    } context{progress, row};
    return iterate(rows, &context, [](void* refcon, std::int32_t thread, std::int32_t y, std::int32_t count) {
        const auto& c = *static_cast<const Context*>(refcon);
        return guarded([&] {
            c.row(y);
            if (thread == 0) poll_row(c.progress, y, count);
        });
    });
}

}  // namespace qx
