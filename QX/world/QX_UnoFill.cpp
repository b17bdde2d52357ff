// SPDX-License-Identifier: Apache-2.0
// Mask buffers by themselves: filled, faded, inverted.
#include <algorithm>

#include "QX/indep/QX_Fixed.h"
#include "QX/world/QX_UnoKernels.h"
#include "QX/world/QX_UnoRows.h"
#include "platform/M_Geometry.h"

namespace {

using namespace qx;

template <class Sample> void set_samples(Sample* first, Sample value, std::int64_t count) {
    std::fill_n(first, count, value);
}
void set_samples(std::uint16_t* first, std::uint16_t value, std::int64_t count) {
    TKp_Memset16(first, value, static_cast<std::size_t>(count));
}

template <class Sample> int fill(Sample value, const M_LRect* rect, int depth, QX_UnoBuffer* buffer) {
    if (!is_live(buffer) || buffer->depth != depth) return report_damaged_mask();
    M_LRect r{0, 0, buffer->width, buffer->height};
    if (rect != nullptr && !M_SectLRect(*rect, r, &r)) return 0;
    if (r.right - r.left == buffer->width) {
        set_samples(samples_at<Sample>(*buffer, 0, r.top), value, std::int64_t{r.bottom - r.top} * buffer->width);
    } else {
        for (std::int32_t y = r.top; y < r.bottom; ++y) {
            set_samples(samples_at<Sample>(*buffer, r.left, y), value, r.right - r.left);
        }
    }
    return 0;
}

template <class D> const UnoRows<typename D::Channel>& kernels() {
    return chosen_uno_kernels().rows<typename D::Channel>();
}
template <class D> typename D::Channel* row_at(const QX_UnoBuffer& buffer, std::int32_t y) {
    return samples_at<typename D::Channel>(buffer, 0, y);
}

}  // namespace

int QX_FillUnoBuffer(std::uint8_t value, const M_LRect* rect, QX_UnoBuffer* buffer) {
    return fill(value, rect, 8, buffer);
}
int QX_FillDeepUnoBuffer(std::uint16_t value, const M_LRect* rect, QX_UnoBuffer* buffer) {
    return fill(value, rect, 16, buffer);
}
int QX_FillFloatUnoBuffer(float value, QX_UnoBuffer* buffer) { return fill(value, nullptr, 32, buffer); }

int QX_FadeUnoBuffer(const QX_ProgressInfo* progress, float opacity, QX_UnoBuffer* buffer) {
    return with_samples(buffer, [&]<class D>() {
        const auto o = sample_of<D>(opacity);
        return guarded([&] {
            for (std::int32_t y = 0; y < buffer->height; ++y) {
                kernels<D>().fade(buffer->width, o, row_at<D>(*buffer, y));
                poll_row(progress, y, buffer->height);
            }
        });
    });
}

int QX_InvertAndFadeUnoBuffer(const QX_ProgressInfo* progress, std::int32_t opacity, QX_UnoBuffer* buffer) {
    return with_samples(buffer, [&]<class D>() {
        const std::int32_t limited = std::clamp(opacity, 0, kFixedOne);
        const auto o = truncate_to_int(limited * 0x1p-16 * D::full + 0.5);
        return for_uno_rows(progress, buffer->height,
                            [&](std::int32_t y) { kernels<D>().invert(buffer->width, o, row_at<D>(*buffer, y)); });
    });
}

int QX_InvertUnoBuffer(const QX_ProgressInfo* progress, QX_UnoBuffer* buffer) {
    return QX_InvertAndFadeUnoBuffer(progress, kFixedOne, buffer);
}
